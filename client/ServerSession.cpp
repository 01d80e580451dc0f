#include "ServerSession.h"

#include <objbase.h>

#include "Activation.h"
#include "ResultAdvice.h"

namespace dtclient
{
namespace
{
constexpr const wchar_t* kProgId = L"dtOIEx64.MapiClient";

CStepResult CallFailed(const std::string& tried, HRESULT hr)
{
    const auto code = static_cast<std::uint32_t>(hr);
    return CStepResult::Failed(FailureText(tried, code, AdviceForCall(code)));
}

HRESULT CreateServer(const CLSID& clsid, CComRef<IMapiDtClient>& server)
{
    constexpr DWORD kPauseMs = 500;
    return static_cast<HRESULT>(CreateBehindAnEndingServer(
        [&] {
            return static_cast<std::uint32_t>(CoCreateInstance(
                clsid, nullptr, CLSCTX_LOCAL_SERVER, IID_IMapiDtClient, server.PutVoid()));
        },
        [] { Sleep(kPauseMs); }));
}

// The server takes the machine's local time, written as a FILETIME without conversion.
oiexMapiFileTime FileTimeOf(const CalendarTime& local)
{
    constexpr std::int64_t kTicksPerSecond = 10000000;
    const auto ticks = static_cast<std::uint64_t>(SecondsSince1601(local) * kTicksPerSecond);
    oiexMapiFileTime time{};
    time.dwLowDateTime = static_cast<unsigned long>(ticks & 0xFFFFFFFFU);
    time.dwHighDateTime = static_cast<unsigned long>(ticks >> 32U);
    return time;
}
} // namespace

CServerSession::~CServerSession()
{
    if (m_sink)
    {
        m_sink->Close();
    }
    if (m_cookie != 0)
    {
        m_point->Unadvise(m_cookie);
    }
    m_point.Reset();
    m_sink.Reset();
    m_pump.SetProbe(nullptr);
    m_server.Reset();
    if (m_comEntered)
    {
        CoUninitialize();
    }
}

CStepResult CServerSession::Open()
{
    // The window comes first: a server that starts without one ends after two seconds.
    if (const HRESULT hr = m_frame.Create(); FAILED(hr))
    {
        return CStepResult::Failed(FailureText(
            "Making the client's frame window",
            static_cast<std::uint32_t>(hr),
            {"Windows gave no window", "run the command in a session that has a desktop"}));
    }
    if (const HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); FAILED(hr))
    {
        return CallFailed("Entering a COM apartment", hr);
    }
    m_comEntered = true;

    CLSID clsid{};
    if (const HRESULT hr = CLSIDFromProgID(kProgId, &clsid); FAILED(hr))
    {
        return CallFailed("Looking up the class \"dtOIEx64.MapiClient\"", hr);
    }
    if (const HRESULT hr = CreateServer(clsid, m_server); FAILED(hr))
    {
        return CallFailed("Starting the server \"dtOIEx64.MapiClient\"", hr);
    }
    m_pump.SetProbe([this] { return EmptyCall(); });

    CComRef<IConnectionPointContainer> container;
    if (const HRESULT hr =
            m_server->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
        FAILED(hr))
    {
        return CallFailed("Asking the server for its connection points", hr);
    }
    if (const HRESULT hr = container->FindConnectionPoint(DIID__IMapiDtClientEvents, m_point.Put());
        FAILED(hr))
    {
        return CallFailed("Asking the server for its events", hr);
    }
    *m_sink.Put() = new CEventSink([this](const ServerEvent& event) { OnEvent(event); });
    if (const HRESULT hr = m_point->Advise(m_sink.Get(), &m_cookie); FAILED(hr))
    {
        return CallFailed("Advising the event sink", hr);
    }
    return CStepResult::Done();
}

void CServerSession::SetEventHandler(CEventSink::Handler handler)
{
    m_handler = std::move(handler);
}

void CServerSession::OnEvent(const ServerEvent& event)
{
    if (event.id == EventId::Initialize)
    {
        m_initializeAnswered = true;
        m_initializeResult = event.number;
    }
    else if (event.id == EventId::ListAppointment && m_listing)
    {
        m_listAnswers[event.number] = event.text;
    }
    if (m_handler)
    {
        m_handler(event);
    }
}

CStepResult CServerSession::WaitFor(const std::function<bool()>& done,
                                    std::chrono::seconds timeout,
                                    const std::string& what)
{
    switch (m_pump.Run(done, timeout))
    {
    case PumpEnd::Done:
        return CStepResult::Done();
    case PumpEnd::Interrupted:
        return CStepResult::Interrupted();
    case PumpEnd::ServerLost:
        return CallFailed("Waiting for " + what, m_pump.ProbeResult());
    case PumpEnd::TimedOut:
        break;
    }
    return CStepResult::Failed(TroubleText(
        "Waiting for " + what,
        {"no answer within " + std::to_string(timeout.count()) + " seconds",
         "give more time with --timeout; if the server never answers, the mail system hangs, or "
         "another client has called ReleaseApp, which silences the server until its last client "
         "has ended: end all clients and try again"}));
}

CStepResult CServerSession::Initialize(WorkType type, std::chrono::seconds timeout)
{
    const CBstr traceLocation{std::wstring_view()};
    const CBstr typeName(type == WorkType::Calendaring ? L"CALENDARING" : L"CONTACTRESOLUTION");
    m_initializeAnswered = false;
    if (const HRESULT hr =
            m_server->Initialize(TLVOIMAILTYPE_OFFICEOUTLOOK, traceLocation.Get(), typeName.Get());
        FAILED(hr))
    {
        return CallFailed("Calling Initialize", hr);
    }
    CStepResult waited =
        WaitFor([this] { return m_initializeAnswered; }, timeout, "the event OnInitialize");
    if (!waited.IsDone())
    {
        return waited;
    }
    if (m_initializeResult != 0)
    {
        return CStepResult::Failed(FailureText("Initializing the mail system",
                                               m_initializeResult,
                                               AdviceForInitialize(m_initializeResult)));
    }
    return CStepResult::Done();
}

CStepResult CServerSession::List(const ListWindow& window,
                                 std::chrono::seconds timeout,
                                 std::wstring& document)
{
    oiexMapiFileTime from = FileTimeOf(window.from);
    oiexMapiFileTime to = FileTimeOf(window.to);
    unsigned long sequence = 0;
    m_listAnswers.clear();
    m_listing = true;
    if (const HRESULT hr = m_server->ListAppointment(&from, &to, &sequence); FAILED(hr))
    {
        m_listing = false;
        return CallFailed("Calling ListAppointment", hr);
    }
    const auto id = static_cast<std::uint32_t>(sequence);
    CStepResult waited = WaitFor(
        [this, id] { return m_listAnswers.contains(id); }, timeout, "the event OnListAppointment");
    m_listing = false;
    if (waited.IsDone())
    {
        document = std::move(m_listAnswers[id]);
    }
    m_listAnswers.clear();
    return waited;
}

CStepResult CServerSession::Profile(std::wstring& document)
{
    CBstr text;
    if (const HRESULT hr = m_server->GetCurProfileInfo(text.Put()); FAILED(hr))
    {
        return CallFailed("Calling GetCurProfileInfo", hr);
    }
    document = text.View();
    return CStepResult::Done();
}

HRESULT CServerSession::EmptyCall()
{
    return m_server->GetPersonalContact();
}
} // namespace dtclient
