#include "BenchSession.h"

#include <cstdio>

#include "ChildProcess.h"

namespace
{

constexpr const wchar_t* kClientKey = L"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr const wchar_t* kClientsKey = L"Software\\Clients\\Mail";
constexpr const wchar_t* kAppPathKey =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe";
constexpr const wchar_t* kStoreKey = L"Software\\MapiStore";
constexpr std::chrono::seconds kTimeout(600);

void SetText(HKEY root, const wchar_t* key, const wchar_t* name, const std::wstring& text)
{
    RegSetKeyValueW(root,
                    key,
                    name,
                    REG_SZ,
                    text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

bool WriteText(const std::wstring& path, const std::string& text)
{
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    DWORD cb = 0;
    const BOOL isWritten =
        WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &cb, nullptr);
    CloseHandle(file);
    return isWritten != 0 && cb == text.size();
}

} // namespace

CBenchMachine::CBenchMachine() : m_folder(BuildPath(L"bench\\live-store"))
{
    CreateDirectoryW(m_folder.c_str(), nullptr);
    const std::wstring library = BuildPath(L"mapistore64.dll");
    SetText(HKEY_LOCAL_MACHINE, kClientsKey, nullptr, L"Microsoft Outlook");
    SetText(HKEY_LOCAL_MACHINE, kClientKey, L"DllPathEx", library);
    SetText(HKEY_LOCAL_MACHINE, kAppPathKey, nullptr, library);
    SetText(HKEY_CURRENT_USER, kStoreKey, L"Folder", m_folder);
    m_server = std::make_unique<CRegisteredServer>(BuildPath(L"dtOIEx64.exe"));
}

CBenchMachine::~CBenchMachine()
{
    m_server.reset();
    RegDeleteTreeW(HKEY_CURRENT_USER, kStoreKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClientKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kAppPathKey);
}

void CBenchMachine::PutStore(const SampleShape& shape) const
{
    const std::wstring fresh = m_folder + L"\\store.new";
    const std::wstring live = m_folder + L"\\store.json";
    if (!WriteText(fresh, SampleStoreText(shape)))
    {
        std::fputs("The store cannot be written.\n", stderr);
        return;
    }
    // The mail library may be reading the document at this moment, and nothing signals the end of that.
    while (MoveFileExW(fresh.c_str(), live.c_str(), MOVEFILE_REPLACE_EXISTING) == 0)
    {
        SwitchToThread();
    }
}

CBenchSession::~CBenchSession()
{
    m_session.reset();
    if (m_process != nullptr)
    {
        WaitForSingleObject(m_process, kPatienceMs);
        CloseHandle(m_process);
    }
}

bool CBenchSession::Start()
{
    m_session = std::make_unique<dtclient::CServerSession>();
    dtclient::CStepResult step = m_session->Open();
    if (step.IsDone())
    {
        step = m_session->Initialize(dtclient::WorkType::Calendaring, kTimeout);
    }
    const std::vector<DWORD> ids = ProcessesOf(L"dtOIEx64.exe");
    if (!step.IsDone() || ids.size() != 1)
    {
        std::fprintf(stderr, "The server does not come up. %s\n", step.Message().c_str());
        return false;
    }
    m_process =
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | SYNCHRONIZE, FALSE, ids.front());
    return m_process != nullptr;
}

ProcessFigures CBenchSession::Server() const
{
    ProcessFigures figures = FiguresOf(m_process);
    figures.cpuMs = CpuMsOf(m_process, BuildPath(L"dtOIEx64.exe"));
    return figures;
}

CCpuMeter CBenchSession::Meter() const
{
    return {m_process, BuildPath(L"dtOIEx64.exe")};
}

double CBenchSession::List()
{
    const dtclient::ListWindow week{{2026, 11, 2, 0, 0, 0}, {2026, 11, 7, 0, 0, 0}};
    const double start = NowMs();
    const dtclient::CStepResult step = m_session->List(week, kTimeout, m_document);
    const double spent = NowMs() - start;
    if (!step.IsDone())
    {
        std::fprintf(stderr, "The listing fails. %s\n", step.Message().c_str());
        m_document.clear();
    }
    return spent;
}

std::size_t CBenchSession::Appointments() const
{
    constexpr std::wstring_view kOpen = L"<appointment>";
    std::size_t count = 0;
    for (std::size_t at = m_document.find(kOpen); at != std::wstring::npos;
         at = m_document.find(kOpen, at + kOpen.size()))
    {
        ++count;
    }
    return count;
}
