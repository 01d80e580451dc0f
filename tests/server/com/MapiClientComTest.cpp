#include <ocidl.h>
#include <olectl.h>

#include <thread>

#include "AtMemory.h"
#include "Bstr.h"
#include "EventMessages.h"
#include "Handle.h"
#include "MapiClientEvents.h"
#include "Monitor.h"
#include "ServerFixture.h"
#include "WorkThread.h"

namespace
{

class MapiClientComTest : public ServerTest
{
protected:
    MapiClientComTest() { CreateClient(); }

    CComRef<IConnectionPoint> Point()
    {
        CComRef<IConnectionPoint> point;
        EXPECT_EQ(CComRef<IConnectionPointContainer>::Query(m_client.Get())
                      ->FindConnectionPoint(DIID__IMapiDtClientEvents, point.Put()),
                  S_OK);
        return point;
    }

    /// Calls a method by its dispatch id. `arguments` come last first.
    HRESULT Call(DISPID id, std::vector<VARIANTARG> arguments, VARIANT* result = nullptr)
    {
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        return m_client->Invoke(id,
                                IID_NULL,
                                LOCALE_USER_DEFAULT,
                                DISPATCH_METHOD,
                                &parameters,
                                result,
                                nullptr,
                                nullptr);
    }

    static bool ConnectEventExists()
    {
        const CHandle event(OpenEventW(SYNCHRONIZE, FALSE, L"DTEVENT_CONNECT_MAPI_RUN"));
        return static_cast<bool>(event);
    }
};

VARIANTARG Text()
{
    static const CBstr s_text(L"any");
    VARIANTARG argument{};
    argument.vt = VT_BSTR;
    argument.bstrVal = s_text.Get();
    return argument;
}

VARIANTARG Number(LONG number)
{
    VARIANTARG argument{};
    argument.vt = VT_I4;
    argument.lVal = number;
    return argument;
}

TEST_F(MapiClientComTest, ItAnswersItsInterfacesWithOneIdentity)
{
    const auto unknown = CComRef<IUnknown>::Query(m_client.Get());
    for (const IID& iid :
         {IID_IDispatch, IID_IMapiDtClient, IID_ISupportErrorInfo, IID_IConnectionPointContainer})
    {
        const auto interfacePointer = CComRef<IUnknown>::Query(m_client.Get(), iid);
        ASSERT_TRUE(interfacePointer);
        EXPECT_EQ(CComRef<IUnknown>::Query(interfacePointer.Get()).Get(), unknown.Get());
    }
    EXPECT_FALSE(CComRef<IUnknown>::Query(m_client.Get(), IID_IConnectionPoint));
    EXPECT_FALSE(CComRef<IUnknown>::Query(m_client.Get(), DIID__IMapiDtClientEvents));
    EXPECT_EQ(m_client->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(MapiClientComTest, ErrorInfoIsSupportedForItsOwnInterfaceAlone)
{
    const auto support = CComRef<ISupportErrorInfo>::Query(m_client.Get());
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IMapiDtClient), S_OK);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), 1);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IUnknown), 1);
}

TEST_F(MapiClientComTest, ItHasOneConnectionPoint)
{
    const auto container = CComRef<IConnectionPointContainer>::Query(m_client.Get());
    CComRef<IConnectionPoint> point;
    EXPECT_EQ(container->FindConnectionPoint(IID_IMapiDtClient, point.Put()),
              CONNECT_E_NOCONNECTION);
    EXPECT_EQ(container->FindConnectionPoint(DIID__IMapiDtClientEvents, nullptr), E_POINTER);

    CComRef<IEnumConnectionPoints> points;
    ASSERT_EQ(container->EnumConnectionPoints(points.Put()), S_OK);
    EXPECT_EQ(points->Next(1, point.Put(), nullptr), S_OK);
    EXPECT_EQ(point.Get(), Point().Get());
    EXPECT_EQ(points->Skip(1), S_FALSE);
}

TEST_F(MapiClientComTest, EveryEventHasItsIdItsArgumentsAndItsForm)
{
    // Each is fired through the monitor, as a posted result would be.
    struct Event
    {
        UINT message;
        DISPID id;
        std::vector<VARTYPE> types;
    };
    const std::vector<Event> events = {
        {WM_EVENT_CALENDAR_UPDATED, 1, {VT_BSTR, VT_UI4}},
        {WM_EVENT_LIST_APPOINTMENT, 3, {VT_BSTR, VT_UI4}},
        {WM_EVENT_LIST_RECURRENT, 4, {VT_BSTR, VT_UI4}},
        {WM_EVENT_GET_APPOINTMENT, 5, {VT_BSTR, VT_UI4}},
        {WM_EVENT_RECENT_EMAILS, 6, {VT_BSTR, VT_UI4}},
        {WM_EVENT_RESOLVE_NAME, 7, {VT_BSTR}},
        {WM_EVENT_CONTACT_DETAIL, 8, {VT_BSTR, VT_UI4}},
        {WM_EVENT_PERSONAL_CONTACT, 9, {VT_BSTR}},
        {WM_EVENT_CONTACT_UPDATED, 10, {VT_BSTR, VT_UI4}},
        {WM_EVENT_SEARCH_CONTACTS, 11, {VT_BSTR}},
        {WM_EVENT_RESOLVE_BY_URI, 12, {VT_BSTR}},
        {WM_EVENT_RESOLVE_BY_PHONE, 13, {VT_BSTR}},
    };
    auto* const proxy =
        static_cast<IMonitorClient*>(dynamic_cast<CProxy_IMapiDtClientEvents*>(m_client.Get()));
    ASSERT_NE(proxy, nullptr);
    for (const Event& event : events)
    {
        CClientMonitor::GetInstance()->MapSequence(3, proxy);
        auto* const block = static_cast<wchar_t*>(at_mem_alloc(2 * sizeof(wchar_t)));
        block[0] = L'x';
        block[1] = L'\0';
        SendMessageW(CClientMonitor::Window(), event.message, 3, reinterpret_cast<LPARAM>(block));

        ASSERT_FALSE(m_sink.calls.empty()) << event.id;
        const SinkCall call = m_sink.calls.back();
        EXPECT_EQ(call.id, event.id);
        EXPECT_EQ(call.iid, "null");
        EXPECT_EQ(call.locale, 1024U);
        EXPECT_EQ(call.flags, 1);
        EXPECT_EQ(call.types, event.types) << event.id;
        EXPECT_EQ(call.values.front(), L"x");
        if (call.values.size() == 2)
        {
            EXPECT_EQ(call.values.back(), L"3");
        }
    }
    EXPECT_EQ(m_sink.calls.size(), events.size());
}

TEST_F(MapiClientComTest, InitializeAndTraceHaveOneArgument)
{
    auto* const proxy = dynamic_cast<CProxy_IMapiDtClientEvents*>(m_client.Get());
    ASSERT_NE(proxy, nullptr);
    const CBstr line(L"line");
    proxy->Fire_OnInitialize(-5);
    proxy->Fire_OnTrace(line.Get());

    ASSERT_EQ(m_sink.calls.size(), 2U);
    EXPECT_EQ(m_sink.calls[0].id, 2);
    EXPECT_EQ(m_sink.calls[0].types, (std::vector<VARTYPE>{VT_I4}));
    EXPECT_EQ(m_sink.calls[0].values, (std::vector<std::wstring>{L"-5"}));
    EXPECT_EQ(m_sink.calls[1].id, 14);
    EXPECT_EQ(m_sink.calls[1].types, (std::vector<VARTYPE>{VT_BSTR}));
    EXPECT_EQ(m_sink.calls[1].values, (std::vector<std::wstring>{L"line"}));
}

TEST_F(MapiClientComTest, ASinkThatFailsDoesNotStopTheNext)
{
    CRecordingSink second(IID_IDispatch);
    DWORD cookie = 0;
    ASSERT_EQ(Point()->Advise(&second, &cookie), S_OK);
    m_sink.answer = RPC_E_DISCONNECTED;
    dynamic_cast<CProxy_IMapiDtClientEvents*>(m_client.Get())->Fire_OnInitialize(0);

    EXPECT_EQ(m_sink.calls.size(), 1U);
    EXPECT_EQ(second.calls.size(), 1U);
    Point()->Unadvise(cookie);
}

TEST_F(MapiClientComTest, ASinkTakenOutWithinAnEventIsNotCalledAnyMore)
{
    CRecordingSink second(IID_IDispatch);
    DWORD cookie = 0;
    const auto point = Point();
    ASSERT_EQ(point->Advise(&second, &cookie), S_OK);
    m_sink.onInvoke = [&] {
        point->Unadvise(cookie);
        point->Unadvise(1);
    };
    dynamic_cast<CProxy_IMapiDtClientEvents*>(m_client.Get())->Fire_OnInitialize(0);

    EXPECT_EQ(m_sink.calls.size(), 1U);
    EXPECT_TRUE(second.calls.empty());
    EXPECT_EQ(m_sink.references, 1);
    EXPECT_EQ(second.references, 1);
}

TEST_F(MapiClientComTest, NoLockIsHeldOverACallToASink)
{
    const auto point = Point();
    CRecordingSink second(IID_IDispatch);
    m_sink.onInvoke = [&] {
        // Another thread gets at the connections while the sink runs.
        std::thread other([&] {
            DWORD cookie = 0;
            EXPECT_EQ(point->Advise(&second, &cookie), S_OK);
        });
        other.join();
    };
    dynamic_cast<CProxy_IMapiDtClientEvents*>(m_client.Get())->Fire_OnInitialize(0);

    EXPECT_EQ(m_sink.calls.size(), 1U);
    EXPECT_EQ(second.calls.size(), 1U); // its slot came behind the one being called
    EXPECT_EQ(point->Unadvise(2), S_OK);
}

TEST_F(MapiClientComTest, TheEmptyMethodsSucceedAndLeaveOutValuesUnwritten)
{
    const BSTR text = nullptr;
    oiexMapiFileTime time{1, 2};
    ULONG id = 4711;
    EXPECT_EQ(m_client->SendMail(text, text, text), S_OK);
    EXPECT_EQ(m_client->ResolveName(text), S_OK);
    EXPECT_EQ(m_client->ListRecurrentInstance(text, &time, &time, &id), S_OK);
    EXPECT_EQ(m_client->ListRecentEmail(1, text, 1, &id), S_OK);
    EXPECT_EQ(m_client->GetAppointment(text, &id), S_OK);
    EXPECT_EQ(m_client->GetContactDetail(text, &id), S_OK);
    EXPECT_EQ(m_client->GetPersonalContact(), S_OK);
    EXPECT_EQ(m_client->SearchForContacts(text, 1), S_OK);
    EXPECT_EQ(m_client->ResolveByUri(text), S_OK);
    EXPECT_EQ(m_client->ResolveByPhoneNumber(text), S_OK);

    EXPECT_EQ(id, 4711U);
    DrainWork();
    PumpWaiting();
    EXPECT_TRUE(m_sink.calls.empty());
    EXPECT_EQ(CClientMonitor::GetInstance()->NextSequence(), 111U);
}

TEST_F(MapiClientComTest, TheEmptyMethodsAreReachedByLateBinding)
{
    EXPECT_EQ(Call(3, {Text(), Text(), Text()}), S_OK);
    EXPECT_EQ(Call(4, {Text()}), S_OK);
    EXPECT_EQ(Call(7, {Number(1), Text(), Number(1)}), S_OK);
    EXPECT_EQ(Call(8, {Text()}), S_OK);
    EXPECT_EQ(Call(9, {Text()}), S_OK);
    EXPECT_EQ(Call(10, {}), S_OK);
    EXPECT_EQ(Call(11, {Number(1), Text()}), S_OK);
    EXPECT_EQ(Call(12, {Text()}), S_OK);
    EXPECT_EQ(Call(13, {Text()}), S_OK);
    PumpWaiting();
    EXPECT_TRUE(m_sink.calls.empty());
}

TEST_F(MapiClientComTest, TheMethodsWithBodiesAreReachedByLateBinding)
{
    EXPECT_EQ(Call(1, {Text(), Text(), Number(1)}), S_OK);
    PumpUntilEvents(1);
    EXPECT_EQ(m_sink.calls.at(0).id, 2);

    VARIANT document;
    VariantInit(&document);
    EXPECT_EQ(Call(2, {}, &document), S_OK);
    EXPECT_EQ(document.vt, VT_BSTR);
    EXPECT_STREQ(document.bstrVal, L"<CurrentOLProfile/>");
    VariantClear(&document);

    EXPECT_EQ(Call(15, {Text(), Number(0)}), DISP_E_EXCEPTION); // E_FAIL of the method
    VARIANTARG hibernate{};
    hibernate.vt = VT_BOOL;
    hibernate.boolVal = VARIANT_FALSE;
    EXPECT_EQ(Call(14, {hibernate}), S_OK);
}

TEST_F(MapiClientComTest, NamesAreTurnedIntoIds)
{
    std::wstring name = L"ReleaseApp";
    LPOLESTR pointer = name.data();
    DISPID id = 0;
    EXPECT_EQ(m_client->GetIDsOfNames(IID_NULL, &pointer, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    EXPECT_EQ(id, 14);
    UINT count = 0;
    EXPECT_EQ(m_client->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    CComRef<ITypeInfo> info;
    EXPECT_EQ(m_client->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), S_OK);
}

TEST_F(MapiClientComTest, TheConnectEventStandsAsLongAsTheObject)
{
    EXPECT_TRUE(ConnectEventExists());
    ReleaseClient();
    EXPECT_FALSE(ConnectEventExists());
    EXPECT_TRUE(Traced(2, "CMapiClient::FinalRelease"));
}

TEST_F(MapiClientComTest, AnExistingConnectEventIsShared)
{
    ReleaseClient();
    const CHandle foreign(CreateEventW(nullptr, FALSE, FALSE, L"DTEVENT_CONNECT_MAPI_RUN"));
    CreateClient();
    ReleaseClient();
    EXPECT_TRUE(ConnectEventExists());
}

TEST_F(MapiClientComTest, ConstructionTracesAndMakesTheWorkThread)
{
    EXPECT_TRUE(Traced(2, "CMapiClient::FinalConstruct"));
    EXPECT_NE(g_pWorkThread.load(), nullptr);
}

TEST_F(MapiClientComTest, ReleasingItTakesItOutOfTheMonitorAndLetsTheSinksGo)
{
    IMonitorClient* const client = dynamic_cast<CProxy_IMapiDtClientEvents*>(m_client.Get());
    EXPECT_TRUE(CClientMonitor::GetInstance()->IsClient(client));
    EXPECT_EQ(m_sink.references, 2);
    ReleaseClient();
    EXPECT_FALSE(CClientMonitor::GetInstance()->IsClient(client));
    EXPECT_EQ(m_sink.references, 1);
}

} // namespace
