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
    const bool written =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (!written)
    {
        WriteMessage(
            "Writing the result failed: standard output takes no more.\n"
            "What to do: see that its reader reads to the end, or that the disk has room.\n");
    }
    return written;
}

void WriteMessage(std::string_view text)
{
    // Nobody is left to hear that a message cannot be written.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
    static_cast<void>(std::fflush(stderr));
}
} // namespace dtclient
