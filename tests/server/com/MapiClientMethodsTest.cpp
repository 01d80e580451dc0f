#include "Bstr.h"
#include "MapiClient.h"
#include "Monitor.h"
#include "MonitorThread.h"
#include "ServerFixture.h"
#include "WorkTask.h"
#include "WorkThread.h"

namespace
{

class MapiClientMethodsTest : public ServerTest
{
protected:
    MapiClientMethodsTest() { CreateClient(); }

    HRESULT PostEvent(int type, const wchar_t* key)
    {
        const CBstr text = key != nullptr ? CBstr(std::wstring_view(key)) : CBstr();
        return m_client->PostEvent(static_cast<TLVOI_EVENTTYPE>(type), text.Get());
    }

    /// What the mail system was asked to bring up.
    ULONG InitTypeFor(const wchar_t* text)
    {
        const std::size_t before = m_sink.calls.size();
        EXPECT_EQ(Initialize(1, text), S_OK);
        PumpUntilEvents(before + 1);
        return TheFakeMail().lastInitType;
    }
};

TEST_F(MapiClientMethodsTest, InitializeAnswersByItsEvent)
{
    EXPECT_EQ(Initialize(1, L"CALENDARING"), S_OK);
    PumpUntilEvents(1);

    EXPECT_EQ(m_sink.calls.at(0).id, 2);
    EXPECT_EQ(m_sink.calls.at(0).values, (std::vector<std::wstring>{L"0"}));
    EXPECT_EQ(TheFakeMail().lastMailType, 1U);
    EXPECT_EQ(TheFakeMail().lastInitType, 1U);
}

TEST_F(MapiClientMethodsTest, TheInitializationTextIsExactAndCaseSensitive)
{
    EXPECT_EQ(InitTypeFor(L"CALENDARING"), 1U);
    EXPECT_EQ(InitTypeFor(L"CONTACTRESOLUTION"), 2U);
    EXPECT_EQ(InitTypeFor(L"calendaring"), 0U);
    EXPECT_EQ(InitTypeFor(L"CALENDARING "), 0U);
    EXPECT_EQ(InitTypeFor(L"CALENDAR"), 0U);
    EXPECT_EQ(InitTypeFor(L""), 0U);
    EXPECT_EQ(InitTypeFor(nullptr), 0U);
}

TEST_F(MapiClientMethodsTest, MailTypesOutsideOneToSixteenAreRefusedWithoutTraceOrId)
{
    for (const int type : {0, 17, -1})
    {
        m_trace.Clear();
        EXPECT_EQ(Initialize(type, L"CALENDARING"), E_FAIL) << type;
        EXPECT_EQ(m_trace.Count("CMapiClient::Initialize"), 1U);
        for (const TraceLine& line : m_trace.Lines())
        {
            EXPECT_TRUE(line.message == "CMapiClient::Initialize" ||
                        line.message == "Trace location is initialized to path: " ||
                        line.message == "ClientMonitorProc")
                << line.message;
        }
    }
    EXPECT_EQ(Initialize(1, L""), S_OK);
    EXPECT_TRUE(Traced(3, "MAPI Reference count is now 1, initType[0]"));
    EXPECT_EQ(CClientMonitor::GetInstance()->NextSequence(), 112U);
}

TEST_F(MapiClientMethodsTest, MailTypesFromTwoToFifteenPassAndAnswerByTheEvent)
{
    TheFakeMail().initAnswer = 1;
    EXPECT_EQ(Initialize(2, L"CALENDARING"), S_OK);
    PumpUntilEvents(1);

    EXPECT_EQ(TheFakeMail().lastMailType, 2U);
    EXPECT_EQ(m_sink.calls.at(0).values, (std::vector<std::wstring>{L"1"}));
    WaitForCall(TheFakeMail().freeLibCalls, 0); // the failed bring-up hibernates by itself
}

TEST_F(MapiClientMethodsTest, EveryInitializeIsCountedAndQueued)
{
    EXPECT_EQ(Initialize(1, L"CALENDARING"), S_OK);
    EXPECT_EQ(Initialize(1, L"CONTACTRESOLUTION"), S_OK);
    PumpUntilEvents(2);

    EXPECT_TRUE(Traced(3, "MAPI Reference count is now 1, initType[1]"));
    EXPECT_TRUE(Traced(3, "MAPI Reference count is now 2, initType[2]"));
    EXPECT_EQ(TheFakeMail().initCalls, 2);
}

TEST_F(MapiClientMethodsTest, TheTraceLocationIsTracedAndNothingElse)
{
    EXPECT_EQ(Initialize(1, L"", L"C:\\traces"), S_OK);
    EXPECT_TRUE(Traced(2, "Trace location is initialized to path: C:\\traces"));
    EXPECT_EQ(Initialize(1, L"", nullptr), S_OK);
    EXPECT_TRUE(Traced(1, "Trace location is initialized to path: NULL"));
}

TEST_F(MapiClientMethodsTest, InitializeTracesItsLocationItsNameAndItsCountInThisOrder)
{
    m_trace.Clear();
    EXPECT_EQ(Initialize(1, L"CALENDARING", L"here"), S_OK);

    std::vector<std::string> own;
    for (const TraceLine& line : m_trace.Lines())
    {
        if (line.function == "CMapiClient::Initialize")
        {
            own.push_back(std::to_string(line.level) + " " + line.message);
        }
    }
    EXPECT_EQ(own,
              (std::vector<std::string>{"2 Trace location is initialized to path: here",
                                        "2 CMapiClient::Initialize",
                                        "3 MAPI Reference count is now 1, initType[1]"}));
}

TEST_F(MapiClientMethodsTest, InitializeStartsTheWatchIfNobodyHas)
{
    EXPECT_EQ(g_hMonitorThread.load(), nullptr);
    EXPECT_EQ(Initialize(1, L""), S_OK);
    EXPECT_NE(g_hMonitorThread.load(), nullptr);
}

TEST_F(MapiClientMethodsTest, WithoutMemoryForTheWorkThreadInitializeFails)
{
    ReleaseWorkThread(false);
    const CNoWorkThread none;
    EXPECT_EQ(Initialize(1, L"CALENDARING"), E_FAIL);

    EXPECT_TRUE(Traced(0, "new CWorkThread failed"));
    EXPECT_EQ(CClientMonitor::GetInstance()->NextSequence(), 111U);
}

TEST_F(MapiClientMethodsTest, WithoutMemoryForTheWorkThreadNoObjectIsMade)
{
    const CNoWorkThread none;
    CComRef<IUnknown> object;
    EXPECT_EQ(CMapiClient::Create(m_module, object.Put()), E_FAIL);

    EXPECT_FALSE(object);
    EXPECT_TRUE(Traced(0, "CMapiClient::FinalConstruct, new CWorkThread failed"));
}

TEST_F(MapiClientMethodsTest, TheProfileIsGivenOnceTheMailSystemIsReady)
{
    CBstr sample(L"as it was");
    const BSTR before = sample.Get();
    BSTR profile = before;
    EXPECT_EQ(m_client->GetCurProfileInfo(&profile), S_OK);
    EXPECT_EQ(profile, before);

    BringUp();
    CBstr document;
    EXPECT_EQ(m_client->GetCurProfileInfo(document.Put()), S_OK);
    EXPECT_EQ(document.View(), L"<CurrentOLProfile/>");
    EXPECT_TRUE(Traced(2, "CMapiClient::GetCurProfileInfo"));
}

TEST_F(MapiClientMethodsTest, TheProfileIsLeftAloneWithoutAWorkThread)
{
    ReleaseWorkThread(false);
    CBstr sample(L"as it was");
    BSTR profile = sample.Get();
    EXPECT_EQ(m_client->GetCurProfileInfo(&profile), S_OK);
    EXPECT_EQ(profile, sample.Get());
    EXPECT_EQ(m_client->GetCurProfileInfo(nullptr), S_OK);
}

TEST_F(MapiClientMethodsTest, AListingIsAnsweredWithItsId)
{
    BringUp();
    // 2026-03-29 and 2026-04-05, both at midnight.
    oiexMapiFileTime start{0x99A64000, 0x01DCBF0E};
    oiexMapiFileTime end{0xF9A9C000, 0x01DCC48E};
    FILETIME startTime{};
    FILETIME endTime{};
    const SYSTEMTIME startDate{2026, 3, 0, 29, 0, 0, 0, 0};
    const SYSTEMTIME endDate{2026, 4, 0, 5, 0, 0, 0, 0};
    SystemTimeToFileTime(&startDate, &startTime);
    SystemTimeToFileTime(&endDate, &endTime);
    start = {startTime.dwLowDateTime, startTime.dwHighDateTime};
    end = {endTime.dwLowDateTime, endTime.dwHighDateTime};
    ULONG id = 0;
    EXPECT_EQ(m_client->ListAppointment(&start, &end, &id), S_OK);
    EXPECT_EQ(id, 112U);
    PumpUntilEvents(2);

    EXPECT_EQ(m_sink.calls.at(1).id, 3);
    EXPECT_EQ(m_sink.calls.at(1).values,
              (std::vector<std::wstring>{L"<appointments></appointments>", L"112"}));
    EXPECT_EQ(TheFakeMail().listStart, TaskTime(startTime));
    EXPECT_EQ(TheFakeMail().listEnd, TaskTime(endTime));
    EXPECT_TRUE(
        Traced(3, "start time,[year:2026,month:3,day:29];end time,[year:2026,month:4,day:5]"));
}

TEST_F(MapiClientMethodsTest, AListingBeforeInitializeAnswersWithAnEmptyText)
{
    oiexMapiFileTime time{0, 0};
    ULONG id = 0;
    EXPECT_EQ(m_client->ListAppointment(&time, &time, &id), S_OK);
    PumpUntilEvents(1);

    EXPECT_EQ(id, 111U);
    EXPECT_EQ(m_sink.calls.at(0).values, (std::vector<std::wstring>{L"", L"111"}));
}

TEST_F(MapiClientMethodsTest, AListingWithoutATimeOrAPlaceForTheIdIsRefused)
{
    oiexMapiFileTime time{1, 1};
    ULONG id = 7;
    EXPECT_EQ(m_client->ListAppointment(nullptr, &time, &id), E_FAIL);
    EXPECT_EQ(m_client->ListAppointment(&time, nullptr, &id), E_FAIL);
    EXPECT_EQ(m_client->ListAppointment(&time, &time, nullptr), E_FAIL);

    EXPECT_EQ(id, 7U);
    EXPECT_EQ(CClientMonitor::GetInstance()->NextSequence(), 111U);
}

TEST_F(MapiClientMethodsTest, AListingWithoutAWorkThreadIsRefused)
{
    ReleaseWorkThread(false);
    oiexMapiFileTime time{1, 1};
    ULONG id = 7;
    EXPECT_EQ(m_client->ListAppointment(&time, &time, &id), E_FAIL);
    EXPECT_EQ(id, 7U);
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
}

TEST_F(MapiClientMethodsTest, PostEventFailsWithOutlook)
{
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_ADD, L"key"), E_FAIL);
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_UPDATE, L"key"), E_FAIL);
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_DELETE, L"key"), E_FAIL);
    EXPECT_TRUE(Traced(3, "CMapiClient::PostEvent key, Type:0"));
}

TEST_F(MapiClientMethodsTest, PostEventQueuesItsTaskWithNotes)
{
    TheFakeMail().mailTypeInForce = MailTypeNotes;
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_ADD, L"key"), S_OK);
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_UPDATE, L"key"), S_OK);
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_DELETE, nullptr), S_OK);

    EXPECT_TRUE(Traced(3, "PushPendingWork tasktype[15]"));
    EXPECT_TRUE(Traced(3, "PushPendingWork tasktype[14]"));
    EXPECT_TRUE(Traced(3, "PushPendingWork tasktype[13]"));
    EXPECT_EQ(CClientMonitor::GetInstance()->NextSequence(), 111U);
}

TEST_F(MapiClientMethodsTest, PostEventRefusesTheEndMarkAndUnknownTypes)
{
    TheFakeMail().mailTypeInForce = MailTypeNotes;
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_END, L"key"), E_FAIL);
    EXPECT_EQ(PostEvent(4, L"key"), E_FAIL);
    EXPECT_EQ(PostEvent(-1, nullptr), E_FAIL);
    EXPECT_TRUE(Traced(3, "CMapiClient::PostEvent key, Type:3"));
    EXPECT_TRUE(Traced(3, "CMapiClient::PostEvent , Type:-1"));
}

TEST_F(MapiClientMethodsTest, PostEventWithoutAWorkThreadIsRefused)
{
    ReleaseWorkThread(false);
    EXPECT_EQ(PostEvent(TLVOIEVE_APPT_ADD, L"key"), E_FAIL);
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
}

} // namespace
