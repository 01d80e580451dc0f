#include <cstring>

#include "RecordingSink.h"

using namespace mapitest;

namespace
{

class SubmitTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(""));
        Start();
        ASSERT_EQ(session->OpenAddressBook(0, nullptr, AB_NO_DIALOG, book.PutAs<::IAddrBook>()),
                  S_OK);
    }
    void TearDown() override
    {
        book.Reset();
        StoreTest::TearDown();
    }
    MessageRef NewMail()
    {
        const FolderRef outbox = OpenFolder(5);
        MessageRef message;
        EXPECT_EQ(outbox->CreateMessage(nullptr, 0, message.Put()), S_OK);
        std::string sent = FolderId(6);
        SPropValue values[] = {TextValue(PR_SUBJECT_W, L"Hello"),
                               NumberValue(PR_SENTMAIL_ENTRYID, 0),
                               TextValue(PR_MESSAGE_CLASS_W, L"IPM.Note"),
                               NumberValue(PR_MESSAGE_FLAGS, 43),
                               NumberValue(mapistore::kTagInternetCodePage, 65001),
                               TextValue(PR_BODY_W, L"Text"),
                               NumberValue(mapistore::kTagEditorFormat, 1)};
        values[1].Value.bin = {32, reinterpret_cast<BYTE*>(sent.data())};
        EXPECT_EQ(message->SetProps(7, values, nullptr), S_OK);
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        return message;
    }
    /// One recipient as a mail client gives it, linked to the list or with a head of its own.
    CHeld<ADRLIST> List(const wchar_t* name, bool linked)
    {
        CHeld<ADRLIST> list;
        EXPECT_EQ(MAPIAllocateBuffer(CbNewADRLIST(1), reinterpret_cast<void**>(list.Put())), S_OK);
        list->cEntries = 1;
        ADRENTRY& entry = list->aEntries[0];
        entry.ulReserved1 = 0;
        entry.cValues = 4;
        void* values = nullptr;
        EXPECT_EQ(linked ? MAPIAllocateMore(4 * sizeof(SPropValue), list.Get(), &values)
                         : MAPIAllocateBuffer(4 * sizeof(SPropValue), &values),
                  S_OK);
        entry.rgPropVals = static_cast<SPropValue*>(values);
        entry.rgPropVals[0] = TextValue(PR_EMAIL_ADDRESS_W, name);
        entry.rgPropVals[1] = NumberValue(PR_RECIPIENT_TYPE, MAPI_TO);
        entry.rgPropVals[2] = TextValue(PR_ADDRTYPE_W, L"SMTP");
        entry.rgPropVals[3] = TextValue(PR_DISPLAY_NAME_W, name);
        return list;
    }
    static const SPropValue* Find(const ADRENTRY& entry, ULONG tag)
    {
        for (ULONG i = 0; i < entry.cValues; ++i)
        {
            if (entry.rgPropVals[i].ulPropTag == tag)
            {
                return &entry.rgPropVals[i];
            }
        }
        return nullptr;
    }

    BookRef book;
};

TEST_F(SubmitTest, MailGoesFromTheOutboxToSentItems)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef sent = Contents(6);
    mapi64::Connection connection = 0;
    ASSERT_EQ(sent->Advise(fnevTableModified, &sink, &connection), S_OK);
    const MessageRef message = NewMail();
    const CHeld<ADRLIST> list = List(L"someone@else.example", true);
    ASSERT_EQ(book->ResolveName(0, MAPI_UNICODE, nullptr, list.Get()), S_OK);
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_ADD, list.Get()), S_OK);
    ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);

    ASSERT_EQ(message->SubmitMessage(0), S_OK);

    EXPECT_EQ(sink.WaitFor(1)[0].tableEvent, static_cast<ULONG>(TABLE_ROW_ADDED));
    EXPECT_EQ(TextColumn(sent, PR_SUBJECT_W), std::vector<std::wstring>{L"Hello"});
    EXPECT_TRUE(TextColumn(Contents(5), PR_SUBJECT_W).empty());
    CTags columns{PR_MESSAGE_FLAGS, PR_MESSAGE_DELIVERY_TIME, PR_CLIENT_SUBMIT_TIME};
    ASSERT_EQ(sent->SetColumns(columns, 0), S_OK);
    ASSERT_EQ(sent->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    const CRows rows = AllRows(sent);
    EXPECT_EQ(rows[0].lpProps[0].Value.l & 0x0C, 0);
    EXPECT_EQ(rows[0].lpProps[1].ulPropTag, PR_MESSAGE_DELIVERY_TIME);
    EXPECT_EQ(rows[0].lpProps[2].ulPropTag, PR_CLIENT_SUBMIT_TIME);
    EXPECT_EQ(sent->Unadvise(connection), S_OK);
    EXPECT_NE(ReadDocument().find("\"PR_BODY_W\": \"Text\""), std::string::npos);
}

TEST_F(SubmitTest, SubmittingWithoutRecipientsIsRefused)
{
    const MessageRef message = NewMail();
    EXPECT_EQ(message->SubmitMessage(0), MAPI_E_NO_RECIPIENTS);
    EXPECT_EQ(TextColumn(Contents(5), PR_SUBJECT_W), std::vector<std::wstring>{L"Hello"});
}

TEST_F(SubmitTest, SubmittedMessageCannotBeChangedAnyMore)
{
    const MessageRef message = NewMail();
    const CHeld<ADRLIST> list = List(L"someone@else.example", true);
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_ADD, list.Get()), S_OK);
    ASSERT_EQ(message->SubmitMessage(0), S_OK);
    SPropValue value = TextValue(PR_SUBJECT_W, L"late");
    EXPECT_EQ(message->SetProps(1, &value, nullptr), MAPI_E_NO_ACCESS);
}

TEST_F(SubmitTest, DeleteAfterSubmitLeavesNoCopy)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef outbox = Contents(5);
    const MessageRef message = NewMail();
    mapi64::Connection connection = 0;
    ASSERT_EQ(outbox->Advise(fnevTableModified, &sink, &connection), S_OK);
    SPropValue yes{};
    yes.ulPropTag = PR_DELETE_AFTER_SUBMIT;
    yes.Value.b = 1;
    ASSERT_EQ(message->SetProps(1, &yes, nullptr), S_OK);
    const CHeld<ADRLIST> list = List(L"someone@else.example", true);
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_ADD, list.Get()), S_OK);
    ASSERT_EQ(message->SubmitMessage(0), S_OK);
    while (sink.WaitFor(1).back().tableEvent != TABLE_ROW_DELETED)
    {
        sink.WaitFor(sink.Heard().size() + 1);
    }
    EXPECT_TRUE(TextColumn(Contents(6), PR_SUBJECT_W).empty());
    EXPECT_EQ(outbox->Unadvise(connection), S_OK);
}

TEST_F(SubmitTest, WaitingMailCanBeTakenBack)
{
    WriteDocument(UsualDocument("", R"("options": { "sendDelayMs": 600000 },)"));
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    const MessageRef message = NewMail();
    const CHeld<ADRLIST> list = List(L"someone@else.example", true);
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_ADD, list.Get()), S_OK);
    ASSERT_EQ(message->SubmitMessage(0), S_OK);
    const CHeld<SPropValue> id = GetProp(message.Get(), PR_ENTRYID);
    auto* entry = reinterpret_cast<ENTRYID*>(id->Value.bin.lpb);
    EXPECT_EQ(store->AbortSubmit(32, entry, 0), S_OK);
    EXPECT_EQ(store->AbortSubmit(32, entry, 0), MAPI_E_NOT_IN_QUEUE);
    EXPECT_EQ(TextColumn(Contents(5), PR_SUBJECT_W), std::vector<std::wstring>{L"Hello"});
}

TEST_F(SubmitTest, AddressOfAnEntryResolvesToTheEntry)
{
    const CHeld<ADRLIST> list = List(L"ADA.QUIST@nordlys.example", true);
    ASSERT_EQ(book->ResolveName(0, MAPI_UNICODE, nullptr, list.Get()), S_OK);
    const ADRENTRY& entry = list->aEntries[0];
    const SPropValue* id = Find(entry, PR_ENTRYID);
    ASSERT_NE(id, nullptr);
    EXPECT_EQ(HexOf(std::string(reinterpret_cast<char*>(id->Value.bin.lpb), id->Value.bin.cb)),
              HexOf(EntryId(MAPI_MAILUSER, bookUid, 30)));
    EXPECT_STREQ(Find(entry, PR_DISPLAY_NAME_W)->Value.lpszW, L"Ada Quist");
    EXPECT_EQ(Find(entry, PR_RECIPIENT_TYPE)->Value.l, static_cast<LONG>(MAPI_TO));
}

TEST_F(SubmitTest, NameResolvesByItsBeginningAndFailsWhenUnknownOrAmbiguous)
{
    const auto resolve = [&](const wchar_t* name) {
        const CHeld<ADRLIST> list = List(name, true);
        return book->ResolveName(0, MAPI_UNICODE, nullptr, list.Get());
    };
    EXPECT_EQ(resolve(L"Quist"), S_OK);
    EXPECT_EQ(resolve(L"nobody"), MAPI_E_NOT_FOUND);
    WriteDocument([&] {
        std::string document = UsualDocument("");
        return document.replace(document.find("\"Bo Ferrand\""), 12, "\"Adam Bo\"");
    }());
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    EXPECT_EQ(resolve(L"Ada"), MAPI_E_AMBIGUOUS_RECIP);
    EXPECT_EQ(resolve(L"Adam Bo"), S_OK);
}

TEST_F(SubmitTest, ValuesWithAHeadOfTheirOwnAreReplacedByOthersWithOne)
{
    CHeld<ADRLIST> held = List(L"someone@else.example", false);
    ASSERT_EQ(book->ResolveName(0, MAPI_UNICODE, nullptr, held.Get()), S_OK);
    EXPECT_STREQ(Find(held->aEntries[0], PR_ADDRTYPE_W)->Value.lpszW, L"SMTP");
    MAPIFreeBuffer(held->aEntries[0].rgPropVals);
    EXPECT_EQ(Counts().misuse, 0U);
}

TEST_F(SubmitTest, OneOffOpensAsAMailUser)
{
    wchar_t name[] = L"Someone";
    wchar_t type[] = L"SMTP";
    wchar_t address[] = L"some@one.example";
    ULONG cb = 0;
    CHeld<ENTRYID> id;
    ASSERT_EQ(book->CreateOneOff(name, type, address, MAPI_UNICODE, &cb, id.Put()), S_OK);
    ULONG objectType = 0;
    CRef<IMailUser> user;
    ASSERT_EQ(book->OpenEntry(
                  cb, id.Get(), nullptr, MAPI_BEST_ACCESS, &objectType, user.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(objectType, MAPI_MAILUSER);
    EXPECT_EQ(TextProp(user.Get(), PR_EMAIL_ADDRESS_W), L"some@one.example");
    EXPECT_EQ(TextProp(user.Get(), PR_DISPLAY_NAME_W), L"Someone");
}

} // namespace
