#include "StoreFigures.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>

#include "CountingSink.h"
#include "SampleStore.h"
#include "StoreFixture.h"

namespace
{

using namespace mapitest;

// 100 working weeks: a week holds a hundredth of the messages.
constexpr std::uint32_t kDays = 500;
constexpr std::uint32_t kRepeats = 5;
constexpr std::uint32_t kMostOpened = 5000;
constexpr std::uint32_t kChanged = 1000;

/// A call that failed: nothing more can be measured.
struct CallFailed
{
};

void Check(HRESULT hr, const char* what)
{
    if (hr != S_OK)
    {
        std::fprintf(stderr, "%s: 0x%08lX\n", what, static_cast<unsigned long>(hr));
        throw CallFailed();
    }
}

double SecondsOf(const std::function<void()>& action)
{
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double MedianSecondsOf(const std::function<void()>& action)
{
    std::vector<double> times;
    for (std::uint32_t i = 0; i < kRepeats; ++i)
    {
        times.push_back(SecondsOf(action));
    }
    std::nth_element(times.begin(), times.begin() + kRepeats / 2, times.end());
    return times[kRepeats / 2];
}

double CpuSeconds()
{
    FILETIME made{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &made, &ended, &kernel, &user);
    const auto ticks = [](const FILETIME& time) {
        return static_cast<double>((ULONG64{time.dwHighDateTime} << 32) | time.dwLowDateTime);
    };
    return (ticks(kernel) + ticks(user)) / 1e7;
}

PROCESS_MEMORY_COUNTERS Memory()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters;
}

double Mebibytes(SIZE_T bytes)
{
    return static_cast<double>(bytes) / (1024 * 1024);
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

/// The library over one store, from logon on.
class CRun
{
public:
    explicit CRun(const std::wstring& path)
    {
        MapiStoreConfigure(L"Folder", path.c_str());
        MapiStoreConfigure(L"Watch", L"0");
    }

    void Open()
    {
        MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
        Check(MAPIInitialize(&init), "MAPIInitialize");
        wchar_t profile[] = L"Demo";
        Check(MAPILogonEx(0,
                          profile,
                          nullptr,
                          MAPI_UNICODE | MAPI_EXTENDED | MAPI_NEW_SESSION | MAPI_EXPLICIT_PROFILE,
                          m_session.PutAs<::IMAPISession>()),
              "MAPILogonEx");
        std::string id = Identifier(MAPI_STORE, kSampleStore);
        Check(m_session->OpenMsgStore(0,
                                      static_cast<ULONG>(id.size()),
                                      reinterpret_cast<ENTRYID*>(id.data()),
                                      nullptr,
                                      MAPI_BEST_ACCESS,
                                      m_store.PutAs<::IMsgStore>()),
              "OpenMsgStore");
        folder = FolderRef(static_cast<IMAPIFolder*>(OpenEntry(MAPI_FOLDER, kSampleCalendar)));
        Check(folder->GetContentsTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()),
              "GetContentsTable");
    }

    void Close()
    {
        table.Reset();
        folder.Reset();
        m_store.Reset();
        m_session.Reset();
        MAPIUninitialize();
    }

    MessageRef OpenMessage(std::uint64_t id)
    {
        return MessageRef(static_cast<IMessage*>(OpenEntry(MAPI_MESSAGE, id)));
    }

    ULONG Count() const
    {
        ULONG count = 0;
        Check(table->GetRowCount(0, &count), "GetRowCount");
        return count;
    }

    FolderRef folder;
    TableRef table;

private:
    IUnknown* OpenEntry(ULONG type, std::uint64_t id)
    {
        std::string bytes = Identifier(type, id);
        ULONG found = 0;
        IUnknown* object = nullptr;
        Check(m_store->OpenEntry(static_cast<ULONG>(bytes.size()),
                                 reinterpret_cast<ENTRYID*>(bytes.data()),
                                 nullptr,
                                 MAPI_BEST_ACCESS,
                                 &found,
                                 &object),
              "OpenEntry");
        return object;
    }

    SessionRef m_session;
    StoreRef m_store;
};

ULONG NamedTag(IMAPIProp* object, LONG id, ULONG type)
{
    GUID set{0x00062002, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    MAPINAMEID name{};
    name.lpguid = &set;
    name.ulKind = MNID_ID;
    name.Kind.lID = id;
    MAPINAMEID* names = &name;
    CHeld<SPropTagArray> tags;
    Check(object->GetIDsFromNames(1, &names, 0, tags.Put()), "GetIDsFromNames");
    return PROP_TAG(type, PROP_ID(tags->aulPropTag[0]));
}

FILETIME Utc(WORD year, WORD month, WORD day)
{
    SYSTEMTIME time{};
    time.wYear = year;
    time.wMonth = month;
    time.wDay = day;
    FILETIME moment{};
    SystemTimeToFileTime(&time, &moment);
    return moment;
}

/// Restricts the table to one week of many, and gives how many rows that leaves.
ULONG RestrictToWeek(CRun& run, ULONG startTag)
{
    SPropValue from{};
    from.ulPropTag = startTag;
    from.Value.ft = Utc(2027, 5, 3);
    SPropValue to{};
    to.ulPropTag = startTag;
    to.Value.ft = Utc(2027, 5, 10);
    SRestriction parts[2]{};
    parts[0].rt = RES_PROPERTY;
    parts[0].res.resProperty = {RELOP_GE, startTag, &from};
    parts[1].rt = RES_PROPERTY;
    parts[1].res.resProperty = {RELOP_LT, startTag, &to};
    SRestriction both{};
    both.rt = RES_AND;
    both.res.resAnd = {2, parts};
    Check(run.table->Restrict(&both, 0), "Restrict");
    return run.Count();
}

void Clear(CRun& run)
{
    Check(run.table->Restrict(nullptr, 0), "Restrict");
    run.Count();
}

std::uint32_t ReadRows(CRun& run)
{
    CTags columns{
        PR_INSTANCE_KEY, PR_ENTRYID, PR_PARENT_ENTRYID, PR_OBJECT_TYPE, PR_MESSAGE_CLASS_W};
    Check(run.table->SetColumns(columns, 0), "SetColumns");
    std::uint32_t seen = 0;
    for (;;)
    {
        CRows rows;
        Check(run.table->QueryRows(1000, 0, rows.Put()), "QueryRows");
        if (rows.Count() == 0)
        {
            return seen;
        }
        seen += rows.Count();
    }
}

void ReadMessages(CRun& run, std::uint32_t count, std::uint32_t step, ULONG startTag)
{
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const MessageRef message = run.OpenMessage(kSampleFirstMessage + std::uint64_t{i} * step);
        CTags tags{
            PR_SUBJECT_W, PR_BODY_W, PR_MESSAGE_CLASS_W, PR_LAST_MODIFICATION_TIME, startTag};
        CHeld<SPropValue> values;
        ULONG got = 0;
        Check(message->GetProps(tags, MAPI_UNICODE, &got, values.Put()), "GetProps");
        TableRef recipients;
        Check(message->GetRecipientTable(MAPI_UNICODE, recipients.PutAs<::IMAPITable>()),
              "GetRecipientTable");
        CRows rows;
        Check(recipients->QueryRows(100, 0, rows.Put()), "QueryRows");
    }
}

void SaveOne(CRun& run, std::uint32_t number)
{
    const MessageRef message = run.OpenMessage(kSampleFirstMessage);
    std::wstring subject = L"Saved " + std::to_wstring(number);
    SPropValue value{};
    value.ulPropTag = PR_SUBJECT_W;
    value.Value.lpszW = subject.data();
    Check(message->SetProps(1, &value, nullptr), "SetProps");
    Check(message->SaveChanges(0), "SaveChanges");
}

void DeleteSome(CRun& run, std::uint32_t first, std::uint32_t count)
{
    std::vector<std::string> ids;
    std::vector<SBinary> entries;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        ids.push_back(Identifier(MAPI_MESSAGE, kSampleFirstMessage + first + i));
    }
    for (std::string& id : ids)
    {
        entries.push_back({static_cast<ULONG>(id.size()), reinterpret_cast<BYTE*>(id.data())});
    }
    ENTRYLIST list{static_cast<ULONG>(entries.size()), entries.data()};
    Check(run.folder->DeleteMessages(&list, 0, nullptr, 0), "DeleteMessages");
}

void MeasureTable(CRun& run, std::uint32_t messages, std::vector<StoreFigure>& figures)
{
    ULONG startTag = 0;
    {
        const MessageRef first = run.OpenMessage(kSampleFirstMessage);
        startTag = NamedTag(first.Get(), 0x820D, PT_SYSTIME);
    }
    const SIZE_T before = Memory().WorkingSetSize;
    ULONG rows = 0;
    const double restricted = MedianSecondsOf([&] { rows = RestrictToWeek(run, startTag); });
    const SIZE_T after = Memory().WorkingSetSize;
    figures.push_back({"rows of a week", static_cast<double>(rows), "rows"});
    figures.push_back({"restrict to a week and count", restricted * 1e3, "ms"});
    figures.push_back(
        {"memory by the restriction", after > before ? Mebibytes(after - before) : 0.0, "MiB"});
    figures.push_back({"restriction cleared", MedianSecondsOf([&] { Clear(run); }) * 1e3, "ms"});
    SizedSSortOrderSet(1, order) = {1, 0, 0, {{PR_SUBJECT_W, TABLE_SORT_ASCEND}}};
    figures.push_back({"sort by subject",
                       SecondsOf([&] {
                           Check(run.table->SortTable(reinterpret_cast<SSortOrderSet*>(&order), 0),
                                 "SortTable");
                           run.Count();
                       }) * 1e3,
                       "ms"});
    std::uint32_t seen = 0;
    const double read = SecondsOf([&] { seen = ReadRows(run); });
    figures.push_back({"rows of five columns read", seen / read, "/s"});
    const std::uint32_t opened = std::min(messages, kMostOpened);
    const double open = SecondsOf([&] { ReadMessages(run, opened, messages / opened, startTag); });
    figures.push_back({"messages opened and read", opened / open, "/s"});
}

void MeasureChanges(CRun& run,
                    const std::wstring& folder,
                    std::uint32_t messages,
                    std::vector<StoreFigure>& figures)
{
    // Another process has written the document: a thousand messages are not what they were.
    SampleShape shape;
    shape.messages = messages;
    shape.days = kDays;
    shape.attendees = 2;
    shape.revised = kChanged;
    shape.revision = 1;
    WriteFileText(folder + L"\\store.json", SampleStoreText(shape));
    CCountingSink sink;
    mapi64::Connection connection = 0;
    Check(run.table->Advise(fnevTableModified, &sink, &connection), "Advise");
    const double refreshed = SecondsOf([&] { Check(MapiStoreRefresh(), "MapiStoreRefresh"); });
    const double told = sink.WaitFor(kChanged);
    Check(run.table->Unadvise(connection), "Unadvise");
    figures.push_back({"1,000 changes on the disk taken in", refreshed * 1e3, "ms"});
    figures.push_back({"notifications of them", told > 0 ? kChanged / told : 0.0, "/s"});
    std::uint32_t number = 0;
    figures.push_back(
        {"one change saved", MedianSecondsOf([&] { SaveOne(run, ++number); }) * 1e3, "ms"});
    figures.push_back(
        {"one message deleted", SecondsOf([&] { DeleteSome(run, 10, 1); }) * 1e3, "ms"});
    figures.push_back({"500 messages deleted in one call",
                       SecondsOf([&] { DeleteSome(run, 20, 500); }) * 1e3,
                       "ms"});
}

} // namespace

std::vector<StoreFigure> MeasureStore(const std::wstring& folder, std::uint32_t messages)
try
{
    const std::wstring path = folder + L"\\store.json";
    std::vector<StoreFigure> figures;
    {
        SampleShape shape;
        shape.messages = messages;
        shape.days = kDays;
        shape.attendees = 2;
        const std::string text = SampleStoreText(shape);
        figures.push_back({"document", Mebibytes(text.size()), "MiB"});
        WriteFileText(path, text);
        figures.push_back(
            {"floor: reading the file", MedianSecondsOf([&] { ReadFileText(path); }) * 1e3, "ms"});
    }
    CRun run(folder);
    const SIZE_T before = Memory().WorkingSetSize;
    const double cpuBefore = CpuSeconds();
    double opened = SecondsOf([&] {
        run.Open();
        run.Count();
    });
    figures.push_back({"open: logon to the first row count", opened * 1e3, "ms"});
    figures.push_back({"open: processor time", (CpuSeconds() - cpuBefore) * 1e3, "ms"});
    figures.push_back({"open: memory kept", Mebibytes(Memory().WorkingSetSize - before), "MiB"});
    figures.push_back({"open: memory at most", Mebibytes(Memory().PeakWorkingSetSize), "MiB"});
    MeasureTable(run, messages, figures);
    MeasureChanges(run, folder, messages, figures);
    run.Close();
    return figures;
}
catch (const CallFailed&)
{
    return {};
}
