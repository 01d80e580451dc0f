#include "FloorReader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "SampleStore.h"

namespace
{

using namespace mapitest;

GUID g_appointment{0x00062002, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
GUID g_meeting{0x6ED8DA90, 0x450B, 0x101B, {0x98, 0xDA, 0x00, 0xAA, 0x00, 0x3F, 0x13, 0x05}};
GUID g_publicStrings{0x00020329, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

void Require(HRESULT hr, const char* what)
{
    if (FAILED(hr))
    {
        std::fprintf(stderr, "%s: 0x%08lX\n", what, static_cast<unsigned long>(hr));
        std::exit(1);
    }
}

std::string Identifier(ULONG type, std::uint64_t id)
{
    std::string bytes(32, '\0');
    const std::string uid = BytesOf(kSampleUid);
    std::copy(uid.begin(), uid.end(), bytes.begin() + 4);
    bytes[20] = 1;
    bytes[21] = static_cast<char>(type);
    std::copy_n(reinterpret_cast<const char*>(&id), sizeof(id), bytes.begin() + 24);
    return bytes;
}

ULONG TagOf(IMAPIProp* object, MAPINAMEID& name)
{
    MAPINAMEID* names = &name;
    CHeld<SPropTagArray> tags;
    if (object->GetIDsFromNames(1, &names, 0, tags.Put()) != S_OK ||
        PROP_TYPE(tags->aulPropTag[0]) == PT_ERROR)
    {
        return 0;
    }
    return tags->aulPropTag[0];
}

ULONG TagById(IMAPIProp* object, GUID& set, LONG id)
{
    MAPINAMEID name{};
    name.lpguid = &set;
    name.ulKind = MNID_ID;
    name.Kind.lID = id;
    return TagOf(object, name);
}

/// Whether the value is there.
bool ReadTag(IMAPIProp* object, ULONG tag)
{
    CTags tags{tag};
    CHeld<SPropValue> value;
    ULONG count = 0;
    return object->GetProps(tags, MAPI_UNICODE, &count, value.Put()) == S_OK;
}

bool ReadNamed(IMAPIProp* object, ULONG tag, ULONG type)
{
    if (tag == 0)
    {
        return false;
    }
    CTags tags{PROP_TAG(type, PROP_ID(tag))};
    CHeld<SPropValue> value;
    ULONG count = 0;
    const HRESULT hr = object->GetProps(tags, MAPI_UNICODE, &count, value.Put());
    if (hr == MAPI_W_ERRORS_RETURNED)
    {
        CHeld<MAPIERROR> error;
        object->GetLastError(hr, MAPI_UNICODE, error.Put());
    }
    return hr == S_OK;
}

bool ReadById(IMAPIProp* object, GUID& set, LONG id, ULONG type)
{
    return ReadNamed(object, TagById(object, set, id), type);
}

ULONG TagByText(IMAPIProp* object, const wchar_t* text)
{
    MAPINAMEID name{};
    name.lpguid = &g_publicStrings;
    name.ulKind = MNID_STRING;
    name.Kind.lpwstrName = const_cast<wchar_t*>(text);
    return TagOf(object, name);
}

bool ReadByText(IMAPIProp* object, const wchar_t* text)
{
    return ReadNamed(object, TagByText(object, text), PT_UNICODE);
}

void ReadEmbeddedRows(IMessage* message)
{
    TableRef table;
    Require(message->GetAttachmentTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()),
            "GetAttachmentTable");
    CTags columns{PR_ATTACH_NUM};
    Require(table->SetColumns(columns, 0), "SetColumns");
    SPropValue method{};
    method.ulPropTag = PR_ATTACH_METHOD;
    method.Value.l = ATTACH_EMBEDDED_MSG;
    SRestriction embedded{};
    embedded.rt = RES_PROPERTY;
    embedded.res.resProperty = {RELOP_EQ, PR_ATTACH_METHOD, &method};
    Require(table->Restrict(&embedded, TBL_BATCH), "Restrict");
    CRows rows;
    Require(table->QueryRows(0x0FFFFFFF, 0, rows.Put()), "QueryRows");
}

FILETIME Utc(WORD day, WORD hour)
{
    SYSTEMTIME time{};
    time.wYear = 2026;
    time.wMonth = 11;
    time.wDay = day;
    time.wHour = hour;
    FILETIME moment{};
    SystemTimeToFileTime(&time, &moment);
    return moment;
}

/// NOT(start above upper OR end below lower) AND recurring as told.
struct Branch
{
    SPropValue values[3]{};
    SRestriction outside[2]{};
    SRestriction either{};
    SRestriction both[2]{};

    void Fill(SRestriction& node, ULONG start, ULONG end, ULONG recurring, bool isSeries)
    {
        values[0].ulPropTag = start;
        values[0].Value.ft = Utc(7, 13);
        values[1].ulPropTag = end;
        values[1].Value.ft = Utc(1, 12);
        values[2].ulPropTag = recurring;
        values[2].Value.b = isSeries ? 1 : 0;
        outside[0].rt = RES_PROPERTY;
        outside[0].res.resProperty = {RELOP_GT, start, &values[0]};
        outside[1].rt = RES_PROPERTY;
        outside[1].res.resProperty = {RELOP_LT, end, &values[1]};
        either.rt = RES_OR;
        either.res.resOr = {2, outside};
        both[0].rt = RES_NOT;
        both[0].res.resNot = {0, &either};
        both[1].rt = RES_PROPERTY;
        both[1].res.resProperty = {RELOP_EQ, recurring, &values[2]};
        node.rt = RES_AND;
        node.res.resAnd = {2, both};
    }
};

} // namespace

CFloorReader::CFloorReader(const std::wstring& storeFolder, bool pauses) : m_pauses(pauses)
{
    MapiStoreConfigure(L"Folder", storeFolder.c_str());
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    Require(MAPIInitialize(&init), "MAPIInitialize");
    wchar_t profile[] = L"Demo";
    Require(MAPILogonEx(0,
                        profile,
                        nullptr,
                        MAPI_UNICODE | MAPI_EXTENDED | MAPI_NEW_SESSION | MAPI_EXPLICIT_PROFILE,
                        m_session.PutAs<::IMAPISession>()),
            "MAPILogonEx");
    std::string store = Identifier(MAPI_STORE, kSampleStore);
    Require(m_session->OpenMsgStore(0,
                                    static_cast<ULONG>(store.size()),
                                    reinterpret_cast<ENTRYID*>(store.data()),
                                    nullptr,
                                    MAPI_BEST_ACCESS,
                                    m_store.PutAs<::IMsgStore>()),
            "OpenMsgStore");
    std::string calendar = Identifier(MAPI_FOLDER, kSampleCalendar);
    ULONG type = 0;
    IUnknown* folder = nullptr;
    Require(m_store->OpenEntry(static_cast<ULONG>(calendar.size()),
                               reinterpret_cast<ENTRYID*>(calendar.data()),
                               nullptr,
                               MAPI_BEST_ACCESS,
                               &type,
                               &folder),
            "OpenEntry");
    m_folder = FolderRef(static_cast<IMAPIFolder*>(folder));
    Require(m_folder->GetContentsTable(MAPI_UNICODE, m_table.PutAs<::IMAPITable>()),
            "GetContentsTable");
    ResolveTags(m_folder.Get());
}

CFloorReader::~CFloorReader()
{
    m_table.Reset();
    m_folder.Reset();
    m_store.Reset();
    m_session.Reset();
    MAPIUninitialize();
}

void CFloorReader::ResolveTags(IMAPIProp* object)
{
    const auto tag = [&](LONG id, ULONG type) {
        return PROP_TAG(type, PROP_ID(TagById(object, g_appointment, id)));
    };
    m_clipStart = tag(0x8235, PT_SYSTIME);
    m_clipEnd = tag(0x8236, PT_SYSTIME);
    m_recurring = tag(0x8223, PT_BOOLEAN);
    m_start = tag(0x820D, PT_SYSTIME);
    m_end = tag(0x820E, PT_SYSTIME);
    m_pattern = tag(0x8232, PT_UNICODE);
    m_recur = tag(0x8216, PT_BINARY);
    m_recurrenceType = tag(0x8231, PT_LONG);
}

void CFloorReader::RestrictToWeek()
{
    SRestriction branches[2]{};
    Branch series;
    series.Fill(branches[0], m_clipStart, m_clipEnd, m_recurring, true);
    Branch single;
    single.Fill(branches[1], m_start, m_end, m_recurring, false);
    SRestriction root{};
    root.rt = RES_OR;
    root.res.resOr = {2, branches};
    LONG sought = 0;
    Require(m_table->Abort(), "Abort");
    Require(m_table->SeekRow(BOOKMARK_BEGINNING, 0, &sought), "SeekRow");
    Require(m_table->Restrict(nullptr, TBL_BATCH), "Restrict");
    Require(m_table->Restrict(&root, TBL_BATCH), "Restrict");
}

unsigned CFloorReader::Read()
{
    RestrictToWeek();
    ULONG count = 0;
    Require(m_table->GetRowCount(0, &count), "GetRowCount");
    CTags columns{
        PR_INSTANCE_KEY, PR_ENTRYID, PR_PARENT_ENTRYID, PR_OBJECT_TYPE, PR_MESSAGE_CLASS_W};
    Require(m_table->SetColumns(columns, 0), "SetColumns");
    CRows rows;
    Require(m_table->QueryRows(static_cast<LONG>(count), 0, rows.Put()), "QueryRows");
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        const SBinary& entryId = rows[i].lpProps[1].Value.bin;
        ULONG type = 0;
        IUnknown* object = nullptr;
        Require(m_folder->OpenEntry(entryId.cb,
                                    reinterpret_cast<ENTRYID*>(entryId.lpb),
                                    nullptr,
                                    MAPI_BEST_ACCESS,
                                    &type,
                                    &object),
                "OpenEntry");
        const MessageRef message(static_cast<IMessage*>(object));
        if (ReadMessage(message.Get()))
        {
            ReadInstance(entryId);
        }
    }
    Require(m_table->Restrict(nullptr, TBL_BATCH), "Restrict");
    return rows.Count();
}

bool CFloorReader::ReadMessage(IMessage* message)
{
    ReadById(message, g_appointment, 0x820D, PT_SYSTIME);
    if (!ReadTag(message, 0x80140040))
    {
        ReadById(message, g_appointment, 0x820E, PT_SYSTIME);
    }
    ReadTag(message, PR_SUBJECT_W);
    ReadById(message, g_meeting, 0x3, PT_BINARY);
    for (const wchar_t* name : {L"TalvoKey",
                                L"TalvoSpace",
                                L"tlvmeetingcalendarproperty",
                                L"tlv_meeting_calendar_property",
                                L"UCCapabilities"})
    {
        ReadByText(message, name);
    }
    ReadById(message, g_appointment, 0x8208, PT_UNSPECIFIED);
    ReadById(message, g_appointment, 0x8213, PT_UNSPECIFIED);
    ReadTag(message, PR_BODY_W);
    ReadTag(message, 0x1013001E);
    for (const LONG id : {0x8217, 0x8215, 0x8218, 0x8205})
    {
        ReadById(message, g_appointment, id, PT_UNSPECIFIED);
    }
    if (!ReadTag(message, PR_SENT_REPRESENTING_ENTRYID))
    {
        ReadTag(message, PR_SENDER_ENTRYID);
    }
    if (!ReadByText(message, L"TalvoOI"))
    {
        CRef<IStream> stream;
        const ULONG tag = TagByText(message, L"TalvoOI");
        message->OpenProperty(
            PROP_TAG(PT_UNICODE, PROP_ID(tag)), &IID_IStream, 0, 0, stream.PutAs<IUnknown>());
    }
    CTags recurring{PROP_TAG(PT_UNSPECIFIED, PROP_ID(TagById(message, g_appointment, 0x8223)))};
    CHeld<SPropValue> value;
    ULONG count = 0;
    const bool isSeries = message->GetProps(recurring, MAPI_UNICODE, &count, value.Put()) == S_OK &&
                          value->Value.b != 0;
    if (isSeries)
    {
        ReadSeries(message);
    }
    TableRef recipients;
    Require(message->GetRecipientTable(MAPI_UNICODE, recipients.PutAs<::IMAPITable>()),
            "GetRecipientTable");
    Require(recipients->GetRowCount(0, &count), "GetRowCount");
    CRows rows;
    Require(recipients->QueryRows(static_cast<LONG>(count), 0, rows.Put()), "QueryRows");
    for (ULONG row = 0; m_pauses && row < rows.Count(); ++row)
    {
        Sleep(1);
    }
    return isSeries;
}

void CFloorReader::ReadSeries(IMessage* message)
{
    for (const ULONG tag : {m_pattern, m_recur, m_recurrenceType})
    {
        ReadTag(message, tag);
    }
    ReadById(message, g_appointment, 0x8233, PT_BINARY);
}

void CFloorReader::ReadInstance(const SBinary& entryId)
{
    ULONG type = 0;
    IUnknown* object = nullptr;
    Require(m_store->OpenEntry(entryId.cb,
                               reinterpret_cast<ENTRYID*>(entryId.lpb),
                               nullptr,
                               MAPI_BEST_ACCESS,
                               &type,
                               &object),
            "OpenEntry");
    const MessageRef message(static_cast<IMessage*>(object));
    ReadEmbeddedRows(message.Get()); // for the instance's own texts
    ReadEmbeddedRows(message.Get()); // for the recipients of all changed instances
}
