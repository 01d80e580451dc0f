#include <cstring>

#include "StoreFixture.h"

using namespace mapitest;

namespace
{

const GUID kAppointment = {0x00062002, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const GUID kPublicStrings = {0x00020329, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

const char* const kSeries = R"({
  "id": 100, "folder": 8, "class": "IPM.Appointment",
  "properties": {
    "PR_SUBJECT_W": "RE: Planning", "PR_BODY_W": "Bring the figures.",
    "PR_BODY_HTML_W": "<p>Bring the f\u00efgures.</p>",
    "PR_SENT_REPRESENTING_ENTRYID": { "entry": 30 },
    "PidLidAppointmentStartWhole": "2026-11-02T08:00:00Z",
    "PidLidAppointmentSubType": true,
    "PidLidBusyStatus": 2,
    "PidLidGlobalObjectId": { "globalObjectId": "planning-1@nordlys.example" },
    "PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE": "k-1",
    "PR_SENSITIVITY": { "error": "0x8007000E" },
    "0x66010002": 7, "0x66020005": 2.5, "0x66030006": 12.25, "0x66040014": "-9223372036854775807",
    "0x66050048": "{00020329-0000-0000-C000-000000000046}", "0x66061003": [1, -2, 3],
    "0x6607101F": ["a", "b\u00e9"], "0x66081102": ["00FF", ""], "0x66090004": 1.5
  },
  "recipients": [
    { "PR_RECIPIENT_TYPE": 1, "PR_DISPLAY_NAME_W": "Ada Quist", "PR_ADDRTYPE_W": "SMTP",
      "PR_EMAIL_ADDRESS_W": "ada.quist@nordlys.example", "PR_RECIPIENT_FLAGS": 3,
      "PR_RECIPIENT_TRACKSTATUS": 1, "recipient": { "entry": 30 } },
    { "PR_RECIPIENT_TYPE": 2, "PR_DISPLAY_NAME_W": "Bo" }
  ],
  "attachments": [
    { "properties": { "PR_ATTACH_METHOD": 5 },
      "message": { "class": "IPM.OLE.CLASS", "properties": { "PR_SUBJECT_W": "Planning, long",
        "PidLidAppointmentStartWhole": "2026-11-17T09:00:00Z" },
        "recipients": [ { "PR_RECIPIENT_TYPE": 1, "PR_DISPLAY_NAME_W": "Inner" } ] } },
    { "properties": { "PR_ATTACH_METHOD": 1, "PR_ATTACHMENT_CONTACTPHOTO": true,
        "PR_ATTACH_DATA_BIN": "FFD8FFE0" } }
  ] })";

class MessageTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(kSeries, R"("options": { "largeValueBytes": 128 },)"));
        Start();
        message = OpenMessage(100);
    }
    void TearDown() override
    {
        message.Reset();
        StoreTest::TearDown();
    }
    ULONG TagOf(const GUID& set, LONG number, ULONG type)
    {
        GUID guid = set;
        MAPINAMEID name{};
        name.lpguid = &guid;
        name.ulKind = MNID_ID;
        name.Kind.lID = number;
        MAPINAMEID* names[] = {&name};
        CHeld<SPropTagArray> tags;
        EXPECT_EQ(message->GetIDsFromNames(1, names, 0, tags.Put()), S_OK);
        return PROP_TAG(type, PROP_ID(tags->aulPropTag[0]));
    }
    static std::string Binary(const SPropValue& value)
    {
        return HexOf(std::string(reinterpret_cast<char*>(value.Value.bin.lpb), value.Value.bin.cb));
    }

    MessageRef message;
};

TEST_F(MessageTest, NamedPropertiesAreFoundBySetAndNumberOrText)
{
    const ULONG start = TagOf(kAppointment, 0x820D, PT_SYSTIME);
    EXPECT_GE(PROP_ID(start), 0x8100U);
    const CHeld<SPropValue> time = GetProp(message.Get(), start);
    ASSERT_EQ(time->ulPropTag, start);
    SYSTEMTIME st{};
    FileTimeToSystemTime(&time->Value.ft, &st);
    EXPECT_EQ(st.wYear, 2026);
    EXPECT_EQ(st.wMonth, 11);
    EXPECT_EQ(st.wDay, 2);
    EXPECT_EQ(st.wHour, 8);

    GUID set = kPublicStrings;
    wchar_t text[] = L"TalvoKey";
    MAPINAMEID name{};
    name.lpguid = &set;
    name.ulKind = MNID_STRING;
    name.Kind.lpwstrName = text;
    MAPINAMEID* names[] = {&name};
    CHeld<SPropTagArray> tags;
    ASSERT_EQ(message->GetIDsFromNames(1, names, 0, tags.Put()), S_OK);
    EXPECT_EQ(PROP_TYPE(tags->aulPropTag[0]), PT_UNSPECIFIED);
    EXPECT_EQ(TextProp(message.Get(), PROP_TAG(PT_UNICODE, PROP_ID(tags->aulPropTag[0]))), L"k-1");
}

TEST_F(MessageTest, UnknownNameComesBackAsErrorWithAWarning)
{
    GUID set = kAppointment;
    MAPINAMEID name{};
    name.lpguid = &set;
    name.ulKind = MNID_ID;
    name.Kind.lID = 0x7777;
    MAPINAMEID* names[] = {&name};
    CHeld<SPropTagArray> tags;
    EXPECT_EQ(message->GetIDsFromNames(1, names, 0, tags.Put()), MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(tags->aulPropTag[0], PT_ERROR);
    EXPECT_EQ(message->GetIDsFromNames(1, names, MAPI_CREATE, tags.Put()), S_OK);
    EXPECT_GE(PROP_ID(tags->aulPropTag[0]), 0x8100U);
}

TEST_F(MessageTest, NameOfAnIdentifierIsGivenBack)
{
    CTags wanted{TagOf(kAppointment, 0x820D, PT_SYSTIME)};
    SPropTagArray* tags = wanted;
    ULONG count = 0;
    CHeld<MAPINAMEID*> names;
    ASSERT_EQ(message->GetNamesFromIDs(&tags, nullptr, 0, &count, names.Put()), S_OK);
    ASSERT_EQ(count, 1U);
    EXPECT_EQ(names[0]->ulKind, static_cast<ULONG>(MNID_ID));
    EXPECT_EQ(names[0]->Kind.lID, 0x820D);
    EXPECT_TRUE(*names[0]->lpguid == kAppointment);
}

TEST_F(MessageTest, UnspecifiedTypeGivesTheStoredOne)
{
    const ULONG busy = TagOf(kAppointment, 0x8205, PT_UNSPECIFIED);
    const CHeld<SPropValue> value = GetProp(message.Get(), busy);
    EXPECT_EQ(PROP_TYPE(value->ulPropTag), PT_LONG);
    EXPECT_EQ(value->Value.l, 2);
    const CHeld<SPropValue> narrow =
        GetProp(message.Get(), PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_W)), 0);
    ASSERT_EQ(narrow->ulPropTag, PR_SUBJECT_A);
    EXPECT_STREQ(narrow->Value.lpszA, "RE: Planning");
}

TEST_F(MessageTest, EveryTypeComesBackAsItWasWritten)
{
    EXPECT_EQ(GetProp(message.Get(), 0x66010002)->Value.i, 7);
    EXPECT_EQ(GetProp(message.Get(), 0x66020005)->Value.dbl, 2.5);
    EXPECT_EQ(GetProp(message.Get(), 0x66030006)->Value.cur.int64, 122500);
    EXPECT_EQ(GetProp(message.Get(), 0x66040014)->Value.li.QuadPart, -9223372036854775807LL);
    EXPECT_TRUE(*GetProp(message.Get(), 0x66050048)->Value.lpguid == kPublicStrings);
    EXPECT_EQ(GetProp(message.Get(), 0x66090004)->Value.flt, 1.5F);
    const CHeld<SPropValue> numbers = GetProp(message.Get(), 0x66061003);
    ASSERT_EQ(numbers->Value.MVl.cValues, 3U);
    EXPECT_EQ(numbers->Value.MVl.lpl[1], -2);
    const CHeld<SPropValue> texts = GetProp(message.Get(), 0x6607101F);
    ASSERT_EQ(texts->Value.MVszW.cValues, 2U);
    EXPECT_STREQ(texts->Value.MVszW.lppszW[1], L"b\u00e9");
    const CHeld<SPropValue> bytes = GetProp(message.Get(), 0x66081102);
    ASSERT_EQ(bytes->Value.MVbin.cValues, 2U);
    EXPECT_EQ(bytes->Value.MVbin.lpbin[0].cb, 2U);
    EXPECT_EQ(bytes->Value.MVbin.lpbin[1].cb, 0U);
    EXPECT_EQ(GetProp(message.Get(), TagOf(kAppointment, 0x8215, PT_BOOLEAN))->Value.b, 1);
}

TEST_F(MessageTest, MissingPropertyAndWrongTypeAreErrorsInTheValue)
{
    CTags tags{PR_SUBJECT_W, PR_COMMENT_W, PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT_W))};
    ULONG count = 0;
    CHeld<SPropValue> values;
    EXPECT_EQ(message->GetProps(tags, MAPI_UNICODE, &count, values.Put()), MAPI_W_ERRORS_RETURNED);
    ASSERT_EQ(count, 3U);
    EXPECT_EQ(values[0].ulPropTag, PR_SUBJECT_W);
    EXPECT_EQ(values[1].ulPropTag, PROP_TAG(PT_ERROR, PROP_ID(PR_COMMENT_W)));
    EXPECT_EQ(values[1].Value.err, MAPI_E_NOT_FOUND);
    EXPECT_EQ(values[2].ulPropTag, PROP_TAG(PT_ERROR, PROP_ID(PR_SUBJECT_W)));
}

TEST_F(MessageTest, StoredErrorIsTheStatusOfTheProperty)
{
    const CHeld<SPropValue> value = GetProp(message.Get(), PR_SENSITIVITY);
    EXPECT_EQ(value->Value.err, E_OUTOFMEMORY);
    CRef<IStream> stream;
    EXPECT_EQ(message->OpenProperty(PROP_TAG(PT_UNICODE, PROP_ID(PR_SENSITIVITY)),
                                    &IID_IStream,
                                    0,
                                    0,
                                    stream.PutAs<IUnknown>()),
              MAPI_E_NOT_FOUND);
}

TEST_F(MessageTest, ComputedPropertiesFollowTheMessage)
{
    EXPECT_EQ(TextProp(message.Get(), PR_NORMALIZED_SUBJECT_W), L"Planning");
    EXPECT_EQ(TextProp(message.Get(), PR_SUBJECT_PREFIX_W), L"RE: ");
    EXPECT_EQ(TextProp(message.Get(), PR_DISPLAY_TO_W), L"Ada Quist");
    EXPECT_EQ(TextProp(message.Get(), PR_DISPLAY_CC_W), L"Bo");
    EXPECT_EQ(GetProp(message.Get(), PR_HASATTACH)->Value.b, 1);
    EXPECT_EQ(Binary(GetProp(message.Get(), PR_ENTRYID)[0]), HexOf(MessageId(100)));
    EXPECT_EQ(Binary(GetProp(message.Get(), PR_PARENT_ENTRYID)[0]), HexOf(FolderId(8)));
    EXPECT_EQ(GetProp(message.Get(), PR_OBJECT_TYPE)->Value.l, static_cast<LONG>(MAPI_MESSAGE));
}

TEST_F(MessageTest, HtmlIsGivenAsNarrowTextWideTextAndBytes)
{
    const CHeld<SPropValue> narrow = GetProp(message.Get(), 0x1013001E);
    ASSERT_EQ(narrow->ulPropTag, 0x1013001EU);
    EXPECT_STREQ(narrow->Value.lpszA, "<p>Bring the f\xEFgures.</p>");
    EXPECT_EQ(TextProp(message.Get(), 0x1013001F), L"<p>Bring the f\u00EFgures.</p>");
    EXPECT_EQ(Binary(GetProp(message.Get(), mapistore::kTagHtmlBinary)[0]),
              HexOf("<p>Bring the f\xC3\xAFgures.</p>"));
}

TEST_F(MessageTest, GlobalObjectIdHoldsTheUidBehindItsHead)
{
    const std::string hex =
        Binary(GetProp(message.Get(),
                       TagOf({0x6ED8DA90, 0x450B, 0x101B, {0x98, 0xDA, 0, 0xAA, 0, 0x3F, 0x13, 5}},
                             3,
                             PT_BINARY))[0]);
    const std::string bytes = BytesOf(hex);
    ASSERT_GT(bytes.size(), 53U);
    EXPECT_EQ(bytes.substr(40, 8), "vCal-Uid");
    std::uint32_t length = 0;
    std::memcpy(&length, &bytes[36], 4);
    EXPECT_EQ(length, bytes.size() - 40);
    EXPECT_STREQ(&bytes[52], "planning-1@nordlys.example");
}

TEST_F(MessageTest, LargeValueComesThroughTheStreamOnly)
{
    message = OpenMessage(100, MAPI_BEST_ACCESS);
    const std::wstring body(100, L'x');
    SPropValue value{};
    value.ulPropTag = PR_BODY_W;
    value.Value.lpszW = const_cast<wchar_t*>(body.c_str());
    ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);

    EXPECT_EQ(GetProp(message.Get(), PR_BODY_W)->Value.err, E_OUTOFMEMORY);
    CRef<IStream> stream;
    ASSERT_EQ(message->OpenProperty(PR_BODY_W, &IID_IStream, 0, 0, stream.PutAs<IUnknown>()), S_OK);
    STATSTG stat{};
    ASSERT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, 200U);
    wchar_t text[128] = {};
    ULONG cb = 0;
    ASSERT_EQ(stream->Read(text, 254, &cb), S_OK);
    EXPECT_EQ(cb, 200U);
    EXPECT_EQ(std::wstring(text, 100), body);
    ASSERT_EQ(stream->Read(text, 254, &cb), S_OK);
    EXPECT_EQ(cb, 0U);
}

TEST_F(MessageTest, RecipientTableHasEveryColumnOfItsOwn)
{
    TableRef table;
    ASSERT_EQ(message->GetRecipientTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    ULONG count = 0;
    ASSERT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 2U);

    const CRows rows = AllRows(table);

    const auto find = [&](ULONG row, ULONG tag) -> const SPropValue* {
        for (ULONG i = 0; i < rows[row].cValues; ++i)
        {
            if (rows[row].lpProps[i].ulPropTag == tag)
            {
                return &rows[row].lpProps[i];
            }
        }
        return nullptr;
    };
    ASSERT_EQ(rows.Count(), 2U);
    EXPECT_STREQ(find(0, PR_EMAIL_ADDRESS_W)->Value.lpszW, L"ada.quist@nordlys.example");
    EXPECT_EQ(find(0, mapistore::kTagRecipientFlags)->Value.l, 3);
    EXPECT_EQ(find(0, mapistore::kTagRecipientTrackStatus)->Value.l, 1);
    EXPECT_EQ(Binary(*find(0, PR_ENTRYID)), HexOf(EntryId(MAPI_MAILUSER, bookUid, 30)));
    EXPECT_EQ(find(1, PR_RECIPIENT_TYPE)->Value.l, 2);
    EXPECT_EQ(find(1, PR_ENTRYID), nullptr);
    EXPECT_EQ(find(1, PR_ROWID)->Value.l, 1);
}

TEST_F(MessageTest, EmbeddedMessageIsOpenedThroughItsAttachment)
{
    TableRef table;
    ASSERT_EQ(message->GetAttachmentTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    SPropValue five{};
    five.ulPropTag = PR_ATTACH_METHOD;
    five.Value.l = ATTACH_EMBEDDED_MSG;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, PR_ATTACH_METHOD, &five};
    CTags columns{PR_ATTACH_NUM};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    ASSERT_EQ(table->Restrict(&res, TBL_BATCH), S_OK);
    const CRows rows = AllRows(table);
    ASSERT_EQ(rows.Count(), 1U);
    ASSERT_EQ(rows[0].lpProps[0].ulPropTag, PR_ATTACH_NUM);

    CRef<IAttach> attach;
    ASSERT_EQ(message->OpenAttach(static_cast<ULONG>(rows[0].lpProps[0].Value.l),
                                  nullptr,
                                  MAPI_BEST_ACCESS,
                                  attach.Put()),
              S_OK);
    MessageRef inner;
    ASSERT_EQ(attach->OpenProperty(
                  PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_MODIFY, inner.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(TextProp(inner.Get(), PR_SUBJECT_W), L"Planning, long");
    TableRef recipients;
    ASSERT_EQ(inner->GetRecipientTable(MAPI_UNICODE, recipients.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(TextColumn(recipients, PR_DISPLAY_NAME_W), std::vector<std::wstring>{L"Inner"});
}

TEST_F(MessageTest, PhotoIsFoundByItsMarkAndRead)
{
    TableRef table;
    ASSERT_EQ(message->GetAttachmentTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    CTags columns{PR_ATTACH_NUM, mapistore::kTagAttachContactPhoto};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    SPropValue yes{};
    yes.ulPropTag = mapistore::kTagAttachContactPhoto;
    yes.Value.b = 1;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, mapistore::kTagAttachContactPhoto, &yes};
    ASSERT_EQ(table->Restrict(&res, TBL_BATCH), S_OK);
    const CRows rows = AllRows(table);
    ASSERT_EQ(rows.Count(), 1U);
    EXPECT_EQ(rows[0].lpProps[0].Value.l, 1);
    CRef<IAttach> attach;
    ASSERT_EQ(message->OpenAttach(1, nullptr, MAPI_BEST_ACCESS, attach.Put()), S_OK);
    EXPECT_EQ(Binary(GetProp(attach.Get(), PR_ATTACH_DATA_BIN)[0]), "FFD8FFE0");
}

TEST_F(MessageTest, BothFormsOfAnIdentifierOpenTheMessage)
{
    std::string table = MessageId(100, true);
    std::string longTerm = MessageId(100);
    const FolderRef folder = OpenFolder(8);
    ULONG type = 0;
    MessageRef opened;
    ASSERT_EQ(folder->OpenEntry(static_cast<ULONG>(table.size()),
                                reinterpret_cast<ENTRYID*>(table.data()),
                                nullptr,
                                MAPI_BEST_ACCESS,
                                &type,
                                opened.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(Binary(GetProp(opened.Get(), PR_ENTRYID)[0]), HexOf(longTerm));
    ULONG same = 0;
    ASSERT_EQ(store->CompareEntryIDs(32,
                                     reinterpret_cast<ENTRYID*>(table.data()),
                                     32,
                                     reinterpret_cast<ENTRYID*>(longTerm.data()),
                                     0,
                                     &same),
              S_OK);
    EXPECT_EQ(same, 1U);
}

TEST_F(MessageTest, BadIdentifiersAreRefused)
{
    std::string longTerm = MessageId(4711);
    ULONG type = 0;
    MessageRef opened;
    const auto open = [&](std::string id) {
        return store->OpenEntry(static_cast<ULONG>(id.size()),
                                reinterpret_cast<ENTRYID*>(id.data()),
                                nullptr,
                                0,
                                &type,
                                opened.PutAs<IUnknown>());
    };
    EXPECT_EQ(open(MessageId(4711)), MAPI_E_NOT_FOUND);
    EXPECT_EQ(open("short"), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(open(EntryId(MAPI_MESSAGE, bookUid, 100)), MAPI_E_UNKNOWN_ENTRYID);
    EXPECT_EQ(open(EntryId(MAPI_STORE, storeUid, 1)), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(opened.Get(), nullptr);
}

TEST_F(MessageTest, GetLastErrorTellsOfTheLastFailureAndOfNoOther)
{
    CTags none{};
    ULONG count = 0;
    CHeld<SPropValue> values;
    ASSERT_EQ(message->GetProps(none, 0, &count, values.Put()), MAPI_E_INVALID_PARAMETER);
    CHeld<MAPIERROR> error;
    ASSERT_EQ(message->GetLastError(MAPI_E_INVALID_PARAMETER, 0, error.Put()), S_OK);
    ASSERT_NE(error.Get(), nullptr);
    EXPECT_STREQ(reinterpret_cast<char*>(error->lpszComponent), "mapistore");
    EXPECT_STREQ(reinterpret_cast<char*>(error->lpszError), "no properties asked for");
    ASSERT_EQ(message->GetLastError(MAPI_E_NO_ACCESS, MAPI_UNICODE, error.Put()), S_OK);
    EXPECT_EQ(error.Get(), nullptr);
}

} // namespace
