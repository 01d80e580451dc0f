// A trace library for tests: writes each call to the file that TRACE_PROBE_LOG names, as one line
// "entry|code|module|tag|zero|length" and the text behind it. Which entry points it has is decided by
// the export list that it is linked with.

#include <windows.h>

#include <mutex>
#include <string>

namespace
{

std::mutex g_recordLock; // one record at a time in the file

HANDLE LogFile() noexcept
{
    static const HANDLE s_file = [] {
        wchar_t path[MAX_PATH] = {};
        GetEnvironmentVariableW(L"TRACE_PROBE_LOG", path, MAX_PATH);
        return CreateFileW(
            path, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    }();
    return s_file;
}

void Record(
    const char* entry, int code, const char* module, const char* tag, int zero, const char* text)
{
    const std::string body(text);
    std::string record = std::string(entry) + "|" + std::to_string(code) + "|" + module + "|" +
                         tag + "|" + std::to_string(zero) + "|" + std::to_string(body.size()) +
                         "\n" + body;
    const std::scoped_lock hold(g_recordLock);
    DWORD written = 0;
    WriteFile(LogFile(), record.data(), static_cast<DWORD>(record.size()), &written, nullptr);
}

} // namespace

extern "C"
{

    void TLVTRACERAWA(int code, const char* module, int zero, const char* text)
    {
        Record("TLVTRACERAWA", code, module, "", zero, text);
    }

    void TLVTRACERAWA_RESIDENT(int code, const char* tag, int zero, const char* text)
    {
        Record("TLVTRACERAWA_RESIDENT", code, "", tag, zero, text);
    }

    void TLVTRACERAWADLLNAME_RESIDENT(
        int code, const char* module, const char* tag, int zero, const char* text)
    {
        Record("TLVTRACERAWADLLNAME_RESIDENT", code, module, tag, zero, text);
    }

    int TLVTRACEFLUSH(unsigned timeoutMs)
    {
        Record("TLVTRACEFLUSH", static_cast<int>(timeoutMs), "", "", 0, "");
        return 1;
    }
}
