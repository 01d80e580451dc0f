#include <thread>

#include "StoreFixture.h"

using namespace mapitest;

namespace
{

class SessionTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(R"({ "id": 100, "folder": 8, "class": "IPM.Appointment",
          "properties": { "PR_SUBJECT_W": "Planning", "PidLidLocation": "Room 4" } })"));
    }
};

TEST_F(SessionTest, ProfileTableNamesTheDefaultProfileInNarrowText)
{
    Start();
    CRef<IProfAdmin> admin;
    ASSERT_EQ(MAPIAdminProfiles(0, admin.Put()), S_OK);
    TableRef table;
    ASSERT_EQ(admin->GetProfileTable(0, table.PutAs<::IMAPITable>()), S_OK);
    CTags columns{PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);

    CRows rows;
    ASSERT_EQ(table->QueryRows(0x0FFFFFFF, TBL_NOADVANCE, rows.Put()), S_OK);

    ASSERT_EQ(rows.Count(), 1U);
    ASSERT_EQ(rows[0].lpProps[0].ulPropTag, PR_DISPLAY_NAME_A);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszA, "Demo");
    ASSERT_EQ(rows[0].lpProps[1].ulPropTag, PR_DEFAULT_PROFILE);
    EXPECT_EQ(rows[0].lpProps[1].Value.b, 1);
}

TEST_F(SessionTest, StoresTableShowsTheDefaultStoreAndItsProvider)
{
    Start();
    TableRef table;
    ASSERT_EQ(session->GetMsgStoresTable(0, table.PutAs<::IMAPITable>()), S_OK);
    CTags columns{PR_ENTRYID, PR_DISPLAY_NAME_A, PR_DEFAULT_STORE, PR_MDB_PROVIDER, PR_RECORD_KEY};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);

    const CRows rows = AllRows(table);

    ASSERT_EQ(rows.Count(), 1U);
    const SPropValue* values = rows[0].lpProps;
    EXPECT_STREQ(values[1].Value.lpszA, "ada.quist@nordlys.example");
    EXPECT_EQ(values[2].Value.b, 1);
    const SBinary& provider = values[3].Value.bin;
    EXPECT_EQ(HexOf(std::string(reinterpret_cast<char*>(provider.lpb), provider.cb)),
              "4E495441F9BFB80100AA0037D96E0000");
    const SBinary& key = values[4].Value.bin;
    EXPECT_EQ(HexOf(std::string(reinterpret_cast<char*>(key.lpb), key.cb)), storeUid);
}

TEST_F(SessionTest, IdentityIsAMailUserWithItsAddresses)
{
    Start();
    ULONG cb = 0;
    CHeld<ENTRYID> id;
    ASSERT_EQ(session->QueryIdentity(&cb, id.Put()), S_OK);
    ULONG type = 0;
    CRef<IUnknown> object;
    ASSERT_EQ(session->OpenEntry(cb, id.Get(), nullptr, MAPI_DEFERRED_ERRORS, &type, object.Put()),
              S_OK);
    EXPECT_EQ(type, MAPI_MAILUSER);
    CRef<IMailUser> user;
    ASSERT_EQ(object->QueryInterface(IID_IMailUser, reinterpret_cast<void**>(user.Put())), S_OK);

    EXPECT_EQ(TextProp(user.Get(), PR_DISPLAY_NAME_W), L"Ada Quist");
    EXPECT_EQ(TextProp(user.Get(), mapistore::kTagSmtpAddressW), L"ada.quist@nordlys.example");
    EXPECT_EQ(TextProp(user.Get(), PR_ADDRTYPE_W), L"EX");
}

TEST_F(SessionTest, StoreGivesTheIdentifiersOfItsCommonFolders)
{
    Start();
    CTags tags{PR_VALID_FOLDER_MASK,
               PR_IPM_OUTBOX_ENTRYID,
               PR_IPM_SENTMAIL_ENTRYID,
               PR_IPM_WASTEBASKET_ENTRYID,
               PR_IPM_SUBTREE_ENTRYID};
    ULONG count = 0;
    CHeld<SPropValue> values;
    ASSERT_EQ(store->GetProps(tags, 0, &count, values.Put()), S_OK);

    ASSERT_EQ(count, 5U);
    EXPECT_EQ(values[0].Value.l & 0x1F, 0x1F);
    const auto idAt = [&](size_t i) {
        return std::string(reinterpret_cast<char*>(values[i].Value.bin.lpb),
                           values[i].Value.bin.cb);
    };
    EXPECT_EQ(idAt(1), FolderId(5));
    EXPECT_EQ(idAt(2), FolderId(6));
    EXPECT_EQ(idAt(3), FolderId(7));
    EXPECT_EQ(idAt(4), FolderId(3));
}

TEST_F(SessionTest, ReceiveFolderOfTheDefaultClassIsTheInbox)
{
    Start();
    ULONG cb = 0;
    CHeld<ENTRYID> id;
    ASSERT_EQ(store->GetReceiveFolder(nullptr, MAPI_UNICODE, &cb, id.Put(), nullptr), S_OK);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(id.Get()), cb), FolderId(4));
}

TEST_F(SessionTest, HierarchyTableListsTheFoldersWithClassAndHiddenFlag)
{
    Start();
    const FolderRef root = OpenFolder(3);
    TableRef table;
    ASSERT_EQ(
        root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, table.PutAs<IUnknown>()),
        S_OK);
    CTags columns{
        PR_ENTRYID, PR_DISPLAY_NAME_W, PR_SUBFOLDERS, PR_OBJECT_TYPE, mapistore::kTagAttrHidden};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);

    const CRows rows = AllRows(table);

    ASSERT_EQ(rows.Count(), 7U);
    EXPECT_STREQ(rows[4].lpProps[1].Value.lpszW, L"Calendar");
    EXPECT_EQ(rows[4].lpProps[2].Value.b, 1);
    EXPECT_EQ(rows[4].lpProps[3].Value.l, static_cast<LONG>(MAPI_FOLDER));
    EXPECT_EQ(rows[4].lpProps[4].Value.b, 0);
    EXPECT_EQ(rows[6].lpProps[4].Value.b, 1);
    const FolderRef calendar = OpenFolder(8);
    const CHeld<SPropValue> name = GetProp(calendar.Get(), PR_CONTAINER_CLASS_A);
    ASSERT_EQ(name->ulPropTag, PR_CONTAINER_CLASS_A);
    EXPECT_STREQ(name->Value.lpszA, "IPF.Appointment");
}

TEST_F(SessionTest, LogonToAnUnknownProfileFails)
{
    Start();
    wchar_t name[] = L"Nobody";
    CRef<::IMAPISession> other;
    EXPECT_EQ(
        MAPILogonEx(0, name, nullptr, MAPI_UNICODE | MAPI_EXTENDED | MAPI_NEW_SESSION, other.Put()),
        MAPI_E_LOGON_FAILED);
    EXPECT_EQ(other.Get(), nullptr);
}

TEST_F(SessionTest, OnlineModeOpensTheStoreToo)
{
    Start();
    std::string id = EntryId(MAPI_STORE, storeUid, 1);
    StoreRef other;
    EXPECT_EQ(session->OpenMsgStore(0,
                                    static_cast<ULONG>(id.size()),
                                    reinterpret_cast<ENTRYID*>(id.data()),
                                    nullptr,
                                    0x180,
                                    other.PutAs<::IMsgStore>()),
              S_OK);
}

TEST_F(SessionTest, UnknownFlagsAreRefusedAndNoted)
{
    Start();
    std::string id = EntryId(MAPI_STORE, storeUid, 1);
    StoreRef other;
    EXPECT_EQ(session->OpenMsgStore(0,
                                    static_cast<ULONG>(id.size()),
                                    reinterpret_cast<ENTRYID*>(id.data()),
                                    nullptr,
                                    0x00400000,
                                    other.PutAs<::IMsgStore>()),
              MAPI_E_UNKNOWN_FLAGS);
    EXPECT_EQ(Counts().misuse, 1U);
    EXPECT_NE(
        Report().find("misuse IMAPISession::OpenMsgStore 0x80040106 unknown flags 0x00400000"),
        std::string::npos)
        << Report();
}

TEST_F(SessionTest, CallsAfterLogoffAreRefused)
{
    Start();
    const FolderRef folder = OpenFolder(8);
    ASSERT_EQ(session->Logoff(0, 0, 0), S_OK);
    TableRef table;
    EXPECT_EQ(folder->GetContentsTable(0, table.PutAs<::IMAPITable>()), MAPI_E_END_OF_SESSION);
    EXPECT_EQ(session->GetMsgStoresTable(0, table.PutAs<::IMAPITable>()), MAPI_E_END_OF_SESSION);
    ULONG cb = 0;
    CHeld<ENTRYID> id;
    EXPECT_EQ(session->QueryIdentity(&cb, id.Put()), MAPI_E_END_OF_SESSION);
}

TEST_F(SessionTest, ThreadWithoutMapiIsRefused)
{
    Start();
    HRESULT hr = S_OK;
    HRESULT logon = S_OK;
    std::thread other([&] {
        ULONG cb = 0;
        ENTRYID* id = nullptr;
        hr = session->QueryIdentity(&cb, &id);
        IProfAdmin* admin = nullptr;
        logon = MAPIAdminProfiles(0, &admin);
    });
    other.join();
    EXPECT_EQ(hr, MAPI_E_NOT_INITIALIZED);
    EXPECT_EQ(logon, MAPI_E_NOT_INITIALIZED);
    EXPECT_EQ(Counts().misuse, 2U);
}

TEST_F(SessionTest, CallAfterTheLastReleaseIsRefusedInsteadOfReadingFreedMemory)
{
    Start();
    FolderRef folder = OpenFolder(8);
    IMAPIFolder* raw = folder.Get();
    folder.Reset();
    TableRef table;
    EXPECT_EQ(raw->GetContentsTable(0, table.PutAs<::IMAPITable>()), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(raw->Release(), 0U);
    EXPECT_EQ(Counts().misuse, 2U);
}

} // namespace
