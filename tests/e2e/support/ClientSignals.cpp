#include "ClientSignals.h"

#include <objbase.h>
#include <tlhelp32.h>

#include <vector>

namespace
{
constexpr DWORD kSignalPatienceMs = 60000;

std::vector<HANDLE> OpenProcesses(const std::wstring& fileName)
{
    std::vector<HANDLE> processes;
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != 0;
         more = Process32NextW(snapshot, &entry))
    {
        if (_wcsicmp(entry.szExeFile, fileName.c_str()) != 0)
        {
            continue;
        }
        HANDLE process = OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, entry.th32ProcessID);
        if (process != nullptr)
        {
            processes.push_back(process);
        }
    }
    CloseHandle(snapshot);
    return processes;
}
} // namespace

HRESULT Signal(const std::wstring& name, bool waits, std::string& value)
{
    HANDLE signal = CreateEventW(nullptr, TRUE, FALSE, name.c_str());
    if (signal == nullptr)
    {
        return HRESULT_FROM_WIN32(GetLastError());
    }
    // Never closed, on either road: the event must outlast whoever has not opened it yet.
    if (!waits)
    {
        SetEvent(signal);
        return S_OK;
    }
    // The apartment goes on, so that events and calls still come in.
    DWORD index = 0;
    const HRESULT hr = CoWaitForMultipleHandles(0, kSignalPatienceMs, 1, &signal, &index);
    value = hr == S_OK ? "1" : "0";
    return hr;
}

HRESULT KeepSignal(const std::wstring& name)
{
    return CreateEventW(nullptr, TRUE, FALSE, name.c_str()) == nullptr
               ? HRESULT_FROM_WIN32(GetLastError())
               : S_OK;
}

HRESULT EndOfProcesses(const std::wstring& fileName, bool ends, std::string& value)
{
    value = "1";
    for (HANDLE process : OpenProcesses(fileName))
    {
        if (ends)
        {
            TerminateProcess(process, 97);
        }
        if (WaitForSingleObject(process, kSignalPatienceMs) != WAIT_OBJECT_0)
        {
            value = "0";
        }
        CloseHandle(process);
    }
    return S_OK;
}
