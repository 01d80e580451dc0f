// A trace library that looks from within the server at the filter for unhandled exceptions. It appends one
// line for each look to the file that FILTER_PROBE_REPORT names:
//     start FILTER     when the server loads it, which is before wWinMain
//     serving FILTER   when the server tells that it begins to serve
//     end FILTER       when the server lets go of it, which is behind wWinMain
// FILTER is "runtime's" for the filter that stood at the start, "another", or "locked" when the system
// function answers null and changes nothing.

#include <windows.h>

#include <string>
#include <string_view>

namespace
{

LPTOP_LEVEL_EXCEPTION_FILTER g_atStart = nullptr;

/// Takes the filter out and puts it back: the system has no function that only tells it.
LPTOP_LEVEL_EXCEPTION_FILTER CurrentFilter()
{
    const LPTOP_LEVEL_EXCEPTION_FILTER current = SetUnhandledExceptionFilter(nullptr);
    SetUnhandledExceptionFilter(current);
    return current;
}

void Report(const std::string& moment)
{
    const LPTOP_LEVEL_EXCEPTION_FILTER current = CurrentFilter();
    std::string line = moment + " another\n";
    if (current == nullptr)
    {
        line = moment + " locked\n";
    }
    else if (current == g_atStart)
    {
        line = moment + " runtime's\n";
    }
    wchar_t path[MAX_PATH] = {};
    GetEnvironmentVariableW(L"FILTER_PROBE_REPORT", path, MAX_PATH);
    HANDLE file =
        CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    DWORD cbWritten = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &cbWritten, nullptr);
    CloseHandle(file);
}

} // namespace

extern "C" void TLVTRACERAWADLLNAME_RESIDENT(
    int /*code*/, const char* /*module*/, const char* /*tag*/, int /*zero*/, const char* text)
{
    if (std::string_view(text).find("~~~_tWinMain~~~") != std::string_view::npos)
    {
        Report("serving");
    }
}

BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID /*atProcessEnd*/)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        g_atStart = CurrentFilter();
        Report("start");
    }
    else if (reason == DLL_PROCESS_DETACH)
    {
        Report("end");
    }
    return TRUE;
}
