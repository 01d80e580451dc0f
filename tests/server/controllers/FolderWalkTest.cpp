// Finding the folders of one kind.

#include "FolderWalk.h"

#include "ControllerTest.h"
#include "FolderKind.h"
#include "MapiUtil.h"

class FolderWalkTest : public ControllerTest
{
protected:
    std::vector<MapiFolderInfo> Walk(ULONG kind)
    {
        std::vector<MapiFolderInfo> list;
        const CComRef<IMAPIFolder> root = MakeFakeFolder(L"");
        const ULONG count = RecFolders(root.Get(), 0, L"", list, kind);
        EXPECT_EQ(count, list.size());
        return list;
    }
    std::vector<std::wstring> Paths(ULONG kind)
    {
        std::vector<std::wstring> paths;
        for (const MapiFolderInfo& info : Walk(kind))
        {
            paths.push_back(info.path);
        }
        return paths;
    }
    static FakeFolderNode Calendar(const wchar_t* name, std::vector<FakeFolderNode> children = {})
    {
        return {.name = name, .containerClass = "IPF.Appointment", .children = std::move(children)};
    }
    static FakeFolderNode Mail(const wchar_t* name, std::vector<FakeFolderNode> children = {})
    {
        return {.name = name, .containerClass = "IPF.Note", .children = std::move(children)};
    }
};

using Paths = std::vector<std::wstring>;
using Tags = std::vector<ULONG>;

TEST_F(FolderWalkTest, FindsDepthFirstWithLevelPathAndIdentifier)
{
    mapi.folders = {Calendar(L"A", {Calendar(L"B", {Calendar(L"C")}), Calendar(L"D")}),
                    Calendar(L"E")};

    const std::vector<MapiFolderInfo> found = Walk(FolderKindAppointment);

    ASSERT_EQ(found.size(), 5U);
    EXPECT_EQ(found[2].path, L"A\\B\\C");
    EXPECT_EQ(found[2].name, L"C");
    EXPECT_EQ(found[2].level, 2U);
    EXPECT_EQ(found[2].kind, 5U);
    EXPECT_EQ(found[2].entryId, FakeFolderId(L"A\\B\\C"));
    EXPECT_EQ(found[3].path, L"A\\D");
    EXPECT_EQ(found[4].path, L"E");
    EXPECT_EQ(found[4].level, 0U);
}

TEST_F(FolderWalkTest, ChildrenAreReadWithFiveColumnsAndWithoutAdvancing)
{
    mapi.folders = {Calendar(L"A")};

    Walk(FolderKindAppointment);

    EXPECT_EQ(mapi.flags["IMAPIFolder::OpenProperty"], 0U);
    EXPECT_EQ(mapi.tags["HierarchyTable::SetColumns"],
              (Tags{0x0FFF0102, 0x3001001F, 0x360A000B, 0x0FFE0003, 0x10F4000B}));
    EXPECT_EQ(mapi.flags["HierarchyTable::SetColumns"], 0U);
    EXPECT_EQ(mapi.limits["HierarchyTable::QueryRows"], 0x0FFFFFFF);
    EXPECT_EQ(mapi.flags["HierarchyTable::QueryRows"], TBL_NOADVANCE);
    EXPECT_EQ(mapi.flags["IMAPIFolder::OpenEntry"], 0U);
}

TEST_F(FolderWalkTest, WhatTheListHeldStaysAndDoesNotCount)
{
    mapi.folders = {Calendar(L"A")};
    std::vector<MapiFolderInfo> list(1);
    list[0].path = L"before";
    const CComRef<IMAPIFolder> root = MakeFakeFolder(L"");

    EXPECT_EQ(RecFolders(root.Get(), 3, L"Top\\", list, FolderKindAppointment), 1U);

    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].path, L"before");
    EXPECT_EQ(list[1].path, L"Top\\A");
    EXPECT_EQ(list[1].level, 3U);
}

TEST_F(FolderWalkTest, EntersSubtreesThroughWantedFoldersOnly)
{
    mapi.folders = {Mail(L"Mail", {Calendar(L"Lost")}),
                    Calendar(L"Calendar", {Mail(L"Notes", {Calendar(L"Deep")})})};

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"Calendar"}));
    EXPECT_EQ(trace.Count("RecFolders"), 2U);
}

TEST_F(FolderWalkTest, AnyKindFindsEverything)
{
    mapi.folders = {Mail(L"Mail", {Calendar(L"Found")})};

    EXPECT_EQ(Paths(FolderKindAny), (::Paths{L"Mail", L"Mail\\Found"}));
}

TEST_F(FolderWalkTest, HiddenFolderIsLeftOutWithAllBelowIt)
{
    mapi.folders = {Calendar(L"Hidden", {Calendar(L"Below")}), Calendar(L"Shown")};
    mapi.folders[0].isHidden = true;

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"Shown"}));
}

TEST_F(FolderWalkTest, FolderThatSaysNothingAboutHidingIsShown)
{
    mapi.folders = {Calendar(L"A")};
    mapi.folders[0].hasHiddenColumn = false;

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"A"}));
}

TEST_F(FolderWalkTest, FolderWithoutANameIsFoundUnderAnEmptyOne)
{
    mapi.folders = {Calendar(L"A", {Calendar(L"B")})};
    mapi.folders[0].hasNameColumn = false;

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"", L"\\B"}));
}

TEST_F(FolderWalkTest, FoldersWithoutIdentifierOrOfAnotherTypeArePassedOver)
{
    mapi.folders = {
        Calendar(L"NoColumn"), Calendar(L"NoOwn"), Calendar(L"Message"), Calendar(L"Ok")};
    mapi.folders[0].hasEntryIdColumn = false;
    mapi.folders[1].hasOwnEntryId = false;
    mapi.folders[2].openedAs = MAPI_MESSAGE;

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"Ok"}));
}

TEST_F(FolderWalkTest, FolderThatWillNotOpenDoesNotStopTheOthers)
{
    mapi.folders = {Calendar(L"Bad"), Calendar(L"Good")};
    mapi.answers["IMAPIFolder::OpenEntry"] = {MAPI_E_NO_ACCESS};

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"Good"}));
}

TEST_F(FolderWalkTest, UnreadableHierarchyGivesNothing)
{
    mapi.folders = {Calendar(L"A")};
    mapi.answers["IMAPIFolder::OpenProperty"] = {E_FAIL};
    EXPECT_EQ(Paths(FolderKindAppointment), ::Paths{});

    mapi.answers["HierarchyTable::QueryRows"] = {E_FAIL};
    EXPECT_EQ(Paths(FolderKindAppointment), ::Paths{});

    mapi.folders = {};
    EXPECT_EQ(Paths(FolderKindAppointment), ::Paths{});
}

TEST_F(FolderWalkTest, BusyHierarchyIsAskedAgain)
{
    mapi.folders = {Calendar(L"A")};
    mapi.answers["HierarchyTable::QueryRows"] = {MAPI_E_BUSY};

    EXPECT_EQ(Paths(FolderKindAppointment), (::Paths{L"A"}));

    EXPECT_EQ(Lines(), (Strings{"2 RecFolders", "3 QueryAllRows hResult==MAPI_E_BUSY"}));
}

TEST_F(FolderWalkTest, BusyHierarchyThatCannotWaitGivesNothing)
{
    mapi.folders = {Calendar(L"A")};
    mapi.answers["HierarchyTable::QueryRows"] = {MAPI_E_BUSY};
    mapi.answers["HierarchyTable::WaitForCompletion"] = {MAPI_E_NO_SUPPORT};

    EXPECT_EQ(Paths(FolderKindAppointment), ::Paths{});

    EXPECT_EQ(mapi.CountCalls("HierarchyTable::QueryRows"), 1U);
}

TEST_F(FolderWalkTest, NoFolderGivesNothing)
{
    std::vector<MapiFolderInfo> list;

    EXPECT_EQ(RecFolders(nullptr, 0, L"", list, FolderKindAny), 0U);

    EXPECT_EQ(Lines(), (Strings{"2 RecFolders"}));
}

TEST_F(FolderWalkTest, ClassesAreJudgedByTheirBeginning)
{
    const struct
    {
        const char* containerClass;
        ULONG kind;
    } rows[] = {
        {"IPF.Appointment", 5},
        {"IPM.Appointment", 5},
        {"IPF.Appointment.Extra", 5},
        {"IPM.Contact", 6},
        {"IPF.Contact.MOC", 6},
        {"IPF.Journal", 7},
        {"IPF.StickyNote", 8},
        {"IPF.Task", 9},
        {"IPF.Something", 10},
        {"IPF.", 10},
        {"IPF.Note", 11},
        {"IPF.Imap", 11},
        {"IPF", 12},
        {"ipf.Appointment", 12},
        {"Report.IPF", 12},
        {"IPF.appointment", 10},
        {"", 12},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.containerClass);
        mapi.folders = {{.name = L"F", .containerClass = row.containerClass}};
        const CComRef<IMAPIFolder> folder = MakeFakeFolder(L"F");

        EXPECT_EQ(ClassifyFolder(nullptr, folder.Get()), row.kind);
    }
    EXPECT_EQ(ClassifyFolder(nullptr, nullptr), 12U);
}
