#include "Runtime.h"

#include <fstream>
#include <sstream>

#include "Buffer.h"
#include "MapiTags64.h"
#include "StoreFolder.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr size_t kMaxShells = 10000;

thread_local std::uint32_t g_threadUsers = 0;

std::string PlanText(const std::wstring& setting, std::string& problem)
{
    if (setting.empty() || setting[0] != L'@')
    {
        return ToUtf8(setting);
    }
    std::string text;
    HANDLE file = CreateFileW(setting.c_str() + 1,
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr,
                              OPEN_EXISTING,
                              0,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        problem = "cannot open the fault plan " + ToUtf8(setting.substr(1));
        return text;
    }
    char piece[4096];
    DWORD cb = 0;
    while (ReadFile(file, piece, sizeof(piece), &cb, nullptr) && cb != 0)
    {
        text.append(piece, cb);
    }
    CloseHandle(file);
    return text;
}

/// One write call, so that the reports of two processes do not mix.
void AppendFile(const std::wstring& path, const std::string& text)
{
    HANDLE file = CreateFileW(path.c_str(),
                              FILE_APPEND_DATA,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr,
                              OPEN_ALWAYS,
                              0,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return;
    }
    DWORD cb = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &cb, nullptr);
    CloseHandle(file);
}

void Debug(const std::string& text)
{
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
    {
        OutputDebugStringA(("mapistore: " + line + "\n").c_str());
    }
}

} // namespace

CRuntime& Runtime()
{
    // Never destroyed: an object that was not released may still call when the process ends.
    static auto* runtime = new CRuntime();
    return *runtime;
}

bool CRuntime::ThreadReady()
{
    return g_threadUsers != 0;
}

HRESULT CRuntime::Initialize(ULONG version, ULONG flags)
{
    constexpr ULONG kFlags = MAPI_MULTITHREAD_NOTIFICATIONS | MAPI_NT_SERVICE | kMapiNoCoInit;
    if (version != MAPI_INIT_VERSION)
    {
        return MAPI_E_VERSION;
    }
    if ((flags & ~kFlags) != 0)
    {
        m_ledger.Misuse(OperationOf("MAPIInitialize"), MAPI_E_UNKNOWN_FLAGS, "unknown flags");
        return MAPI_E_UNKNOWN_FLAGS;
    }
    const std::scoped_lock hold(m_lock);
    if (m_users == 0)
    {
        const HRESULT hr = Start();
        if (FAILED(hr))
        {
            return hr;
        }
    }
    ++m_users;
    ++g_threadUsers;
    return S_OK;
}

HRESULT CRuntime::Start()
{
    m_ledger.Clear();
    m_config = ReadConfig();
    buffers::SetGuard(m_config.guard);
    std::string problem;
    const std::string plan = PlanText(m_config.faults, problem);
    if (!problem.empty() || !m_faults.Parse(plan, problem))
    {
        m_ledger.Note(problem);
        Debug(problem);
        if (!m_config.ledger.empty())
        {
            AppendFile(m_config.ledger, Report());
        }
        return MAPI_E_UNCONFIGURED;
    }
    ++m_run;
    m_running = true;
    m_notifier.Start();
    return S_OK;
}

void CRuntime::Uninitialize()
{
    const std::scoped_lock hold(m_lock);
    if (m_users == 0 || g_threadUsers == 0)
    {
        m_ledger.Misuse(OperationOf("MAPIUninitialize"),
                        MAPI_E_NOT_INITIALIZED,
                        "on a thread that has not called MAPIInitialize");
        return;
    }
    --g_threadUsers;
    if (--m_users == 0)
    {
        Stop();
    }
}

void CRuntime::Stop()
{
    m_running = false;
    m_notifier.Stop();
    if (m_folder)
    {
        m_folder->Close();
        m_folder.reset();
    }
    const std::string report = Report();
    Debug(report);
    if (!m_config.ledger.empty())
    {
        AppendFile(m_config.ledger, report);
    }
    buffers::ForgetAll();
}

std::string CRuntime::Report() const
{
    std::string report = m_ledger.Report();
    std::string faults;
    for (const std::string& line : m_faults.Report())
    {
        faults += line + "\n";
    }
    // The summary stays the last line.
    const size_t summary = report.rfind("summary ");
    return report.substr(0, summary) + faults + report.substr(summary);
}

std::shared_ptr<CStoreFolder> CRuntime::StoreFolder()
{
    const std::scoped_lock hold(m_folderLock);
    if (!m_folder)
    {
        if (m_config.folder.empty())
        {
            Say("no store folder is set");
            throw CMapiError(MAPI_E_UNCONFIGURED, L"no store folder is set");
        }
        auto folder = std::make_shared<CStoreFolder>(m_config.folder);
        folder->Open(m_config.watch);
        m_folder = std::move(folder);
    }
    return m_folder;
}

void CRuntime::Keep(std::unique_ptr<CShell> shell)
{
    std::unique_ptr<CShell> oldest;
    const std::scoped_lock hold(m_shellLock);
    m_shells.push_back(std::move(shell));
    if (m_shells.size() > kMaxShells)
    {
        oldest = std::move(m_shells.front());
        m_shells.pop_front();
    }
}

void CRuntime::DropShells() noexcept
{
    while (true)
    {
        std::unique_ptr<CShell> oldest; // freed behind the lock
        const std::scoped_lock hold(m_shellLock);
        if (m_shells.empty())
        {
            return;
        }
        oldest = std::move(m_shells.front());
        m_shells.pop_front();
    }
}

void CRuntime::Say(const std::string& text)
{
    m_ledger.Note(text);
    Debug(text);
}

} // namespace mapistore
