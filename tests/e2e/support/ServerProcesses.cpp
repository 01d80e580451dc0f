#include "ServerProcesses.h"

#include <tlhelp32.h>
#include <winsvc.h>

#include <memory>

#include "ChildProcess.h"

std::vector<DWORD> ProcessesOf(const std::wstring& fileName)
{
    std::vector<DWORD> ids;
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != 0;
         more = Process32NextW(snapshot, &entry))
    {
        if (_wcsicmp(entry.szExeFile, fileName.c_str()) == 0)
        {
            ids.push_back(entry.th32ProcessID);
        }
    }
    CloseHandle(snapshot);
    return ids;
}

CWatchedProcess::CWatchedProcess(DWORD id)
    : m_process(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_INFORMATION, FALSE, id))
{
}

CWatchedProcess::~CWatchedProcess()
{
    if (m_process != nullptr)
    {
        CloseHandle(m_process);
    }
}

bool CWatchedProcess::IsRunning() const
{
    return m_process != nullptr && WaitForSingleObject(m_process, 0) == WAIT_TIMEOUT;
}

bool CWatchedProcess::WaitForEnd() const
{
    return m_process == nullptr || WaitForSingleObject(m_process, kPatienceMs) == WAIT_OBJECT_0;
}

DWORD CWatchedProcess::ExitCode() const
{
    DWORD code = 0xFFFFFFFF;
    GetExitCodeProcess(m_process, &code);
    return code;
}

void CWatchedProcess::End() const
{
    if (IsRunning())
    {
        TerminateProcess(m_process, 97);
        WaitForSingleObject(m_process, kPatienceMs);
    }
}

namespace
{
// Wine's object activator keeps the class of a server that was killed before it could revoke it, and
// every later activation then fails with 0x800706BA. A new activator knows nothing of it. Can go when
// the lifetime tests pass without it.
void RenewObjectActivator()
{
    std::vector<std::unique_ptr<CWatchedProcess>> running;
    for (const DWORD id : ProcessesOf(L"rpcss.exe"))
    {
        running.push_back(std::make_unique<CWatchedProcess>(id));
    }
    SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    SC_HANDLE service = OpenServiceW(manager, L"RpcSs", SERVICE_STOP);
    SERVICE_STATUS status{};
    if (ControlService(service, SERVICE_CONTROL_STOP, &status) != 0)
    {
        for (const auto& process : running)
        {
            static_cast<void>(process->WaitForEnd());
        }
    }
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
}
} // namespace

CRegisteredServer::CRegisteredServer(const std::wstring& path)
    : m_path(path), m_fileName(path.substr(path.rfind(L'\\') + 1)), m_registered(false)
{
    RenewObjectActivator(); // a run that was broken off may have left one behind
    m_registered = RunProgram(path, L"-RegServer").exitCode == 0;
}

CRegisteredServer::~CRegisteredServer()
{
    for (const DWORD id : Processes())
    {
        CWatchedProcess(id).End();
    }
    RunProgram(m_path, L"-UnregServer");
    RenewObjectActivator();
}

std::vector<DWORD> CRegisteredServer::Processes() const
{
    return ProcessesOf(m_fileName);
}
