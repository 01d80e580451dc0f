#include "SaveFixture.h"

using namespace mapitest;

namespace
{

class SavePartsTest : public SaveTest
{
};

TEST_F(SavePartsTest, RecipientsAreAddedChangedAndRemoved)
{
    MessageRef message = OpenMessage(100);
    SPropValue first[] = {NumberValue(PR_RECIPIENT_TYPE, MAPI_TO),
                          TextValue(PR_DISPLAY_NAME_W, L"Ada"),
                          TextValue(PR_ADDRTYPE_W, L"SMTP"),
                          TextValue(PR_EMAIL_ADDRESS_W, L"ada@x.example")};
    SPropValue second[] = {NumberValue(PR_RECIPIENT_TYPE, MAPI_CC),
                           TextValue(PR_DISPLAY_NAME_W, L"Bo")};
    struct
    {
        ULONG cEntries;
        ADRENTRY aEntries[2];
    } list = {2, {{0, 4, first}, {0, 2, second}}};
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<ADRLIST*>(&list)), S_OK);
    SPropValue changed[] = {NumberValue(PR_ROWID, 1),
                            NumberValue(PR_RECIPIENT_TYPE, MAPI_BCC),
                            TextValue(PR_DISPLAY_NAME_W, L"Bo Ferrand")};
    ADRLIST one{1, {{0, 3, changed}}};
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_MODIFY, &one), S_OK);
    ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(TextProp(message.Get(), PR_DISPLAY_BCC_W), L"Bo Ferrand");
    message.Reset();
    Restart();
    const MessageRef again = OpenMessage(100);
    TableRef table;
    ASSERT_EQ(again->GetRecipientTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W),
              (std::vector<std::wstring>{L"Ada", L"Bo Ferrand"}));
    SPropValue row[] = {NumberValue(PR_ROWID, 0), NumberValue(PR_RECIPIENT_TYPE, MAPI_TO)};
    ADRLIST gone{1, {{0, 2, row}}};
    ASSERT_EQ(again->ModifyRecipients(MODRECIP_REMOVE, &gone), S_OK);
    row[0].Value.l = 5;
    EXPECT_EQ(again->ModifyRecipients(MODRECIP_REMOVE, &gone), MAPI_E_INVALID_PARAMETER);
    ASSERT_EQ(again->SaveChanges(0), S_OK);
    const MessageRef third = OpenMessage(100);
    ASSERT_EQ(third->GetRecipientTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W), std::vector<std::wstring>{L"Bo Ferrand"});
}

TEST_F(SavePartsTest, AttachmentsWithDataAndWithAMessageAreSavedWithTheMessage)
{
    MessageRef message = OpenMessage(100);
    ULONG number = 9;
    {
        CRef<IAttach> attach;
        ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, attach.Put()), S_OK);
        EXPECT_EQ(number, 0U);
        SPropValue values[] = {NumberValue(PR_ATTACH_METHOD, ATTACH_BY_VALUE),
                               TextValue(PR_ATTACH_LONG_FILENAME_W, L"a.bin")};
        ASSERT_EQ(attach->SetProps(2, values, nullptr), S_OK);
        ASSERT_EQ(attach->SaveChanges(0), S_OK);
        SPropValue late = TextValue(PR_ATTACH_LONG_FILENAME_W, L"b.bin");
        EXPECT_EQ(attach->SetProps(1, &late, nullptr), MAPI_E_NO_ACCESS);
    }
    {
        CRef<IAttach> attach;
        ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, attach.Put()), S_OK);
        EXPECT_EQ(number, 1U);
        SPropValue value = NumberValue(PR_ATTACH_METHOD, ATTACH_EMBEDDED_MSG);
        ASSERT_EQ(attach->SetProps(1, &value, nullptr), S_OK);
        MessageRef inner;
        ASSERT_EQ(attach->OpenProperty(PR_ATTACH_DATA_OBJ,
                                       &IID_IMessage,
                                       0,
                                       MAPI_CREATE | MAPI_MODIFY,
                                       inner.PutAs<IUnknown>()),
                  S_OK);
        SPropValue subject = TextValue(PR_SUBJECT_W, L"inside");
        ASSERT_EQ(inner->SetProps(1, &subject, nullptr), S_OK);
        ASSERT_EQ(inner->SaveChanges(0), S_OK);
        ASSERT_EQ(attach->SaveChanges(0), S_OK);
    }
    ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetProp(message.Get(), PR_HASATTACH)->Value.b, 1);
    message.Reset();
    Restart();
    const MessageRef again = OpenMessage(100);
    CRef<IAttach> attach;
    ASSERT_EQ(again->OpenAttach(1, nullptr, 0, attach.Put()), S_OK);
    MessageRef inner;
    ASSERT_EQ(
        attach->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, inner.PutAs<IUnknown>()),
        S_OK);
    EXPECT_EQ(TextProp(inner.Get(), PR_SUBJECT_W), L"inside");
    EXPECT_EQ(attach->OpenProperty(
                  PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_MODIFY, inner.PutAs<IUnknown>()),
              MAPI_E_NO_ACCESS);
    ASSERT_EQ(again->DeleteAttach(0, 0, nullptr, 0), S_OK);
    ASSERT_EQ(again->SaveChanges(0), S_OK);
    attach.Reset();
    EXPECT_EQ(OpenMessage(100)->OpenAttach(1, nullptr, 0, attach.Put()), MAPI_E_NOT_FOUND);
}

TEST_F(SavePartsTest, DeletedAndMovedMessagesLeaveTheirFolder)
{
    FolderRef calendar = OpenFolder(8);
    FolderRef team = OpenFolder(9);
    std::string first = MessageId(100);
    std::string second = MessageId(101);
    SBinary ids[] = {{32, reinterpret_cast<BYTE*>(first.data())}};
    ENTRYLIST list{1, ids};
    ASSERT_EQ(calendar->CopyMessages(&list, nullptr, team.Get(), 0, nullptr, MESSAGE_MOVE), S_OK);
    EXPECT_EQ(TextColumn(Contents(9), PR_SUBJECT_W), std::vector<std::wstring>{L"Planning"});
    ids[0].lpb = reinterpret_cast<BYTE*>(second.data());
    ASSERT_EQ(calendar->CopyMessages(&list, nullptr, team.Get(), 0, nullptr, 0), S_OK);
    ASSERT_EQ(calendar->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    EXPECT_EQ(calendar->DeleteMessages(&list, 0, nullptr, 0), MAPI_W_PARTIAL_COMPLETION);
    calendar.Reset();
    team.Reset();
    Restart();
    EXPECT_TRUE(TextColumn(Contents(8), PR_SUBJECT_W).empty());
    EXPECT_EQ(TextColumn(Contents(9), PR_SUBJECT_W),
              (std::vector<std::wstring>{L"Planning", L"Other"}));
}

TEST_F(SavePartsTest, FoldersAreMadeChangedAndDeleted)
{
    FolderRef calendar = OpenFolder(8);
    FolderRef made;
    wchar_t name[] = L"Holidays";
    ASSERT_EQ(
        calendar->CreateFolder(FOLDER_GENERIC, name, nullptr, nullptr, MAPI_UNICODE, made.Put()),
        S_OK);
    FolderRef same;
    EXPECT_EQ(
        calendar->CreateFolder(FOLDER_GENERIC, name, nullptr, nullptr, MAPI_UNICODE, same.Put()),
        MAPI_E_COLLISION);
    EXPECT_EQ(
        calendar->CreateFolder(
            FOLDER_GENERIC, name, nullptr, nullptr, MAPI_UNICODE | OPEN_IF_EXISTS, same.Put()),
        S_OK);
    same.Reset();
    SPropValue values[] = {TextValue(PR_DISPLAY_NAME_W, L"Days off"),
                           TextValue(PR_COMMENT_W, L"mine")};
    ASSERT_EQ(made->SetProps(2, values, nullptr), S_OK);
    MessageRef message;
    ASSERT_EQ(made->CreateMessage(nullptr, 0, message.Put()), S_OK);
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    message.Reset();
    CHeld<SPropValue> id = GetProp(made.Get(), PR_ENTRYID);
    made.Reset();
    calendar.Reset();
    std::string bytes(reinterpret_cast<char*>(id->Value.bin.lpb), 32);
    id.Reset();
    Restart();
    calendar = OpenFolder(8);
    ULONG type = 0;
    ASSERT_EQ(store->OpenEntry(32,
                               reinterpret_cast<ENTRYID*>(bytes.data()),
                               nullptr,
                               0,
                               &type,
                               made.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(TextProp(made.Get(), PR_DISPLAY_NAME_W), L"Days off");
    EXPECT_EQ(TextProp(made.Get(), PR_COMMENT_W), L"mine");
    EXPECT_EQ(TextProp(made.Get(), mapistore::kTagContainerClassW), L"IPF.Appointment");
    EXPECT_EQ(GetProp(made.Get(), PR_CONTENT_COUNT)->Value.l, 1);
    ENTRYID* entry = reinterpret_cast<ENTRYID*>(bytes.data());
    EXPECT_EQ(calendar->DeleteFolder(32, entry, 0, nullptr, 0), MAPI_E_HAS_MESSAGES);
    EXPECT_EQ(calendar->DeleteFolder(32, entry, 0, nullptr, DEL_MESSAGES), S_OK);
    EXPECT_EQ(calendar->DeleteFolder(32, entry, 0, nullptr, DEL_MESSAGES), MAPI_E_NOT_FOUND);
    ULONG count = 0;
    CHeld<SPropValue> none;
    CTags tags{PR_DISPLAY_NAME_W};
    EXPECT_EQ(made->GetProps(tags, 0, &count, none.Put()), MAPI_E_OBJECT_DELETED);
}

TEST_F(SavePartsTest, CopyToBringsPropertiesRecipientsAndAttachments)
{
    const MessageRef source = OpenMessage(100);
    SPropValue first[] = {NumberValue(PR_RECIPIENT_TYPE, MAPI_TO),
                          TextValue(PR_DISPLAY_NAME_W, L"Ada")};
    ADRLIST list{1, {{0, 2, first}}};
    ASSERT_EQ(source->ModifyRecipients(MODRECIP_ADD, &list), S_OK);
    const MessageRef target = NewMessage(4);
    CTags exclude{PR_IMPORTANCE};
    ASSERT_EQ(
        source->CopyTo(0, nullptr, exclude, 0, nullptr, &IID_IMessage, target.Get(), 0, nullptr),
        S_OK);
    EXPECT_EQ(TextProp(target.Get(), PR_SUBJECT_W), L"Planning");
    EXPECT_EQ(TextProp(target.Get(), PR_DISPLAY_TO_W), L"Ada");
    ASSERT_EQ(target->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    CTags include{PR_SUBJECT_W};
    SPropValue subject = TextValue(PR_SUBJECT_W, L"stays");
    ASSERT_EQ(target->SetProps(1, &subject, nullptr), S_OK);
    ASSERT_EQ(source->CopyProps(
                  include, 0, nullptr, &IID_IMessage, target.Get(), MAPI_NOREPLACE, nullptr),
              S_OK);
    EXPECT_EQ(TextProp(target.Get(), PR_SUBJECT_W), L"stays");
}

} // namespace
