#include "ScriptedClient.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "CalendarTime.h"
#include "ClientSignals.h"
#include "WideText.h"

using dtclient::CBstr;

namespace
{
void Print(const std::string& line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

std::string Hex(HRESULT hr)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(hr));
    return text;
}

std::string OneLine(std::wstring_view text, std::size_t shown)
{
    std::string line = dtclient::Utf8FromWide(text.substr(0, shown));
    for (char& letter : line)
    {
        letter = letter == '\n' || letter == '\r' ? ' ' : letter;
    }
    if (text.size() > shown)
    {
        line += " of " + std::to_string(text.size());
    }
    return line;
}

oiexMapiFileTime SecondsInto2020(unsigned long seconds)
{
    const auto ticks = static_cast<std::uint64_t>(
        (dtclient::SecondsSince1601({2020, 1, 1, 0, 0, 0}) + seconds) * 10000000LL);
    oiexMapiFileTime time{};
    time.dwLowDateTime = static_cast<unsigned long>(ticks & 0xFFFFFFFFU);
    time.dwHighDateTime = static_cast<unsigned long>(ticks >> 32U);
    return time;
}
} // namespace

CScriptedClient::CScriptedClient() = default;

CScriptedClient::~CScriptedClient()
{
    ReleaseAll();
}

void CScriptedClient::Run(const std::string& command)
{
    std::istringstream stream(command);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
    {
        words.push_back(word == "-" ? std::string() : word);
    }
    if (words.empty())
    {
        return;
    }
    std::string value;
    HRESULT hr = E_INVALIDARG;
    try
    {
        hr = RunCommand(words, value);
    }
    catch (const std::out_of_range&)
    {
        value = "an argument is missing";
    }
    Print("done " + words[0] + " " + Hex(hr) + (value.empty() ? "" : " " + value));
}

HRESULT CScriptedClient::RunCommand(const std::vector<std::string>& words, std::string& value)
{
    const std::string& name = words[0];
    if (name == "frame")
    {
        m_frame = std::make_unique<dtclient::CClientFrame>();
        return m_frame->Create();
    }
    if (name == "closeframe")
    {
        m_frame.reset();
        return S_OK;
    }
    if (name == "create")
    {
        return Create();
    }
    if (name == "release")
    {
        ReleaseAll();
        return S_OK;
    }
    if (name == "die")
    {
        TerminateProcess(GetCurrentProcess(), 99);
    }
    if (name == "wholetexts")
    {
        m_shown = std::wstring_view::npos;
        return S_OK;
    }
    if (name == "keepsignal")
    {
        return KeepSignal(dtclient::WideFromUtf8(words.at(1)));
    }
    if (name == "signal" || name == "waitsignal")
    {
        return Signal(dtclient::WideFromUtf8(words.at(1)), name == "waitsignal", value);
    }
    if (name == "waitend" || name == "endall")
    {
        return EndOfProcesses(dtclient::WideFromUtf8(words.at(1)), name == "endall", value);
    }
    if (name == "onevent")
    {
        m_onEvent = words.at(1);
        return S_OK;
    }
    if (!m_server)
    {
        return E_POINTER;
    }
    if (name == "advise")
    {
        return Advise(words.at(1), words.size() > 2);
    }
    if (name == "unadvise")
    {
        return Unadvise(words.at(1));
    }
    if (name == "initialize")
    {
        const CBstr trace(L"C:\\trace");
        const CBstr type(dtclient::WideFromUtf8(words.at(2)));
        return m_server->Initialize(
            static_cast<TLVOI_MAILTYPE>(std::atoi(words[1].c_str())), trace.Get(), type.Get());
    }
    if (name == "list")
    {
        const char* const seconds = words.size() > 2 ? words[2].c_str() : "86400";
        return List(std::strtoul(words.at(1).c_str(), nullptr, 10),
                    std::strtoul(seconds, nullptr, 10),
                    value);
    }
    if (name == "nulllist")
    {
        oiexMapiFileTime end = SecondsInto2020(0);
        unsigned long sequence = 0;
        return m_server->ListAppointment(nullptr, &end, &sequence);
    }
    if (name == "profile")
    {
        return Profile(value);
    }
    if (name == "empties")
    {
        return words.at(1) == "vtable" ? EmptiesByTable(value) : EmptiesByDispatch(value);
    }
    if (name == "postevent")
    {
        const CBstr key(dtclient::WideFromUtf8(words.at(2)));
        return m_server->PostEvent(static_cast<TLVOI_EVENTTYPE>(std::atoi(words[1].c_str())),
                                   key.Get());
    }
    if (name == "releaseapp")
    {
        return m_server->ReleaseApp(static_cast<VARIANT_BOOL>(std::atoi(words.at(1).c_str())));
    }
    if (name == "errorinfo")
    {
        return ErrorInfo();
    }
    value = "no such command";
    return E_INVALIDARG;
}

HRESULT CScriptedClient::Create()
{
    CLSID clsid{};
    HRESULT hr = CLSIDFromProgID(L"dtOIEx64.MapiClient", &clsid);
    if (FAILED(hr))
    {
        return hr;
    }
    hr = CoCreateInstance(
        clsid, nullptr, CLSCTX_LOCAL_SERVER, IID_IMapiDtClient, m_server.PutVoid());
    if (FAILED(hr))
    {
        return hr;
    }
    dtclient::CComRef<IConnectionPointContainer> container;
    hr = m_server->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
    return FAILED(hr) ? hr
                      : container->FindConnectionPoint(DIID__IMapiDtClientEvents, m_point.Put());
}

HRESULT CScriptedClient::Advise(const std::string& name, bool fails)
{
    Sink sink;
    sink.name = name;
    *sink.sink.Put() = new dtclient::CEventSink(
        [this, name, fails](const dtclient::ServerEvent& event) { OnEvent(name, fails, event); });
    const HRESULT hr = m_point->Advise(sink.sink.Get(), &sink.cookie);
    if (SUCCEEDED(hr))
    {
        m_sinks.push_back(std::move(sink));
    }
    return hr;
}

HRESULT CScriptedClient::Unadvise(const std::string& name)
{
    for (const Sink& sink : m_sinks)
    {
        if (sink.name == name)
        {
            return m_point->Unadvise(sink.cookie);
        }
    }
    return E_INVALIDARG;
}

void CScriptedClient::OnEvent(const std::string& name,
                              bool fails,
                              const dtclient::ServerEvent& event)
{
    Print("event " + name + " " + std::to_string(static_cast<long>(event.id)) + " " +
          std::to_string(event.number) + " " + OneLine(event.text, m_shown));
    const std::string action = std::exchange(m_onEvent, std::string());
    if (action == "release")
    {
        ReleaseAll();
        Print("done onevent-release 0x00000000");
    }
    else if (action == "releaseapp")
    {
        Print("done onevent-releaseapp " + Hex(m_server->ReleaseApp(VARIANT_FALSE)));
    }
    if (fails)
    {
        // The sink turns an exception into a failure of the call.
        throw std::runtime_error("this sink fails");
    }
}

HRESULT CScriptedClient::List(unsigned long code, unsigned long seconds, std::string& value)
{
    oiexMapiFileTime start = SecondsInto2020(code);
    oiexMapiFileTime end = SecondsInto2020(code + seconds);
    unsigned long sequence = 0;
    const HRESULT hr = m_server->ListAppointment(&start, &end, &sequence);
    value = std::to_string(sequence);
    return hr;
}

HRESULT CScriptedClient::Profile(std::string& value)
{
    CBstr text;
    const HRESULT hr = m_server->GetCurProfileInfo(text.Put());
    value = text.Get() == nullptr ? "untouched" : OneLine(text.View(), m_shown);
    return hr;
}

HRESULT CScriptedClient::EmptiesByTable(std::string& value)
{
    const CBstr text(L"text");
    oiexMapiFileTime time = SecondsInto2020(0);
    unsigned long sequence = 0;
    const HRESULT results[] = {
        m_server->SendMail(text.Get(), text.Get(), text.Get()),
        m_server->ResolveName(text.Get()),
        m_server->ListRecurrentInstance(text.Get(), &time, &time, &sequence),
        m_server->ListRecentEmail(1, text.Get(), 1, &sequence),
        m_server->GetAppointment(text.Get(), &sequence),
        m_server->GetContactDetail(text.Get(), &sequence),
        m_server->GetPersonalContact(),
        m_server->SearchForContacts(text.Get(), 5),
        m_server->ResolveByUri(text.Get()),
        m_server->ResolveByPhoneNumber(text.Get()),
    };
    int good = 0;
    HRESULT last = S_OK;
    for (const HRESULT hr : results)
    {
        good += hr == S_OK ? 1 : 0;
        last = hr == S_OK ? last : hr;
    }
    value = std::to_string(good);
    return last;
}

namespace
{
VARIANT TextVariant(BSTR text)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = text;
    return variant;
}

VARIANT NumberVariant(unsigned long number)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_UI4;
    variant.ulVal = number;
    return variant;
}

// Calls by name; arguments in the order of the interface.
HRESULT CallByName(IDispatch* server, const wchar_t* name, std::vector<VARIANT> arguments)
{
    std::wstring writable(name);
    LPOLESTR names = writable.data();
    DISPID id = DISPID_UNKNOWN;
    HRESULT hr = server->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr))
    {
        return hr;
    }
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    VARIANT result;
    VariantInit(&result);
    hr = server->Invoke(
        id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
    VariantClear(&result);
    return hr;
}
} // namespace

HRESULT CScriptedClient::EmptiesByDispatch(std::string& value)
{
    const CBstr bstr(L"text");
    const VARIANT text = TextVariant(bstr.Get());
    HRESULT last = S_OK;
    struct Call
    {
        const wchar_t* name;
        std::vector<VARIANT> arguments;
    };
    const Call calls[] = {
        {L"SendMail", {text, text, text}},
        {L"ResolveName", {text}},
        {L"ListRecentEmail", {NumberVariant(1), text, NumberVariant(1)}},
        {L"GetAppointment", {text}},
        {L"GetContactDetail", {text}},
        {L"GetPersonalContact", {}},
        {L"SearchForContacts", {text, NumberVariant(5)}},
        {L"ResolveByUri", {text}},
        {L"ResolveByPhoneNumber", {text}},
    };
    int good = 0;
    for (const Call& call : calls)
    {
        const HRESULT hr = CallByName(m_server.Get(), call.name, call.arguments);
        good += hr == S_OK ? 1 : 0;
        last = hr == S_OK ? last : hr;
    }
    value = std::to_string(good);
    return last;
}

HRESULT CScriptedClient::ErrorInfo()
{
    dtclient::CComRef<ISupportErrorInfo> support;
    const HRESULT hr = m_server->QueryInterface(IID_ISupportErrorInfo, support.PutVoid());
    return FAILED(hr) ? hr : support->InterfaceSupportsErrorInfo(IID_IMapiDtClient);
}

void CScriptedClient::ReleaseAll()
{
    for (const Sink& sink : m_sinks)
    {
        if (m_point)
        {
            m_point->Unadvise(sink.cookie);
        }
    }
    m_sinks.clear();
    m_point.Reset();
    m_server.Reset();
}
