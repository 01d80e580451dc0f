#include <gtest/gtest.h>

#include "AppointmentTags.h"
#include "TestOutlook.h"

namespace
{

using Calls = std::vector<std::string>;
using Texts = std::vector<std::wstring>;

constexpr const wchar_t* kMarker = L"####DTOIEX_OUTLOOK_MEETING_ERROR####";

/// A folder with one appointment and, behind it, a second folder with the same one.
class ListingFailureTest : public CalendarTest
{
protected:
    ListingFailureTest()
    {
        AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
        m_secondTable->rows = m_table->rows;
        MAPI_TBLSinkInfo second;
        second.folder = CComRef<IMAPIFolder>::Share(m_folder.Get());
        second.table = CComRef<IMAPITable>::Share(m_secondTable.Get());
        m_outlook.m_CalendarSinks.push_back(std::move(second));
        ListDay(); // resolves the tags
        m_trace.Clear();
        m_table->calls.clear();
        m_secondTable->calls.clear();
    }

    ~ListingFailureTest() override { m_secondTable.Reset(); }

    Texts ListDay() { return List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); }

    CComRef<CFakeTable> m_secondTable = MakeFake<CFakeTable>();
};

TEST_F(ListingFailureTest, ATableThatCannotBeRewoundLeavesTheMarkerAlone)
{
    m_secondTable->script["SeekRow"] = {MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay(), Texts{kMarker});

    EXPECT_EQ(m_listed, 0U);
    EXPECT_EQ(Values(L"meetStatus"), Texts{L"5"});
    EXPECT_TRUE(
        m_trace.Has(3, "5. lpTable->SeekRow(BOOKMARK_BEGINNING, 0, &lRowsSought) [80004005]"));
    EXPECT_TRUE(m_trace.Has(3, "CMyMAPICtrl::ListAppointment - Got [1] appointment(s)"));
}

TEST_F(ListingFailureTest, FoldersBehindTheFailedOneAppendToTheMarker)
{
    m_table->script["SeekRow"] = {MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay(), (Texts{kMarker, L"subject 1"}));
}

TEST_F(ListingFailureTest, TheRestrictionIsClearedAfterAFailureAsWell)
{
    m_table->script["SeekRow"] = {MAPI_E_CALL_FAILED};

    ListDay();

    EXPECT_EQ(m_table->calls, (Calls{"SeekRow", "Restrict none flags 2"}));
}

TEST_F(ListingFailureTest, WithoutTheClipTagsAFolderGivesNothing)
{
    g_ulStartTagEx = 0;
    g_ulEndTagEx = 0x80010040;
    m_table->script["QueryRows"] = {MAPI_E_CALL_FAILED};
    m_secondTable->script["QueryRows"] = {MAPI_E_CALL_FAILED};

    EXPECT_TRUE(ListDay().empty());

    EXPECT_EQ(m_trace.Count("Get IDNAME_ClipStart failed"), 2U);
    EXPECT_TRUE(m_trace.Has(2, "Get IDNAME_ClipStart failed"));
    EXPECT_TRUE(m_trace.Has(3, "g_ulStartTagEx [       0] g_ulEndTagEx[80010040]"));
}

TEST_F(ListingFailureTest, EachTagThatCannotBeFoundHasItsLineAndTheNextIsTried)
{
    for (ULONG* const tag : {&g_ulStartTagEx,
                             &g_ulEndTagEx,
                             &g_ulRecurringTag,
                             &g_ulAppointmentStartTag,
                             &g_ulAppointmentEndTag})
    {
        *tag = 0;
    }
    m_table->rows.clear();
    m_secondTable->rows.clear();

    EXPECT_TRUE(ListDay().empty());

    const Calls lines = LinesWith(m_trace, "Get IDNAME_");
    EXPECT_EQ(Calls(lines.begin(), lines.begin() + 5),
              (Calls{"Get IDNAME_ClipStart failed",
                     "Get IDNAME_ClipEnd failed",
                     "Get IDNAME_ISRECURRING failed",
                     "Get IDNAME_STARTTIME failed",
                     "Get IDNAME_ENDTIME failed"}));
    EXPECT_EQ(lines.size(), 10U);
    EXPECT_EQ(m_table->calls[0], "SeekRow");
}

TEST_F(ListingFailureTest, ATableThatCannotBeStoppedGivesNothing)
{
    m_table->script["Abort"] = {MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3, "1.2 lpTable->Abort [80004005]"));
    EXPECT_EQ(m_table->calls, (Calls{"SeekRow", "Abort", "Restrict none flags 2"}));
}

TEST_F(ListingFailureTest, ATableWithNothingToStopGoesOnAndTellsItsStatus)
{
    m_table->script["Abort"] = {MAPI_E_UNABLE_TO_ABORT};

    EXPECT_EQ(ListDay().size(), 2U);

    EXPECT_TRUE(m_trace.Has(3, "1.1 lpTable->GetStatus[       0]"));
}

TEST_F(ListingFailureTest, ATableThatCannotBeRewoundForTheReadGivesNothing)
{
    m_table->script["SeekRow"] = {S_OK, MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(
        m_trace.Has(3, "3. lpTable->SeekRow(BOOKMARK_BEGINNING, 0, &lRowsSought) [80004005]"));
}

TEST_F(ListingFailureTest, AnOldRestrictionThatStaysGivesNothing)
{
    m_table->script["Restrict"] = {MAPI_E_CALL_FAILED};
    m_table->hasErrorText = true;

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3, "GetLastError[store][no luck][2][3][      44]"));
    EXPECT_TRUE(m_trace.Has(1, "lpTable->Restrict [80004005]"));
    EXPECT_FALSE(m_trace.Has(3, "network error"));
    EXPECT_EQ(m_table->calls.size(),
              6U); // with GetLastError and the restriction cleared at the end
}

TEST_F(ListingFailureTest, ANetworkErrorIsNamedAndNotTriedAgain)
{
    m_table->script["Restrict"] = {MAPI_E_NETWORK_ERROR};

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3, "network error"));
    EXPECT_TRUE(LinesWith(m_trace, "GetLastError[").empty());
}

TEST_F(ListingFailureTest, ARestrictionThatIsRefusedGivesNothing)
{
    m_table->script["Restrict"] = {S_OK, MAPI_E_TOO_COMPLEX};
    m_table->hasErrorText = true;

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3, "6. lpTable->Restrict [80040117]"));
    EXPECT_EQ(LinesWith(m_trace, "GetLastError[store]").size(), 1U);
}

TEST_F(ListingFailureTest, AFailedRowCountGoesOnWithTheCountAsItStands)
{
    m_table->script["GetRowCount"] = {MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay().size(), 2U);

    EXPECT_TRUE(m_trace.Has(3, "7. lpTable->GetRowCount[80004005]"));
}

TEST_F(ListingFailureTest, AFolderWithoutRowsEndsBeforeItsColumnsAreSet)
{
    m_table->rows.clear();

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3, "lpTable->GetRowCount: 0"));
    EXPECT_EQ(m_table->calls[m_table->calls.size() - 2], "GetRowCount");
}

TEST_F(ListingFailureTest, ColumnsThatAreRefusedGiveNothing)
{
    m_table->script["SetColumns"] = {MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3, "8. lpTable->SetColumns [80004005]"));
}

TEST_F(ListingFailureTest, AWarningForTheColumnsGivesNothingInSilence)
{
    m_table->script["SetColumns"] = {MAPI_W_ERRORS_RETURNED};

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(LinesWith(m_trace, "8. ").empty());
}

TEST_F(ListingFailureTest, RowsThatCannotBeReadGiveNothing)
{
    m_table->script["QueryRows"] = {MAPI_E_CALL_FAILED};

    EXPECT_EQ(ListDay(), Texts{L"subject 1"});

    EXPECT_TRUE(m_trace.Has(3,
                            "CMAPIFolderBase.RestrictAppointmentOnTable, lpTable->QueryRows "
                            "error[0x80004005]\n"));
}

TEST_F(ListingFailureTest, ARestrictionThatCannotBeClearedIsTracedAndTheListingGoesOn)
{
    m_table->script["Restrict"] = {S_OK, S_OK, MAPI_E_CALL_FAILED};
    m_table->hasErrorText = true;

    EXPECT_EQ(ListDay().size(), 2U);

    EXPECT_TRUE(m_trace.Has(0, "GetLastError[no luck] szComponent[store]"));
    EXPECT_TRUE(m_trace.Has(1, "lpTable->Restrict [80004005]"));
}

TEST_F(ListingFailureTest, ASubscriptionWithoutFolderOrTableIsPassedOver)
{
    m_outlook.m_CalendarSinks[0].folder.Reset();
    EXPECT_EQ(ListDay(), Texts{L"subject 1"});
    m_outlook.m_CalendarSinks[1].table.Reset();
    EXPECT_TRUE(ListDay().empty());

    EXPECT_EQ(m_trace.Count("MAPI_TBLSinkInfo NULL pointer"), 3U);
    EXPECT_TRUE(m_trace.Has(1, "MAPI_TBLSinkInfo NULL pointer"));
}

} // namespace
