#include "RecordingSink.h"
#include "SaveFixture.h"

using namespace mapitest;

namespace
{

TEST_F(SaveTest, ChangedPropertyIsWrittenAndTheRestOfTheTextStaysAsItWas)
{
    const std::string before = ReadDocument();
    MessageRef message = OpenMessage(100);
    SPropValue values[] = {TextValue(PR_SUBJECT_W, L"Planning \u00e4\u4e2d\U0001F600"),
                           NumberValue(PR_IMPORTANCE, 2)};
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
        SPropValue value = TextValue(PR_SUBJECT_W, L"lost");
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
    SPropValue values[] = {NumberValue(PR_OBJECT_TYPE, 1), NumberValue(PR_IMPORTANCE, 2)};
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
    SPropValue value = TextValue(PR_SUBJECT_W, L"no");
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
    values[0] = TextValue(PR_SUBJECT_W, L"All types");
    values[1] = NumberValue(PR_IMPORTANCE, -1);
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
    SPropValue value = TextValue(tag, L"abc");
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
    SPropValue more = NumberValue(PR_IMPORTANCE, 1);
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

TEST_F(SaveTest, ChangeMadeMeanwhileByAnotherIsKept)
{
    MessageRef message = OpenMessage(100);
    std::string document = ReadDocument();
    document.replace(document.find("Room 4"), 6, "Room 5");
    document.replace(document.find("\"Other\""), 7, "\"Third\"");
    WriteDocument(document);
    SPropValue value = TextValue(PR_SUBJECT_W, L"mine");
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
    SPropValue value = TextValue(PR_SUBJECT_W, L"mine");
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

TEST_F(SaveTest, SavedChangesAreToldToTables)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef table = Contents(8);
    mapi64::Connection connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &sink, &connection), S_OK);
    MessageRef message = OpenMessage(100);
    SPropValue value = TextValue(PR_SUBJECT_W, L"new");
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
