#include <gtest/gtest.h>

#include "AppointmentTags.h"
#include "PatternBlob.h"
#include "TestOutlook.h"

namespace
{

using Calls = std::vector<std::string>;
using Texts = std::vector<std::wstring>;

class ListingTest : public CalendarTest
{
};

TEST_F(ListingTest, AControllerThatIsNotUpRefuses)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    m_outlook.m_hrInit = 0x80080004;

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    EXPECT_EQ(m_listed, 1U);
    EXPECT_EQ(m_xml, L"");
    EXPECT_EQ(
        m_trace.Messages(),
        (Calls{"3 ListAppointment", "2 CMyMAPICtrl::ListAppointment - hStatus [0x80080004]"}));
    EXPECT_TRUE(m_table->calls.empty());
}

TEST_F(ListingTest, NothingToListIsAnEmptyList)
{
    m_outlook.m_CalendarSinks.clear();

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    EXPECT_EQ(m_listed, 0U);
    EXPECT_EQ(m_xml, L"<appointments></appointments>");
    EXPECT_TRUE(m_trace.Has(3, "CMyMAPICtrl::ListAppointment - Got [0] appointment(s)"));
}

TEST_F(ListingTest, ASingleAppointmentNeedsMoreThanATouchingEdge)
{
    AddAppointment(1, "2024-03-05T09:00:00", "2024-03-05T10:00:00");
    AddAppointment(2, "2024-03-05T09:00:00", "2024-03-05T10:00:01");
    AddAppointment(3, "2024-03-05T10:30:00", "2024-03-05T10:40:00");
    AddAppointment(4, "2024-03-05T11:59:59", "2024-03-05T13:00:00");
    AddAppointment(5, "2024-03-05T12:00:00", "2024-03-05T13:00:00");
    AddAppointment(6, "2024-03-05T00:00:00", "2024-03-05T23:00:00");

    EXPECT_EQ(List("2024-03-05T10:00:00", "2024-03-05T12:00:00"),
              (Texts{L"subject 2", L"subject 3", L"subject 4", L"subject 6"}));
    EXPECT_TRUE(m_trace.Has(3, "CMyMAPICtrl::ListAppointment - Got [4] appointment(s)"));
}

TEST_F(ListingTest, AnEmptyWindowListsOnlyWhatStrictlyContainsTheMoment)
{
    AddAppointment(1, "2024-03-05T09:00:00", "2024-03-05T10:00:00");
    AddAppointment(2, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    AddAppointment(3, "2024-03-05T09:59:59", "2024-03-05T10:00:01");
    AddAppointment(4, "2024-03-05T10:00:00", "2024-03-05T10:00:00");

    EXPECT_EQ(List("2024-03-05T10:00:00", "2024-03-05T10:00:00"), Texts{L"subject 3"});
}

TEST_F(ListingTest, AnAppointmentWithoutAnEndIsNotListed)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00")
        ->props.Remove(NamedTag(PSETID_Appointment, 0x820E, PT_SYSTIME));

    EXPECT_TRUE(List("2024-03-05T00:00:00", "2024-03-06T00:00:00").empty());
}

TEST_F(ListingTest, TheTableIsAskedInTheFixedOrderWithTheWidenedWindow)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");
    m_table->calls.clear();

    List("2024-03-05T10:00:30", "2024-03-05T12:00:30");

    const ULONG clipStart = NamedTag(PSETID_Appointment, 0x8235, PT_SYSTIME);
    EXPECT_EQ(g_ulStartTagEx, clipStart);
    const auto hex = [](ULONG tag) {
        char text[16] = {};
        std::snprintf(text, sizeof(text), "%08lX", tag);
        return std::string(text);
    };
    const auto branch = [&](LONG start, LONG end, const char* recurring) {
        return "AND(NOT(OR(" + hex(NamedTag(PSETID_Appointment, start, PT_SYSTIME)) +
               " > 2024-03-06T01:00:00, " + hex(NamedTag(PSETID_Appointment, end, PT_SYSTIME)) +
               " < 2024-03-04T22:00:00)), " +
               hex(NamedTag(PSETID_Appointment, 0x8223, PT_BOOLEAN)) + " = " + recurring + ")";
    };
    EXPECT_EQ(m_table->calls,
              (Calls{"SeekRow",
                     "Abort",
                     "SeekRow",
                     "Restrict none flags 2",
                     "Restrict OR(" + branch(0x8235, 0x8236, "TRUE") + ", " +
                         branch(0x820D, 0x820E, "FALSE") + ") flags 2",
                     "GetRowCount",
                     "SetColumns 0FF60102 0FFF0102 0E090102 0FFE0003 001A001F flags 0",
                     "QueryRows 1",
                     "Restrict none flags 2"}));
}

TEST_F(ListingTest, TheFiveTagsAreLookedUpOnceForTheProcess)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");
    EXPECT_EQ(m_trace.Count("GetApptInformalTag"), 5U);
    EXPECT_EQ(g_ulRecurringTag, NamedTag(PSETID_Appointment, 0x8223, PT_BOOLEAN));

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");
    EXPECT_EQ(m_trace.Count("GetApptInformalTag"), 5U);
}

TEST_F(ListingTest, TheLinesOfAListingComeInTheirOrder)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    AddSeries(
        2, "2024-03-05T09:00:00", "2024-03-05T10:00:00", pattern::Daily("2024-03-05", 1).Write());
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); // resolves the tags
    MapiDataStore().ClearDataStore();
    m_trace.Clear();

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    Calls lines;
    for (const TraceLine& line : m_trace.Lines())
    {
        if (line.function.starts_with("COutlookCtrl::") ||
            line.function.starts_with("CMAPIFolderBase::"))
        {
            lines.push_back(std::to_string(line.level) + " " + line.message);
        }
    }
    EXPECT_EQ(lines,
              (Calls{"3 ListAppointment",
                     "2 ListAppointmentFromFolder",
                     "2 GetAppointmentInfo",
                     "3 get again- name=[c3ViamVjdCAx], rectype=[0], meetingstatus=[0] "
                     "stFirst=[2024/3/5 10:0] instanceID=[AA01] duration=[60]",
                     "3 check simple appointment",
                     "2 GetAppointmentInfo",
                     "3 get again- name=[c3ViamVjdCAy], rectype=[1], meetingstatus=[0] "
                     "stFirst=[2024/3/5 9:0] instanceID=[AA02] duration=[60]",
                     "3 check recurrent appointment",
                     "2 iter->subject=subject 2,startdate=2024-3-5",
                     "2 bFound=0, meetInfoCurrent.strName=,strDesc size=0,strXaltDesc size=0,"
                     "strPropertyFromDeskTools size=0,m_strUCCapabilities.size=0",
                     "3 CMyMAPICtrl::ListAppointment - Got [2] appointment(s)"}));
}

TEST_F(ListingTest, OnlyMessagesOfTheAppointmentClassesCount)
{
    for (BYTE id = 1; id <= 6; ++id)
    {
        AddAppointment(id, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    }
    m_table->rows[0].SetText(PR_MESSAGE_CLASS_W, L"IPM.APPOINTMENT.Special");
    m_table->rows[1].SetText(PR_MESSAGE_CLASS_W, L"IPM.Note");
    m_table->rows[2].SetLong(PR_OBJECT_TYPE, MAPI_FOLDER);
    m_table->rows[3].SetError(PR_MESSAGE_CLASS_W, MAPI_E_NOT_FOUND);
    m_table->rows[4].SetText(PR_MESSAGE_CLASS_W, L"ipm.appoint");

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-06T00:00:00"),
              (Texts{L"subject 1", L"subject 6"}));
}

TEST_F(ListingTest, FoldersAndRowsKeepTheirOrderAndNothingIsDroppedAsADouble)
{
    AddAppointment(2, "2024-03-05T12:00:00", "2024-03-05T13:00:00");
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    MAPI_TBLSinkInfo second;
    second.folder = CComRef<IMAPIFolder>::Share(m_folder.Get());
    second.table = CComRef<IMAPITable>::Share(m_table.Get());
    m_outlook.m_CalendarSinks.push_back(std::move(second));

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-06T00:00:00"),
              (Texts{L"subject 2", L"subject 1", L"subject 2", L"subject 1"}));
}

TEST_F(ListingTest, ARecordKnowsWhereItsMessageLies)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:30:00");

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    EXPECT_EQ(Values(L"profile"), Texts{L"profile"});
    EXPECT_EQ(Values(L"store"), Texts{L"store"});
    EXPECT_EQ(Values(L"storeEntryID"), Texts{L"5E"});
    EXPECT_EQ(Values(L"entryID"), Texts{L"00000001"});
    EXPECT_EQ(Values(L"instanceEntryID"), Texts{L"AA01"});
    EXPECT_EQ(Values(L"startTime"), Texts{L"03/05/2024 10:00:00"});
    EXPECT_EQ(Values(L"firstTime"), Texts{L"03/05/2024 10:00:00"});
    EXPECT_EQ(Values(L"endTime"), Texts{L"03/05/2024 11:30:00"});
    EXPECT_EQ(m_folder->openFlags, ULONG{MAPI_BEST_ACCESS});
}

TEST_F(ListingTest, ARowThatWasReadOnceIsNeverReadAgain)
{
    const CComRef<CFakeMessage> message =
        AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");
    const int opened = m_folder->opened;
    message->props.SetText(PR_SUBJECT_W, L"changed");
    m_trace.Clear();

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-06T00:00:00"), Texts{L"subject 1"});

    EXPECT_EQ(m_folder->opened, opened);
    EXPECT_TRUE(m_trace.Has(
        3, "name=[c3ViamVjdCAx], rectype=[0], meetingstatus=[0] stFirst=[2024/3/5 10:0]"));
}

TEST_F(ListingTest, TheFirstReadOfARowIsTraced)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    EXPECT_TRUE(m_trace.Has(3,
                            "get again- name=[c3ViamVjdCAx], rectype=[0], meetingstatus=[0] "
                            "stFirst=[2024/3/5 10:0] instanceID=[AA01] duration=[60]"));
    EXPECT_TRUE(m_trace.Has(2, "ListAppointmentFromFolder"));
    EXPECT_TRUE(m_trace.Has(2, "GetAppointmentInfo"));
    EXPECT_TRUE(m_trace.Has(3, "check simple appointment"));
}

TEST_F(ListingTest, ARowThatCannotBeReadIsPassedOver)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    AddAppointment(2, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); // resolves the tags through message 1
    MapiDataStore().ClearDataStore();
    m_folder->messages.erase({0, 0, 0, 1});

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-06T00:00:00"), Texts{L"subject 2"});

    EXPECT_TRUE(m_trace.Has(3, "Get app info error:hresult=8004010f"));
}

TEST_F(ListingTest, AnObjectThatIsNoMessageIsPassedOver)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); // resolves the tags
    MapiDataStore().ClearDataStore();
    m_folder->objectType = MAPI_FOLDER;

    EXPECT_TRUE(List("2024-03-05T00:00:00", "2024-03-06T00:00:00").empty());

    EXPECT_TRUE(m_trace.Has(3, "Get app info error:hresult=0"));
}

TEST_F(ListingTest, AFolderStopsOnceItGaveMoreThanTwoThousandAndTheNextIsStillListed)
{
    MAPI_TBLSinkInfo first;
    const CComRef<CFakeTable> bigTable = MakeFake<CFakeTable>();
    first.folder = CComRef<IMAPIFolder>::Share(m_folder.Get());
    first.table = CComRef<IMAPITable>::Share(bigTable.Get());
    m_outlook.m_CalendarSinks.insert(m_outlook.m_CalendarSinks.begin(), std::move(first));
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    bigTable->rows.assign(2005, m_table->rows[0]);

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-06T00:00:00").size(), 2002U);
}

TEST_F(ListingTest, AReleaseEndsTheListingAndKeepsWhatWasGathered)
{
    for (BYTE id = 1; id <= 4; ++id)
    {
        AddAppointment(id, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    }
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");
    MapiDataStore().ClearDataStore();
    const int before = m_folder->opened;
    m_folder->onOpen = [&] { MapiDataStore().SetReleasing(m_folder->opened == before + 2); };

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-06T00:00:00"),
              (Texts{L"subject 1", L"subject 2"}));

    EXPECT_EQ(m_listed, 0U);
    EXPECT_EQ(m_trace.Count("quit this task for release"), 1U);
    EXPECT_TRUE(m_trace.Has(2, "quit this task for release"));
    EXPECT_EQ(m_folder->opened, before + 2);
}

TEST_F(ListingTest, OutsideAPersonalStoreTheLongTermIdentifierReplacesTheRowsOne)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00")
        ->props.SetBlock(PR_ENTRYID, {0x10, 0x20});
    m_folder->messages[{0x10, 0x20}] = m_folder->messages[{0, 0, 0, 1}];
    m_outlook.m_bNeedRealEntryID = 1;

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    EXPECT_EQ(Values(L"entryID"), Texts{L"1020"});
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"1020", stored));
    EXPECT_FALSE(MapiDataStore().GetAppointment(L"00000001", stored));
}

TEST_F(ListingTest, InAPersonalStoreTheRowsIdentifierStays)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00")
        ->props.SetBlock(PR_ENTRYID, {0x10, 0x20});

    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");

    EXPECT_EQ(Values(L"entryID"), Texts{L"00000001"});
}

TEST_F(ListingTest, AnIdentifierThatCannotBeResolvedIsLeftAlone)
{
    MapiItemRef reference;
    reference.entryId = {0, 0, 0, 9};
    EXPECT_FALSE(CTestOutlook::ResolveEntryId(m_folder.Get(), reference));

    const CComRef<CFakeMessage> message =
        AddAppointment(9, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    message->props.SetBlock(PR_ENTRYID, {});
    EXPECT_TRUE(CTestOutlook::ResolveEntryId(m_folder.Get(), reference));

    m_folder->objectType = MAPI_FOLDER;
    EXPECT_FALSE(CTestOutlook::ResolveEntryId(m_folder.Get(), reference));
    EXPECT_EQ(reference.entryId, (BinaryBlock{0, 0, 0, 9}));
}

} // namespace
