#include <algorithm>

#include "StoreFixture.h"

using namespace mapitest;

namespace
{

/// Folders, stores and sessions: what the other tests do not ask of them.
class FolderTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(
            R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "one", "PR_MESSAGE_FLAGS": 0 } },
               { "id": 101, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "two", "PR_MESSAGE_FLAGS": 0 } },
               { "id": 102, "folder": 4, "class": "IPM.Configuration", "associated": true, "properties": { "PR_SUBJECT_W": "hidden" } },
               { "id": 103, "folder": 9, "class": "IPM.Appointment", "properties": { "PR_SUBJECT_W": "deep" } })"));
        Start();
    }
    template <class T>
    static std::vector<ULONG> PropertiesOf(T* object, ULONG flags)
    {
        CHeld<SPropTagArray> tags;
        EXPECT_EQ(object->GetPropList(flags, tags.Put()), S_OK);
        return std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues);
    }
    static bool Has(const std::vector<ULONG>& tags, ULONG tag)
    {
        return std::count(tags.begin(), tags.end(), tag) == 1;
    }
    static ENTRYID* Entry(std::string& id) { return reinterpret_cast<ENTRYID*>(id.data()); }
};

TEST_F(FolderTest, EmptiedFolderKeepsWhatIsAssociatedUnlessTold)
{
    const FolderRef inbox = OpenFolder(4);
    ASSERT_EQ(inbox->EmptyFolder(0, nullptr, 0), S_OK);
    EXPECT_TRUE(TextColumn(Contents(4), PR_SUBJECT_W).empty());
    EXPECT_EQ(TextColumn(Contents(4, MAPI_UNICODE | MAPI_ASSOCIATED), PR_SUBJECT_W),
              std::vector<std::wstring>{L"hidden"});
    ASSERT_EQ(inbox->EmptyFolder(0, nullptr, DEL_ASSOCIATED), S_OK);
    EXPECT_TRUE(TextColumn(Contents(4, MAPI_UNICODE | MAPI_ASSOCIATED), PR_SUBJECT_W).empty());
    // Folders inside go with it.
    ASSERT_EQ(OpenFolder(8)->EmptyFolder(0, nullptr, 0), S_OK);
    EXPECT_EQ(ReadDocument().find("Team calendar"), std::string::npos);
    EXPECT_EQ(OpenFolder(4, 0)->EmptyFolder(0, nullptr, 0), MAPI_E_NO_ACCESS);
}

TEST_F(FolderTest, FolderWithFoldersInItIsDeletedOnlyWithThem)
{
    const FolderRef top = OpenFolder(3);
    std::string calendar = FolderId(8);
    EXPECT_EQ(top->DeleteFolder(32, Entry(calendar), 0, nullptr, DEL_MESSAGES), MAPI_E_HAS_FOLDERS);
    EXPECT_EQ(top->DeleteFolder(32, Entry(calendar), 0, nullptr, DEL_MESSAGES | DEL_FOLDERS), S_OK);
    EXPECT_EQ(top->DeleteFolder(32, Entry(calendar), 0, nullptr, DEL_MESSAGES | DEL_FOLDERS),
              MAPI_E_NOT_FOUND);
    std::string deep = FolderId(4711);
    EXPECT_EQ(top->DeleteFolder(32, Entry(deep), 0, nullptr, 0), MAPI_E_NOT_FOUND);
    std::string item = MessageId(100);
    EXPECT_EQ(top->DeleteFolder(32, Entry(item), 0, nullptr, 0), MAPI_E_INVALID_ENTRYID);
}

TEST_F(FolderTest, MessageStatusIsChangedByItsMask)
{
    const FolderRef inbox = OpenFolder(4);
    std::string id = MessageId(100);
    ULONG status = 9;
    ASSERT_EQ(inbox->GetMessageStatus(32, Entry(id), 0, &status), S_OK);
    EXPECT_EQ(status, 0U);
    ASSERT_EQ(inbox->SetMessageStatus(32, Entry(id), 0xFF, 0x06, &status), S_OK);
    EXPECT_EQ(status, 0U);
    ASSERT_EQ(inbox->SetMessageStatus(32, Entry(id), 0, 0x02, &status), S_OK);
    EXPECT_EQ(status, 6U);
    ASSERT_EQ(inbox->GetMessageStatus(32, Entry(id), 0, &status), S_OK);
    EXPECT_EQ(status, 4U);
    std::string other = MessageId(4711);
    EXPECT_EQ(inbox->GetMessageStatus(32, Entry(other), 0, &status), MAPI_E_NOT_FOUND);
    EXPECT_EQ(inbox->SetMessageStatus(32, Entry(other), 0, 1, nullptr), MAPI_E_NOT_FOUND);
}

TEST_F(FolderTest, ReadFlagsOfSomeMessagesTellWhenOneIsMissing)
{
    const FolderRef inbox = OpenFolder(4);
    std::string first = MessageId(100);
    std::string missing = MessageId(4711);
    SBinary ids[] = {{32, reinterpret_cast<BYTE*>(first.data())},
                     {32, reinterpret_cast<BYTE*>(missing.data())}};
    ENTRYLIST both{2, ids};
    EXPECT_EQ(inbox->SetReadFlags(&both, 0, nullptr, 0), MAPI_W_PARTIAL_COMPLETION);
    EXPECT_EQ(GetProp(inbox.Get(), PR_CONTENT_UNREAD)->Value.l, 1);
    ENTRYLIST one{1, ids};
    EXPECT_EQ(inbox->SetReadFlags(&one, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    EXPECT_EQ(GetProp(inbox.Get(), PR_CONTENT_UNREAD)->Value.l, 2);
}

TEST_F(FolderTest, PropertyListsNameEachPropertyOnceInTheWidthAskedFor)
{
    const MessageRef message = OpenMessage(100);
    const std::vector<ULONG> wide = PropertiesOf(message.Get(), MAPI_UNICODE);
    EXPECT_TRUE(Has(wide, PR_SUBJECT_W));
    EXPECT_TRUE(Has(wide, PR_ENTRYID));
    EXPECT_TRUE(Has(PropertiesOf(message.Get(), 0), PR_SUBJECT_A));
    std::vector<ULONG> sorted = wide;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
    EXPECT_TRUE(Has(PropertiesOf(OpenFolder(4).Get(), MAPI_UNICODE), PR_CONTENT_COUNT));
    EXPECT_TRUE(Has(PropertiesOf(store.Get(), 0), PR_DISPLAY_NAME_A));
}

TEST_F(FolderTest, ReceiveFolderTableNamesTheInboxForBothClasses)
{
    TableRef table;
    ASSERT_EQ(store->GetReceiveFolderTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    CTags columns{PR_MESSAGE_CLASS_W, PR_ENTRYID};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    const CRows rows = AllRows(table);
    ASSERT_EQ(rows.Count(), 2U);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"");
    EXPECT_STREQ(rows[1].lpProps[0].Value.lpszW, L"IPM");
    const SBinary& id = rows[1].lpProps[1].Value.bin;
    EXPECT_EQ(HexOf(std::string(reinterpret_cast<char*>(id.lpb), id.cb)), HexOf(FolderId(4)));
    ULONG cb = 0;
    CHeld<ENTRYID> entry;
    CHeld<wchar_t> given;
    wchar_t mail[] = L"IPM.Note";
    ASSERT_EQ(store->GetReceiveFolder(mail, MAPI_UNICODE, &cb, entry.Put(), given.Put()), S_OK);
    EXPECT_STREQ(given.Get(), L"IPM");
    wchar_t other[] = L"REPORT";
    ASSERT_EQ(store->GetReceiveFolder(other, MAPI_UNICODE, &cb, entry.Put(), given.Put()), S_OK);
    EXPECT_STREQ(given.Get(), L"");
}

TEST_F(FolderTest, StoreThatWasLoggedOffServesNothingOpenedThroughIt)
{
    const FolderRef inbox = OpenFolder(4);
    ULONG flags = 0;
    ASSERT_EQ(store->StoreLogoff(&flags), S_OK);
    EXPECT_EQ(flags, LOGOFF_COMPLETE);
    TableRef table;
    EXPECT_EQ(inbox->GetContentsTable(0, table.PutAs<::IMAPITable>()), MAPI_E_END_OF_SESSION);
    EXPECT_EQ(session->GetMsgStoresTable(0, table.PutAs<::IMAPITable>()),
              S_OK); // the session stands
}

TEST_F(FolderTest, SessionTellsOfItsProfileItsStateAndItsAddressTypes)
{
    CRef<IProfSect> section;
    MAPIUID own = PS_PROFILE_PROPERTIES_INIT;
    ASSERT_EQ(session->OpenProfileSection(&own, nullptr, 0, section.Put()), S_OK);
    EXPECT_EQ(TextProp(section.Get(), PR_PROFILE_NAME_W), L"Demo");
    EXPECT_EQ(session->OpenProfileSection(&own, nullptr, MAPI_MODIFY, section.Put()),
              MAPI_E_NO_ACCESS);
    MAPIUID other{};
    EXPECT_EQ(session->OpenProfileSection(&other, nullptr, 0, section.Put()), MAPI_E_NOT_FOUND);
    TableRef status;
    ASSERT_EQ(session->GetStatusTable(MAPI_UNICODE, status.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(TextColumn(status, PR_DISPLAY_NAME_W), std::vector<std::wstring>{L"mapistore"});
    ULONG count = 0;
    CHeld<LPTSTR> types;
    ASSERT_EQ(session->EnumAdrTypes(MAPI_UNICODE, &count, types.Put()), S_OK);
    ASSERT_EQ(count, 2U);
    EXPECT_STREQ(types[0], L"SMTP");
    EXPECT_STREQ(types[1], L"EX");
}

TEST_F(FolderTest, RecipientsArePreparedWithTheColumnsAskedFor)
{
    BookRef book;
    ASSERT_EQ(session->OpenAddressBook(0, nullptr, 0, book.PutAs<::IAddrBook>()), S_OK);
    std::string ada = EntryId(MAPI_MAILUSER, bookUid, 30);
    CHeld<ADRLIST> list;
    ASSERT_EQ(MAPIAllocateBuffer(CbNewADRLIST(1), reinterpret_cast<void**>(list.Put())), S_OK);
    void* values = nullptr;
    ASSERT_EQ(MAPIAllocateMore(2 * sizeof(SPropValue), list.Get(), &values), S_OK);
    list->cEntries = 1;
    list->aEntries[0] = {0, 2, static_cast<SPropValue*>(values)};
    list->aEntries[0].rgPropVals[0].ulPropTag = PR_ENTRYID;
    list->aEntries[0].rgPropVals[0].Value.bin = {32, reinterpret_cast<BYTE*>(ada.data())};
    list->aEntries[0].rgPropVals[1] = NumberValue(PR_RECIPIENT_TYPE, MAPI_CC);
    CTags wanted{PR_SURNAME_W};
    ASSERT_EQ(book->PrepareRecips(0, wanted, list.Get()), S_OK);
    const ADRENTRY& entry = list->aEntries[0];
    const SPropValue* surname = nullptr;
    const SPropValue* type = nullptr;
    for (ULONG i = 0; i < entry.cValues; ++i)
    {
        surname = entry.rgPropVals[i].ulPropTag == PR_SURNAME_W ? &entry.rgPropVals[i] : surname;
        type = entry.rgPropVals[i].ulPropTag == PR_RECIPIENT_TYPE ? &entry.rgPropVals[i] : type;
    }
    ASSERT_NE(surname, nullptr);
    EXPECT_STREQ(surname->Value.lpszW, L"Quist");
    ASSERT_NE(type, nullptr); // what was there stays
    EXPECT_EQ(type->Value.l, static_cast<LONG>(MAPI_CC));
}

} // namespace
