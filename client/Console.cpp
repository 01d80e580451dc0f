#include "Console.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace dtclient
{
void PrepareConsole()
{
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

bool WriteResult(std::string_view text)
{
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

void WriteMessage(std::string_view text)
{
    // Nobody is left to hear that a message cannot be written.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
    static_cast<void>(std::fflush(stderr));
}
} // namespace dtclient
