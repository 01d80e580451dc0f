// Writes trace lines in one of three ways and ends:
//   dll LIBRARY MARK THREADS LINES   through the library, from several threads
//   entries LIBRARY MARK             one line through each entry point, and odd texts
//   killed LIBRARY MARK              one line, has it written out, and ends without a farewell
//   file FOLDER MARK LINES LIMIT     straight into a file that is rotated at LIMIT bytes
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "TraceFile.h"

namespace
{
using DllNameEntry = void (*)(unsigned, const char*, const char*, int, const char*) noexcept;
using TagEntry = void (*)(unsigned, const char*, int, const char*) noexcept;

std::string Narrow(const wchar_t* text)
{
    std::string narrow;
    for (; *text != L'\0'; ++text)
    {
        narrow += static_cast<char>(*text);
    }
    return narrow;
}

template <class Function>
Function Find(HMODULE library, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

std::string Line(const std::string& mark, int thread, int line)
{
    return " " + mark + " thread " + std::to_string(thread) + " line " + std::to_string(line) +
           " of a length that takes part of a disk block, end,\n";
}

int WriteThroughLibrary(const wchar_t* path, const std::string& mark, int threads, int lines)
{
    HMODULE library = LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const auto write = Find<DllNameEntry>(library, "TLVTRACERAWADLLNAME_RESIDENT");
    if (write == nullptr)
    {
        return 3;
    }
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread)
    {
        running.emplace_back([write, &mark, thread, lines] {
            for (int line = 0; line < lines; ++line)
            {
                write(2, "writer.exe", "tt", 0, Line(mark, thread, line).c_str());
            }
        });
    }
    for (std::thread& one : running)
    {
        one.join();
    }
    // As the server does at its end. The lines must come all the same.
    FreeLibrary(library);
    return 0;
}

int WriteThroughEntries(const wchar_t* path, const std::string& mark)
{
    HMODULE library = LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const auto named = Find<DllNameEntry>(library, "TLVTRACERAWADLLNAME_RESIDENT");
    const auto tagged = Find<TagEntry>(library, "TLVTRACERAWA_RESIDENT");
    const auto plain = Find<TagEntry>(library, "TLVTRACERAWA");
    if (named == nullptr || tagged == nullptr || plain == nullptr)
    {
        return 3;
    }
    constexpr DWORD kLastError = 4711;
    SetLastError(kLastError);
    named(8, "writer.exe", "tt", 0, (mark + " named\n").c_str());
    tagged(4, "tt", 0, (mark + " tagged\n").c_str());
    plain(2, "writer.exe", 0, (mark + " plain\n").c_str());
    named(2, "writer.exe", "tt", 0, (mark + " first piece").c_str());
    named(2, "writer.exe", "tt", 0, (mark + " second piece\n").c_str());
    named(2, "writer.exe", "tt", 0, (mark + " two\r\nlines\n").c_str());
    named(2, "writer.exe", "tt", 0, (mark + " caf\xE9\n").c_str());
    named(2, nullptr, nullptr, 0, nullptr);
    return GetLastError() == kLastError ? 0 : 4;
}

int WriteAndDie(const wchar_t* path, const std::string& mark)
{
    HMODULE library = LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const auto write = Find<DllNameEntry>(library, "TLVTRACERAWADLLNAME_RESIDENT");
    const auto flush = Find<int (*)(unsigned) noexcept>(library, "TLVTRACEFLUSH");
    if (write == nullptr || flush == nullptr)
    {
        return 3;
    }
    write(2, "writer.exe", "tt", 0, (mark + " last words\n").c_str());
    SetLastError(4711);
    const bool isWritten = flush(60000) == 1 && GetLastError() == 4711;
    TerminateProcess(GetCurrentProcess(), isWritten ? 0 : 6);
    return 7;
}

int WriteToFile(const wchar_t* folder, const std::string& mark, int lines, int limit)
{
    tlvtrace::CTraceFile file(folder, L"strato-mapi", {static_cast<std::uint64_t>(limit), 50});
    for (int line = 0; line < lines; ++line)
    {
        if (!file.Append(Line(mark, 0, line)))
        {
            return 5;
        }
    }
    return 0;
}
} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::wstring mode = argc > 3 ? argv[1] : L"";
    if (mode == L"dll" && argc == 6)
    {
        return WriteThroughLibrary(argv[2], Narrow(argv[3]), _wtoi(argv[4]), _wtoi(argv[5]));
    }
    if (mode == L"entries" && argc == 4)
    {
        return WriteThroughEntries(argv[2], Narrow(argv[3]));
    }
    if (mode == L"killed" && argc == 4)
    {
        return WriteAndDie(argv[2], Narrow(argv[3]));
    }
    if (mode == L"file" && argc == 6)
    {
        return WriteToFile(argv[2], Narrow(argv[3]), _wtoi(argv[4]), _wtoi(argv[5]));
    }
    std::fputs("usage: tlvtrace_writer dll|entries|killed|file ...\n", stderr);
    return 2;
}
