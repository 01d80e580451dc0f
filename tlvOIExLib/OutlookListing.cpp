// COutlookCtrl: the appointments of a window.

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>

#include "AppointmentTags.h"
#include "AppointmentXml.h"
#include "MapiDataStore.h"
#include "MapiMemory.h"
#include "MapiUtil.h"
#include "Minutes1601.h"
#include "OutlookCtrl.h"
#include "PlatformDates.h"
#include "Trace.h"
#include "ZoneTime.h"

namespace
{

/// A folder stops yielding rows once it has given more than this.
constexpr ULONG kMostRecordsOfFolder = 2000;

// The restriction compares moments as stored, which for series are wide. These margins let every row
// through that could touch the window; the exact test comes after the read.
constexpr std::uint32_t kMarginBeforeMinutes = 720;
constexpr std::uint32_t kMarginAfterMinutes = 780;

// What a client recognises a failed listing by.
constexpr WStringView kListingErrorName = L"####DTOIEX_OUTLOOK_MEETING_ERROR####";
constexpr std::uint32_t kListingErrorStatus = 5;

constexpr unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

FILETIME UtcFromMachineTime(const FILETIME& local)
{
    TIME_ZONE_INFORMATION zone{};
    if (GetTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID)
    {
        zone = {};
    }
    FILETIME utc{};
    LocalToUtcFileTime(local, utc, zone);
    return utc;
}

/// `minutes` is added in unsigned arithmetic; seconds are dropped on the way.
FILETIME MovedByMinutes(const FILETIME& time, std::uint32_t minutes)
{
    SYSTEMTIME calendar{};
    FILETIME moved{};
    if (dates::FileTimeToSystemTime(time, calendar))
    {
        const SYSTEMTIME shifted = SystemTimeFromMinutes(MinutesFromSystemTime(calendar) + minutes);
        (void)dates::SystemTimeToFileTime(shifted, moved);
    }
    return moved;
}

/// The restriction of one listing, with all its nodes.
///
/// Shape: (overlaps by clip range AND recurring) OR (overlaps by times AND not recurring), where
///        overlaps is NOT(begins after the window OR ends before it).
/// Owner: the nodes point at each other, so the object stays where it was made.
class CWindowRestriction final
{
public:
    CWindowRestriction(const FILETIME& lower, const FILETIME& upper) noexcept
    {
        BuildBranch(m_series, m_seriesParts, {g_ulStartTagEx, g_ulEndTagEx}, lower, upper, true);
        BuildBranch(m_single,
                    m_singleParts,
                    {g_ulAppointmentStartTag, g_ulAppointmentEndTag},
                    lower,
                    upper,
                    false);
        m_branches[0] = m_series;
        m_branches[1] = m_single;
        m_root.rt = RES_OR;
        m_root.res.resOr.cRes = 2;
        m_root.res.resOr.lpRes = m_branches;
    }
    CWindowRestriction(const CWindowRestriction&) = delete;
    CWindowRestriction& operator=(const CWindowRestriction&) = delete;
    ~CWindowRestriction() = default;

    [[nodiscard]] SRestriction* Get() noexcept { return &m_root; }

private:
    struct Tags
    {
        ULONG start;
        ULONG end;
    };
    struct Parts
    {
        SPropValue values[3];
        SRestriction outside[2];
        SRestriction outsideEither;
        SRestriction both[2];
    };

    static void SetProperty(SRestriction& node,
                            ULONG relation,
                            ULONG tag,
                            SPropValue& value) noexcept
    {
        value.ulPropTag = tag;
        node.rt = RES_PROPERTY;
        node.res.resProperty.relop = relation;
        node.res.resProperty.ulPropTag = tag;
        node.res.resProperty.lpProp = &value;
    }

    static void BuildBranch(SRestriction& node,
                            Parts& parts,
                            Tags tags,
                            const FILETIME& lower,
                            const FILETIME& upper,
                            bool isRecurring) noexcept
    {
        parts.values[0].Value.ft = upper;
        SetProperty(parts.outside[0], RELOP_GT, tags.start, parts.values[0]);
        parts.values[1].Value.ft = lower;
        SetProperty(parts.outside[1], RELOP_LT, tags.end, parts.values[1]);
        parts.outsideEither.rt = RES_OR;
        parts.outsideEither.res.resOr.cRes = 2;
        parts.outsideEither.res.resOr.lpRes = parts.outside;
        parts.both[0].rt = RES_NOT;
        parts.both[0].res.resNot.ulReserved = 0;
        parts.both[0].res.resNot.lpRes = &parts.outsideEither;
        parts.values[2].Value.b = isRecurring ? 1 : 0;
        SetProperty(parts.both[1], RELOP_EQ, g_ulRecurringTag, parts.values[2]);
        node.rt = RES_AND;
        node.res.resAnd.cRes = 2;
        node.res.resAnd.lpRes = parts.both;
    }

    Parts m_seriesParts{};
    Parts m_singleParts{};
    SRestriction m_series{};
    SRestriction m_single{};
    SRestriction m_branches[2]{};
    SRestriction m_root{};
};

/// Takes the restriction off the table again, for the sake of the subscription on it.
void ClearRestriction(IMAPITable* table)
{
    constexpr const char* kFunction = "COutlookCtrl::ListAppointment";
    const HRESULT status = table->Restrict(nullptr, TBL_BATCH);
    if (SUCCEEDED(status))
    {
        return;
    }
    CMapiBuffer<MAPIERROR> error;
    if (table->GetLastError(status, 0, error.Put()) == S_OK && error)
    {
        // Without MAPI_UNICODE in the flags the texts are 8-bit, whatever the declaration says.
        const auto* const text = reinterpret_cast<const char*>(error->lpszError);
        const auto* const component = reinterpret_cast<const char*>(error->lpszComponent);
        SEND_TRACE(0,
                   kFunction,
                   "GetLastError[%s] szComponent[%s]",
                   text != nullptr ? text : "",
                   component != nullptr ? component : "");
    }
    SEND_TRACE(1, kFunction, "lpTable->Restrict [%8x]", Code(status));
}

/// Whether a single appointment touches the window with more than an edge.
bool Overlaps(const MeetingInfo& meeting, const FILETIME& start, const FILETIME& end)
{
    FILETIME meetingStart{};
    FILETIME meetingEnd{};
    (void)dates::SystemTimeToFileTime(meeting.start, meetingStart);
    (void)dates::SystemTimeToFileTime(meeting.end, meetingEnd);
    return dates::CompareFileTime(meetingStart, end) < 0 &&
           dates::CompareFileTime(meetingEnd, start) > 0;
}

/// An instance whose own message lost a body shows the series' body.
void InheritUnreadBodies(const MeetingInfo& master, std::span<MeetingInfo> instances)
{
    for (MeetingInfo& instance : instances)
    {
        if (instance.strDesc == kBodyNotRead)
        {
            instance.strDesc = master.strDesc;
        }
        if (instance.strXaltDesc == kBodyNotRead)
        {
            instance.strXaltDesc = master.strXaltDesc;
        }
    }
}

} // namespace

ULONG COutlookCtrl::ListAppointment(FILETIME start, FILETIME end, CEventText& xml)
{
    constexpr const char* kFunction = "COutlookCtrl::ListAppointment";
    SEND_TRACE(3, kFunction, "ListAppointment");
    if (m_hrInit != 0)
    {
        SEND_TRACE(2,
                   kFunction,
                   "CMyMAPICtrl::ListAppointment - hStatus [0x%x]",
                   static_cast<unsigned>(m_hrInit));
        return 1;
    }
    const FILETIME utcStart = UtcFromMachineTime(start);
    const FILETIME utcEnd = UtcFromMachineTime(end);
    std::vector<SharedMeeting> list;
    ULONG count = 0;
    for (const MAPI_TBLSinkInfo& sink : m_CalendarSinks)
    {
        if (!sink.table || !sink.folder)
        {
            SEND_TRACE(1, kFunction, "MAPI_TBLSinkInfo NULL pointer");
            continue;
        }
        count +=
            ListAppointmentFromFolder(sink.folder.Get(), sink.table.Get(), list, utcStart, utcEnd);
        ClearRestriction(sink.table.Get());
    }
    SEND_TRACE(3,
               kFunction,
               "CMyMAPICtrl::ListAppointment - Got [%d] appointment(s)",
               static_cast<int>(count));
    xml = BuildAppointmentsEvent(list);
    return 0;
}

ULONG COutlookCtrl::ListAppointmentFromFolder(IMAPIFolder* folder,
                                              IMAPITable* table,
                                              std::vector<SharedMeeting>& list,
                                              const FILETIME& start,
                                              const FILETIME& end)
{
    constexpr const char* kFunction = "COutlookCtrl::ListAppointmentFromFolder";
    SEND_TRACE(2, kFunction, "ListAppointmentFromFolder");
    ResolveAppointmentTags(folder, table);

    LONG sought = 0;
    const HRESULT status = table->SeekRow(BOOKMARK_BEGINNING, 0, &sought);
    if (FAILED(status))
    {
        SEND_TRACE(3,
                   kFunction,
                   "5. lpTable->SeekRow(BOOKMARK_BEGINNING, 0, &lRowsSought) [%8x]",
                   Code(status));
        // What earlier folders gave goes too: the client is to see the failure, not half a list.
        list.clear();
        MeetingInfo marker;
        marker.strName = kListingErrorName;
        marker.meetingStatus = kListingErrorStatus;
        list.push_back(std::make_shared<const MeetingInfo>(std::move(marker)));
        return 0;
    }
    const FILETIME lower = MovedByMinutes(start, 0U - kMarginBeforeMinutes);
    const FILETIME upper = MovedByMinutes(end, kMarginAfterMinutes);
    if (g_ulStartTagEx == 0 || g_ulEndTagEx == 0)
    {
        SEND_TRACE(3,
                   kFunction,
                   "g_ulStartTagEx [%8x] g_ulEndTagEx[%8x]",
                   static_cast<unsigned>(g_ulStartTagEx),
                   static_cast<unsigned>(g_ulEndTagEx));
        return 0;
    }
    CWindowRestriction restriction(lower, upper);
    std::vector<MapiItemRef> refs;
    RestrictAppointmentOnTable(table, restriction.Get(), refs);

    ULONG count = 0;
    for (MapiItemRef& reference : refs)
    {
        if (MapiDataStore().IsReleasing())
        {
            SEND_TRACE(2, kFunction, "quit this task for release");
            break;
        }
        count += ListReference(folder, std::move(reference), list, start, end);
        if (count > kMostRecordsOfFolder)
        {
            break;
        }
    }
    return count;
}

ULONG COutlookCtrl::ListReference(IMAPIFolder* folder,
                                  MapiItemRef reference,
                                  std::vector<SharedMeeting>& list,
                                  const FILETIME& start,
                                  const FILETIME& end)
{
    constexpr const char* kFunction = "COutlookCtrl::ListAppointmentFromFolder";
    MeetingInfo wanted;
    wanted.itemRef = std::move(reference);
    wanted.itemRef.profileName = m_strProfile;
    wanted.itemRef.storeName = m_strStoreName;
    wanted.itemRef.storeEntryId = m_StoreEid;
    if (m_bNeedRealEntryID != 0)
    {
        ResolveEntryId(folder, wanted.itemRef);
    }
    SharedMeeting meeting = GetAppointmentInfo(folder, std::move(wanted));
    if (!meeting)
    {
        return 0;
    }
    if (meeting->isRecurring == 0)
    {
        SEND_TRACE(3, kFunction, "check simple appointment");
        if (!Overlaps(*meeting, start, end))
        {
            return 0;
        }
        list.push_back(std::move(meeting));
        return 1;
    }
    SEND_TRACE(3, kFunction, "check recurrent appointment");
    std::vector<MeetingInfo> instances;
    if (!GetRecItem(*meeting, start, end, instances))
    {
        return 0;
    }
    InheritUnreadBodies(*meeting, instances);
    const auto added = static_cast<ULONG>(instances.size());
    std::transform(std::make_move_iterator(instances.begin()),
                   std::make_move_iterator(instances.end()),
                   std::back_inserter(list),
                   [](MeetingInfo&& instance) {
                       return std::make_shared<const MeetingInfo>(std::move(instance));
                   });
    return added;
}

ULONG COutlookCtrl::ListRecurrentInstance(const WString& entryId,
                                          const FILETIME* start,
                                          const FILETIME* end,
                                          WString& xml)
{
    if (m_hrInit != 0 || start == nullptr || end == nullptr)
    {
        return 0;
    }
    MeetingInfo master;
    if (!MapiDataStore().GetAppointment(entryId, master))
    {
        return 0;
    }
    std::vector<MeetingInfo> list;
    GetRecItem(master, UtcFromMachineTime(*start), UtcFromMachineTime(*end), list);
    xml = BuildAppointmentsXml(list);
    return 1;
}
