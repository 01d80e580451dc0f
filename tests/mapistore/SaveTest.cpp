#include <cstring>

#include "RecordingSink.h"

using namespace mapitest;

namespace
{

const char* const kSeries = R"({
          "id": 100,
          "folder": 8,
          "class": "IPM.Appointment",
          "comment": "kept",
          "properties": {
            "PR_SUBJECT_W": "Planning",
            "PidLidTimeZoneStruct": { "timeZone": { "bias": -60 } },
            "PidLidLocation": "Room 4"
          }
        },
        { "id": 101, "folder": 8, "class": "IPM.Appointment", "properties": { "PR_SUBJECT_W": "Other" } })";

SPropValue Text(ULONG tag, const wchar_t* text)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszW = const_cast<wchar_t*>(text);
    return value;
}

SPropValue Number(ULONG tag, LONG number)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.l = number;
    return value;
}

class SaveTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(kSeries));
        Start();
    }
    /// Ends MAPI and starts again, so that everything is read from the disk.
    void Restart()
    {
        Stop();
        Start();
    }
    MessageRef NewMessage(ULONG64 folder)
    {
        const FolderRef opened = OpenFolder(folder);
        MessageRef message;
        EXPECT_EQ(opened->CreateMessage(nullptr, 0, message.Put()), S_OK);
        return message;
    }
    static ULONG64 IdOf(const MessageRef& message)
    {
        const CHeld<SPropValue> id = GetProp(message.Get(), PR_ENTRYID);
        ULONG64 number = 0;
        std::memcpy(&number, id->Value.bin.lpb + 24, sizeof(number));
        return number;
    }
};

TEST_F(SaveTest, ChangedPropertyIsWrittenAndTheRestOfTheTextStaysAsItWas)
{
    const std::string before = ReadDocument();
    MessageRef message = OpenMessage(100);
    SPropValue values[] = {Text(PR_SUBJECT_W, L"Planning \u00e4\u4e2d\U0001F600"),
                           Number(PR_IMPORTANCE, 2)};
    ASSERT_EQ(message->SetProps(2, values, nullptr), S_OK);
    ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);

    const std::string after = ReadDocument();
    EXPECT_NE(after.find("\"comment\": \"kept\""), std::string::npos);
    EXPECT_NE(after.find("\"bias\": -60"), std::string::npos);
    EXPECT_NE(after.find("\"revision\": 5"), std::string::npos);
    const size_t profiles = before.find("\"profiles\"");
    EXPECT_EQ(after.substr(after.find("\"profiles\""), 900), before.substr(profiles, 900));
    const size_t other = before.find("{ \"id\": 101");
    EXPECT_EQ(after.substr(after.find("{ \"id\": 101")), before.substr(other));

    message.Reset();
    Restart();
    const MessageRef again = OpenMessage(100);
    EXPECT_EQ(TextProp(again.Get(), PR_SUBJECT_W), L"Planning \u00e4\u4e2d\U0001F600");
    EXPECT_EQ(GetProp(again.Get(), PR_IMPORTANCE)->Value.l, 2);
}

TEST_F(SaveTest, NothingIsWrittenBeforeSaveChanges)
{
    const std::string before = ReadDocument();
    {
        MessageRef message = OpenMessage(100);
        SPropValue value = Text(PR_SUBJECT_W, L"lost");
        ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
        EXPECT_EQ(TextProp(message.Get(), PR_SUBJECT_W), L"lost");
    }
    EXPECT_EQ(ReadDocument(), before);
    EXPECT_EQ(TextProp(OpenMessage(100).Get(), PR_SUBJECT_W), L"Planning");
}

TEST_F(SaveTest, RemovedPropertyIsGone)
{
    MessageRef message = OpenMessage(100);
    CTags tags{PR_SUBJECT_W, PR_COMMENT_W};
    CHeld<SPropProblemArray> problems;
    ASSERT_EQ(message->DeleteProps(tags, problems.Put()), S_OK);
    ASSERT_NE(problems.Get(), nullptr);
    ASSERT_EQ(problems->cProblem, 1U);
    EXPECT_EQ(problems->aProblem[0].ulIndex, 1U);
    EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_NOT_FOUND);
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    problems.Reset();
    message.Reset();
    Restart();
    EXPECT_EQ(TextProp(OpenMessage(100).Get(), PR_SUBJECT_W), L"<none>");
}

TEST_F(SaveTest, ComputedPropertiesCannotBeSet)
{
    MessageRef message = OpenMessage(100);
    SPropValue values[] = {Number(PR_OBJECT_TYPE, 1), Number(PR_IMPORTANCE, 2)};
    CHeld<SPropProblemArray> problems;
    ASSERT_EQ(message->SetProps(2, values, problems.Put()), S_OK);
    ASSERT_NE(problems.Get(), nullptr);
    ASSERT_EQ(problems->cProblem, 1U);
    EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_COMPUTED);
    EXPECT_EQ(GetProp(message.Get(), PR_IMPORTANCE)->Value.l, 2);
}

TEST_F(SaveTest, MessageOpenForReadingCannotBeChanged)
{
    MessageRef message = OpenMessage(100, 0);
    SPropValue value = Text(PR_SUBJECT_W, L"no");
    EXPECT_EQ(message->SetProps(1, &value, nullptr), MAPI_E_NO_ACCESS);
    EXPECT_EQ(message->SaveChanges(0), MAPI_E_NO_ACCESS);
    ADRLIST none{};
    EXPECT_EQ(message->ModifyRecipients(0, &none), MAPI_E_NO_ACCESS);
    ULONG number = 0;
    CRef<IAttach> attach;
    EXPECT_EQ(message->CreateAttach(nullptr, 0, &number, attach.Put()), MAPI_E_NO_ACCESS);
}

TEST_F(SaveTest, NewMessageWithEveryTypeIsReadBack)
{
    MessageRef message = NewMessage(4);
    const GUID guid = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    std::string bytes("\0\xFF\x7F", 3);
    LONG numbers[] = {1, -2};
    wchar_t first[] = L"x";
    wchar_t second[] = L"\u00df";
    LPWSTR texts[] = {first, second};
    std::vector<SPropValue> values(12);
    values[0] = Text(PR_SUBJECT_W, L"All types");
    values[1] = Number(PR_IMPORTANCE, -1);
    values[2].ulPropTag = 0x66010002;
    values[2].Value.i = -7;
    values[3].ulPropTag = 0x66020005;
    values[3].Value.dbl = 0.1;
    values[4].ulPropTag = 0x66030006;
    values[4].Value.cur.int64 = -15000;
    values[5].ulPropTag = 0x66040014;
    values[5].Value.li.QuadPart = 9007199254740993LL;
    values[6].ulPropTag = 0x66050048;
    values[6].Value.lpguid = const_cast<GUID*>(&guid);
    values[7].ulPropTag = 0x6606000B;
    values[7].Value.b = 1;
    values[8].ulPropTag = PR_CLIENT_SUBMIT_TIME;
    values[8].Value.li.QuadPart = 133500000001234567LL;
    values[9].ulPropTag = 0x66070102;
    values[9].Value.bin = {3, reinterpret_cast<BYTE*>(bytes.data())};
    values[10].ulPropTag = 0x66081003;
    values[10].Value.MVl = {2, numbers};
    values[11].ulPropTag = 0x6609101F;
    values[11].Value.MVszW = {2, texts};
    ASSERT_EQ(message->SetProps(12, values.data(), nullptr), S_OK);
    ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const ULONG64 id = IdOf(message);
    EXPECT_EQ(id, 100000000U);

    message.Reset();
    Restart();
    const MessageRef again = OpenMessage(id);
    IMessage* read = again.Get();
    EXPECT_EQ(TextProp(read, PR_MESSAGE_CLASS_W), L"IPM.Note");
    EXPECT_EQ(GetProp(read, PR_IMPORTANCE)->Value.l, -1);
    EXPECT_EQ(GetProp(read, 0x66010002)->Value.i, -7);
    EXPECT_EQ(GetProp(read, 0x66020005)->Value.dbl, 0.1);
    EXPECT_EQ(GetProp(read, 0x66030006)->Value.cur.int64, -15000);
    EXPECT_EQ(GetProp(read, 0x66040014)->Value.li.QuadPart, 9007199254740993LL);
    EXPECT_TRUE(*GetProp(read, 0x66050048)->Value.lpguid == guid);
    EXPECT_EQ(GetProp(read, 0x6606000B)->Value.b, 1);
    EXPECT_EQ(GetProp(read, PR_CLIENT_SUBMIT_TIME)->Value.li.QuadPart, 133500000001234567LL);
    const CHeld<SPropValue> binary = GetProp(read, 0x66070102);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(binary->Value.bin.lpb), 3), bytes);
    EXPECT_EQ(GetProp(read, 0x66081003)->Value.MVl.lpl[1], -2);
    EXPECT_STREQ(GetProp(read, 0x6609101F)->Value.MVszW.lppszW[1], L"\u00df");
    EXPECT_GT(GetProp(read, PR_CREATION_TIME)->Value.li.QuadPart, 133500000000000000LL);
}

TEST_F(SaveTest, NewNameGetsAnIdentifierAndKeepsIt)
{
    MessageRef message = OpenMessage(100);
    GUID set = {0x00020329, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    wchar_t text[] = L"tlv_meeting_calendar_property";
    MAPINAMEID name{};
    name.lpguid = &set;
    name.ulKind = MNID_STRING;
    name.Kind.lpwstrName = text;
    MAPINAMEID* names[] = {&name};
    CHeld<SPropTagArray> tags;
    ASSERT_EQ(message->GetIDsFromNames(1, names, MAPI_CREATE, tags.Put()), S_OK);
    const ULONG tag = PROP_TAG(PT_UNICODE, PROP_ID(tags->aulPropTag[0]));
    SPropValue value = Text(tag, L"abc");
    ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    EXPECT_NE(ReadDocument().find("\"PS_PUBLIC_STRINGS:tlv_meeting_calendar_property\": \"0x"),
              std::string::npos);
    tags.Reset();
    message.Reset();
    Restart();
    const MessageRef again = OpenMessage(100);
    ASSERT_EQ(again->GetIDsFromNames(1, names, 0, tags.Put()), S_OK);
    EXPECT_EQ(PROP_ID(tags->aulPropTag[0]), PROP_ID(tag));
    EXPECT_EQ(TextProp(again.Get(), tag), L"abc");
    SPropValue more = Number(PR_IMPORTANCE, 1);
    ASSERT_EQ(again->SetProps(1, &more, nullptr), S_OK);
    ASSERT_EQ(again->SaveChanges(0), S_OK);
}

TEST_F(SaveTest, LargeValueGoesIntoAFileNamedByItsContent)
{
    MessageRef message = OpenMessage(100);
    CRef<IStream> stream;
    ASSERT_EQ(message->OpenProperty(PR_BODY_W,
                                    &IID_IStream,
                                    STGM_READWRITE,
                                    MAPI_CREATE | MAPI_MODIFY,
                                    stream.PutAs<IUnknown>()),
              S_OK);
    const std::wstring body(50000, L'\u00e4');
    ULONG cb = 0;
    ASSERT_EQ(stream->Write(body.data(), 100000, &cb), S_OK);
    EXPECT_EQ(cb, 100000U);
    ASSERT_EQ(stream->Commit(0), S_OK);
    stream.Reset();
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    EXPECT_NE(ReadDocument().find("\"PR_BODY_W\": {"), std::string::npos);
    message.Reset();
    Restart();
    const MessageRef again = OpenMessage(100);
    EXPECT_EQ(GetProp(again.Get(), PR_BODY_W)->Value.err, E_OUTOFMEMORY);
    ASSERT_EQ(again->OpenProperty(PR_BODY_W, &IID_IStream, 0, 0, stream.PutAs<IUnknown>()), S_OK);
    std::wstring read(50001, L'\0');
    ASSERT_EQ(stream->Read(read.data(), 100002, &cb), S_OK);
    EXPECT_EQ(cb, 100000U);
    EXPECT_EQ(read.substr(0, 50000), body);
    EXPECT_EQ(stream->Write("x", 1, &cb), STG_E_ACCESSDENIED);
}

TEST_F(SaveTest, RecipientsAreAddedChangedAndRemoved)
{
    MessageRef message = OpenMessage(100);
    SPropValue first[] = {Number(PR_RECIPIENT_TYPE, MAPI_TO),
                          Text(PR_DISPLAY_NAME_W, L"Ada"),
                          Text(PR_ADDRTYPE_W, L"SMTP"),
                          Text(PR_EMAIL_ADDRESS_W, L"ada@x.example")};
    SPropValue second[] = {Number(PR_RECIPIENT_TYPE, MAPI_CC), Text(PR_DISPLAY_NAME_W, L"Bo")};
    struct
    {
        ULONG cEntries;
        ADRENTRY aEntries[2];
    } list = {2, {{0, 4, first}, {0, 2, second}}};
    ASSERT_EQ(message->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<ADRLIST*>(&list)), S_OK);
    SPropValue changed[] = {Number(PR_ROWID, 1),
                            Number(PR_RECIPIENT_TYPE, MAPI_BCC),
                            Text(PR_DISPLAY_NAME_W, L"Bo Ferrand")};
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
    SPropValue row[] = {Number(PR_ROWID, 0), Number(PR_RECIPIENT_TYPE, MAPI_TO)};
    ADRLIST gone{1, {{0, 2, row}}};
    ASSERT_EQ(again->ModifyRecipients(MODRECIP_REMOVE, &gone), S_OK);
    row[0].Value.l = 5;
    EXPECT_EQ(again->ModifyRecipients(MODRECIP_REMOVE, &gone), MAPI_E_INVALID_PARAMETER);
    ASSERT_EQ(again->SaveChanges(0), S_OK);
    const MessageRef third = OpenMessage(100);
    ASSERT_EQ(third->GetRecipientTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W), std::vector<std::wstring>{L"Bo Ferrand"});
}

TEST_F(SaveTest, AttachmentsWithDataAndWithAMessageAreSavedWithTheMessage)
{
    MessageRef message = OpenMessage(100);
    ULONG number = 9;
    {
        CRef<IAttach> attach;
        ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, attach.Put()), S_OK);
        EXPECT_EQ(number, 0U);
        SPropValue values[] = {Number(PR_ATTACH_METHOD, ATTACH_BY_VALUE),
                               Text(PR_ATTACH_LONG_FILENAME_W, L"a.bin")};
        ASSERT_EQ(attach->SetProps(2, values, nullptr), S_OK);
        ASSERT_EQ(attach->SaveChanges(0), S_OK);
        SPropValue late = Text(PR_ATTACH_LONG_FILENAME_W, L"b.bin");
        EXPECT_EQ(attach->SetProps(1, &late, nullptr), MAPI_E_NO_ACCESS);
    }
    {
        CRef<IAttach> attach;
        ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, attach.Put()), S_OK);
        EXPECT_EQ(number, 1U);
        SPropValue value = Number(PR_ATTACH_METHOD, ATTACH_EMBEDDED_MSG);
        ASSERT_EQ(attach->SetProps(1, &value, nullptr), S_OK);
        MessageRef inner;
        ASSERT_EQ(attach->OpenProperty(PR_ATTACH_DATA_OBJ,
                                       &IID_IMessage,
                                       0,
                                       MAPI_CREATE | MAPI_MODIFY,
                                       inner.PutAs<IUnknown>()),
                  S_OK);
        SPropValue subject = Text(PR_SUBJECT_W, L"inside");
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

TEST_F(SaveTest, DeletedAndMovedMessagesLeaveTheirFolder)
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

TEST_F(SaveTest, FoldersAreMadeChangedAndDeleted)
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
    SPropValue values[] = {Text(PR_DISPLAY_NAME_W, L"Days off"), Text(PR_COMMENT_W, L"mine")};
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

TEST_F(SaveTest, ChangeMadeMeanwhileByAnotherIsKept)
{
    MessageRef message = OpenMessage(100);
    std::string document = ReadDocument();
    document.replace(document.find("Room 4"), 6, "Room 5");
    document.replace(document.find("\"Other\""), 7, "\"Third\"");
    WriteDocument(document);
    SPropValue value = Text(PR_SUBJECT_W, L"mine");
    ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    const std::string after = ReadDocument();
    EXPECT_NE(after.find("Room 5"), std::string::npos);
    EXPECT_NE(after.find("Third"), std::string::npos);
    EXPECT_NE(after.find("\"mine\""), std::string::npos);
}

TEST_F(SaveTest, SavingWhatAnotherDeletedFails)
{
    MessageRef message = OpenMessage(100);
    WriteDocument(UsualDocument(""));
    SPropValue value = Text(PR_SUBJECT_W, L"mine");
    ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
    EXPECT_EQ(message->SaveChanges(0), MAPI_E_OBJECT_DELETED);
}

TEST_F(SaveTest, ReadFlagsAreWrittenAtOnce)
{
    MessageRef message = OpenMessage(100);
    ASSERT_EQ(message->SetReadFlag(CLEAR_READ_FLAG), S_OK);
    EXPECT_NE(ReadDocument().find("\"PR_MESSAGE_FLAGS\": 0"), std::string::npos);
    const FolderRef folder = OpenFolder(8);
    EXPECT_EQ(GetProp(folder.Get(), PR_CONTENT_UNREAD)->Value.l, 1);
    ASSERT_EQ(folder->SetReadFlags(nullptr, 0, nullptr, 0), S_OK);
    EXPECT_EQ(GetProp(folder.Get(), PR_CONTENT_UNREAD)->Value.l, 0);
}

TEST_F(SaveTest, CopyToBringsPropertiesRecipientsAndAttachments)
{
    const MessageRef source = OpenMessage(100);
    SPropValue first[] = {Number(PR_RECIPIENT_TYPE, MAPI_TO), Text(PR_DISPLAY_NAME_W, L"Ada")};
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
    SPropValue subject = Text(PR_SUBJECT_W, L"stays");
    ASSERT_EQ(target->SetProps(1, &subject, nullptr), S_OK);
    ASSERT_EQ(source->CopyProps(
                  include, 0, nullptr, &IID_IMessage, target.Get(), MAPI_NOREPLACE, nullptr),
              S_OK);
    EXPECT_EQ(TextProp(target.Get(), PR_SUBJECT_W), L"stays");
}

TEST_F(SaveTest, SavedChangesAreToldToTables)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef table = Contents(8);
    mapi64::Connection connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &sink, &connection), S_OK);
    MessageRef message = OpenMessage(100);
    SPropValue value = Text(PR_SUBJECT_W, L"new");
    ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
    ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(sink.WaitFor(1)[0].tableEvent, static_cast<ULONG>(TABLE_ROW_MODIFIED));
    const MessageRef fresh = NewMessage(8);
    ASSERT_EQ(fresh->SaveChanges(0), S_OK);
    EXPECT_EQ(sink.WaitFor(2)[1].tableEvent, static_cast<ULONG>(TABLE_ROW_ADDED));
    ASSERT_EQ(MapiStoreRefresh(), S_OK); // what we wrote ourselves is no change
    EXPECT_EQ(sink.Heard().size(), 2U);
    EXPECT_EQ(table->Unadvise(connection), S_OK);
}

} // namespace
