// Each call that a listing makes on a table fails once, by the library's fault plan.

#include <algorithm>

#include "CalendarStoreTest.h"
#include "MapiDataStore.h"

namespace
{

constexpr const wchar_t* kMarker = L"####DTOIEX_OUTLOOK_MEETING_ERROR####";

/// Three folders with one appointment each, named after their folder.
class ListingFaultsTest : public ListingStoreTest
{
protected:
    void SetUp() override
    {
        ListingStoreTest::SetUp();
        Add("calendar", CStoreCalendar::kCalendar);
        Add("team", CStoreCalendar::kTeam);
        Add("rooms", CStoreCalendar::kRooms);
        Start();
    }
    void Add(const char* subject, int folder)
    {
        calendar.Add(subject, "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z", folder);
    }
    Texts ListDay() { return List("2026-11-02T00:00:00", "2026-11-03T00:00:00"); }
};

TEST_F(ListingFaultsTest, ATableThatCannotBeRewoundWipesTheFoldersBeforeItAndLaterOnesAppend)
{
    // Each folder goes back to its first row twice, the failed one once.
    SetFaultsAtOnce("IMAPITable::SeekRow(contents) call 3 fail E_FAIL");

    EXPECT_EQ(ListDay(), (Texts{kMarker, L"rooms"}));

    EXPECT_EQ(listed, 0U);
    EXPECT_EQ(Values(L"meetStatus"), (Texts{L"5", L"0"}));
    EXPECT_TRUE(
        trace.Has(3, "5. lpTable->SeekRow(BOOKMARK_BEGINNING, 0, &lRowsSought) [80004005]"));
    EXPECT_TRUE(trace.Has(3, "CMyMAPICtrl::ListAppointment - Got [2] appointment(s)"));
}

TEST_F(ListingFaultsTest, ALaterFailureWipesTheEarlierMarkerToo)
{
    SetFaultsAtOnce("IMAPITable::SeekRow(contents) call 1 fail E_FAIL\n"
                    "IMAPITable::SeekRow(contents) call 4 fail MAPI_E_NETWORK_ERROR");

    EXPECT_EQ(ListDay(), Texts{kMarker});
}

TEST_F(ListingFaultsTest, TheMarkerAloneIsLeftWhenTheLastFolderFails)
{
    SetFaultsAtOnce("IMAPITable::SeekRow(contents) call 5 fail E_FAIL");

    EXPECT_EQ(ListDay(), Texts{kMarker});

    SetFaultsAtOnce("");
    EXPECT_EQ(ListDay(), (Texts{L"calendar", L"team", L"rooms"}));
}

TEST_F(ListingFaultsTest, EveryCallOnTheSecondFolderFailsOnce)
{
    const Texts all = {L"calendar", L"team", L"rooms"};
    const Texts others = {L"calendar", L"rooms"};
    const struct
    {
        const char* plan;
        Texts subjects;
        int level;
        const char* line;
    } rows[] = {
        {"IMAPITable::Abort call 2 fail E_FAIL", others, 3, "1.2 lpTable->Abort [80004005]"},
        {"IMAPITable::Abort call 2 fail MAPI_E_UNABLE_TO_ABORT",
         all,
         3,
         "1.1 lpTable->GetStatus[       0]"},
        {"IMAPITable::SeekRow(contents) call 4 fail E_FAIL",
         others,
         3,
         "3. lpTable->SeekRow(BOOKMARK_BEGINNING, 0, &lRowsSought) [80004005]"},
        {"IMAPITable::Restrict(contents) call 4 fail E_FAIL",
         others,
         1,
         "lpTable->Restrict [80004005]"},
        {"IMAPITable::Restrict(contents) call 4 fail MAPI_E_NETWORK_ERROR",
         others,
         3,
         "network error"},
        {"IMAPITable::Restrict(contents) call 5 fail MAPI_E_TOO_COMPLEX",
         others,
         3,
         "6. lpTable->Restrict [80040117]"},
        {"IMAPITable::Restrict(contents) call 6 fail E_FAIL",
         all,
         1,
         "lpTable->Restrict [80004005]"},
        {"IMAPITable::GetRowCount(contents) call 2 fail E_FAIL",
         others,
         3,
         "7. lpTable->GetRowCount[80004005]"},
        {"IMAPITable::GetRowCount(contents) call 2 give E_FAIL",
         all,
         3,
         "7. lpTable->GetRowCount[80004005]"},
        {"IMAPITable::SetColumns(contents) call 2 fail E_FAIL",
         others,
         3,
         "8. lpTable->SetColumns [80004005]"},
        {"IMAPITable::SetColumns(contents) call 2 give MAPI_W_ERRORS_RETURNED",
         others,
         2,
         "ListAppointmentFromFolder"},
        {"IMAPITable::QueryRows(contents) call 2 fail E_FAIL",
         others,
         3,
         "CMAPIFolderBase.RestrictAppointmentOnTable, lpTable->QueryRows error[0x80004005]\n"},
        {"IMAPIFolder::OpenEntry(message) call 2 fail MAPI_E_NOT_FOUND",
         others,
         3,
         "Get app info error:hresult=8004010f"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.plan);
        MapiDataStore().ClearDataStore();
        trace.Clear();
        SetFaultsAtOnce(row.plan);

        EXPECT_EQ(ListDay(), row.subjects);

        EXPECT_EQ(listed, 0U);
        EXPECT_TRUE(trace.Has(row.level, row.line));
        EXPECT_NE(Report().find("fault applied 1 of"), std::string::npos) << Report();
        SetFaultsAtOnce("");
        EXPECT_EQ(ListDay(), all);
    }
}

TEST_F(ListingFaultsTest, WhatTheTableSaysOfItsFailureIsTraced)
{
    const struct
    {
        const char* plan;
        TL_SDK::TLLoggerLevel level;
    } rows[] = {
        {"IMAPITable::Restrict(contents) call 1 fail E_FAIL",
         static_cast<TL_SDK::TLLoggerLevel>(3)},
        {"IMAPITable::Restrict(contents) call 2 fail E_FAIL",
         static_cast<TL_SDK::TLLoggerLevel>(3)},
        {"IMAPITable::Restrict(contents) call 3 fail E_FAIL",
         static_cast<TL_SDK::TLLoggerLevel>(0)},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.plan);
        trace.Clear();
        SetFaultsAtOnce(row.plan);

        ListDay();

        const std::vector<TraceLine> lines = trace.Lines();
        const auto told = std::find_if(lines.begin(), lines.end(), [](const TraceLine& line) {
            return line.message.starts_with("GetLastError[");
        });
        ASSERT_NE(told, lines.end());
        EXPECT_EQ(told->level, row.level);
    }
}

} // namespace
