// COutlookCtrl: one appointment, read or from the data store, and the instances of one series.

#include "AppointmentTrace.h"
#include "AppointmentXml.h"
#include "HexText.h"
#include "MapiDataStore.h"
#include "Minutes1601.h"
#include "NarrowText.h"
#include "OrdinalText.h"
#include "OutlookCtrl.h"
#include "PlatformDates.h"
#include "RecurrentRule.h"
#include "RegistryRecurrenceSettings.h"
#include "Trace.h"

namespace
{

/// Takes over what the changed instance says of itself beyond its times.
void ApplyException(const MeetingInfo& current, MeetingInfo& instance)
{
    constexpr const char* kFunction = "COutlookCtrl::GetRecItem";
    // An empty property of the changed instance counts as a change, and blanks the copy.
    if (current.strPropertyFromDeskTools.empty() ||
        !EqualIgnoringCase(current.strPropertyFromDeskTools, instance.strPropertyFromDeskTools))
    {
        instance.strPropertyFromDeskTools = current.strPropertyFromDeskTools;
        SEND_TRACE(2,
                   kFunction,
                   "DT property is modified [%s]",
                   NarrowText(instance.strPropertyFromDeskTools).c_str());
    }
    if (!EqualIgnoringCase(current.strDesc, instance.strDesc))
    {
        instance.strDesc = current.strDesc;
        SEND_TRACE(2, kFunction, "Meeting description is modified.");
    }
    if (!EqualIgnoringCase(current.strXaltDesc, instance.strXaltDesc))
    {
        instance.strXaltDesc = current.strXaltDesc;
    }
    if (!EqualIgnoringCase(current.m_strUCCapabilities, instance.m_strUCCapabilities))
    {
        instance.m_strUCCapabilities = current.m_strUCCapabilities;
    }
}

bool IsSameDay(const SYSTEMTIME& first, const SYSTEMTIME& second) noexcept
{
    return first.wYear == second.wYear && first.wMonth == second.wMonth &&
           first.wDay == second.wDay;
}

FILETIME FileTimeOf(const SYSTEMTIME& time) noexcept
{
    FILETIME moment{};
    (void)dates::SystemTimeToFileTime(time, moment);
    return moment;
}

/// Only the start counts, both ends of the window included.
bool StartsInWindow(const SYSTEMTIME& instanceStart,
                    const FILETIME& start,
                    const FILETIME& end) noexcept
{
    const FILETIME moment = FileTimeOf(instanceStart);
    return dates::CompareFileTime(start, moment) <= 0 && dates::CompareFileTime(end, moment) >= 0;
}

} // namespace

SharedMeeting COutlookCtrl::GetAppointmentInfo(IMAPIFolder* folder, MeetingInfo meeting)
{
    constexpr const char* kFunction = "COutlookCtrl::GetAppointmentInfo";
    SEND_TRACE(2, kFunction, "GetAppointmentInfo");
    const WString key = HexTextOf(meeting.itemRef.entryId);
    if (SharedMeeting known = MapiDataStore().FindAppointment(key))
    {
        SEND_TRACE(3, kFunction, "%s", AppointmentFacts(*known).c_str());
        return known;
    }
    if (folder == nullptr)
    {
        SEND_TRACE(2, kFunction, "lpFolder == NULL");
        return nullptr;
    }
    HRESULT status = S_OK;
    const CComRef<IMessage> message = OpenMessageInFolder(folder, meeting.itemRef.entryId, status);
    if (!message)
    {
        SEND_TRACE(3, kFunction, "Get app info error:hresult=%x", static_cast<unsigned>(status));
        return nullptr;
    }
    const ULONG result = ReadAppointmentFromMessage(message.Get(), meeting);
    SEND_TRACE(3,
               kFunction,
               "get again- %s instanceID=[%s] duration=[%d]",
               AppointmentFacts(meeting).c_str(),
               NarrowText(HexTextOf(meeting.itemRef.instanceKey)).c_str(),
               static_cast<int>(meeting.duration));
    if (result == 0)
    {
        return nullptr;
    }
    meeting.itemRef.storeEntryId = m_StoreEid;
    meeting.itemRef.storeName = m_strStoreName;
    meeting.itemRef.profileName = m_strProfile;
    SharedMeeting kept = std::make_shared<const MeetingInfo>(std::move(meeting));
    MapiDataStore().AddAppointment(key, kept);
    return kept;
}

ULONG COutlookCtrl::GetAppointmentInfoByKey(const WString& key, MeetingInfo& meeting)
{
    constexpr const char* kFunction = "COutlookCtrl::GetAppointmentInfo";
    SEND_TRACE(2, kFunction, "GetAppointmentInfo");
    const auto traceFacts = [&meeting] {
        SEND_TRACE(3,
                   kFunction,
                   "%s duration=[%d]",
                   AppointmentFacts(meeting).c_str(),
                   static_cast<int>(meeting.duration));
    };
    if (MapiDataStore().GetAppointment(key, meeting))
    {
        traceFacts();
        // Clients rely on it: an appointment that was listed is not answered again.
        return 0;
    }
    if (m_hrInit != 0)
    {
        SEND_TRACE(2,
                   kFunction,
                   "CMyMAPICtrl::ListAppointment - hStatus [0x%x]",
                   static_cast<unsigned>(m_hrInit));
        return 0;
    }
    meeting.itemRef.entryId = BytesOfHexText(key);
    const CComRef<IMessage> message = OpenMAPIMessage(meeting.itemRef.entryId);
    if (!message)
    {
        return 0;
    }
    const ULONG result = ReadAppointmentFromMessage(message.Get(), meeting);
    traceFacts();
    if (result != 0)
    {
        meeting.itemRef.storeEntryId = m_StoreEid;
        meeting.itemRef.storeName = m_strStoreName;
        MapiDataStore().AddAppointment(key, meeting);
    }
    return result;
}

ULONG COutlookCtrl::ReadAppointmentFromMessage(IMessage* message, MeetingInfo& meeting)
{
    const bool isRead = GetMAPIAppointmentInfo(message, meeting);
    meeting.start = meeting.firstTime;
    GetMAPIApptAttenddeeList(message, meeting.attendees);
    CheckAppointmentAttendees(meeting);
    return isRead ? 1 : 0;
}

ULONG COutlookCtrl::GetAppointment(const WString& entryId, WString& xml)
{
    MeetingInfo meeting;
    if (GetAppointmentInfoByKey(entryId, meeting) == 0)
    {
        return 0;
    }
    xml = BuildAppointmentXml(meeting);
    return 1;
}

bool COutlookCtrl::GetRecItem(const MeetingInfo& master,
                              const FILETIME& start,
                              const FILETIME& end,
                              std::vector<MeetingInfo>& list)
{
    constexpr const char* kFunction = "COutlookCtrl::GetRecItem";
    CRecurrentRule rule(&RegistryRecurrenceSettings());
    rule.SetInfo(static_cast<std::uint32_t>(master.recurrenceType),
                 BlockSize(master.recurrenceState),
                 master.recurrenceState.data(),
                 BlockSize(master.timeZone),
                 master.timeZone.data(),
                 master.firstTime,
                 start,
                 end,
                 master.strName,
                 master.location);
    std::uint32_t count = 0;
    InstanceList instances;
    if (!rule.ParseRule(count, instances))
    {
        return false;
    }
    const WString key = HexTextOf(master.itemRef.entryId);
    bool isAnyListed = false;
    for (const RecurInstance& found : instances)
    {
        if (!StartsInWindow(found.start, start, end))
        {
            continue;
        }
        SEND_TRACE(2,
                   kFunction,
                   "iter->subject=%s,startdate=%d-%d-%d",
                   NarrowText(MaskedText(found.subject)).c_str(),
                   found.start.wYear,
                   found.start.wMonth,
                   found.start.wDay);
        list.push_back(MakeInstance(master, key, found));
        isAnyListed = true;
    }
    return isAnyListed;
}

MeetingInfo COutlookCtrl::MakeInstance(const MeetingInfo& master,
                                       const WString& key,
                                       const RecurInstance& found)
{
    MeetingInfo current;
    const bool isFound = ReadException(master, key, found, current);

    MeetingInfo instance(master);
    if (isFound && IsSameDay(found.end, current.end))
    {
        ApplyException(current, instance);
    }
    instance.start = found.start;
    instance.end = found.end;
    instance.strName = found.subject;
    instance.location = found.location;
    instance.subKey = found.subKey;
    instance.duration = MinutesFromSystemTime(found.end) - MinutesFromSystemTime(found.start);
    if (found.meetingType == kMeetingStatusCancelled)
    {
        instance.meetingStatus = kMeetingStatusCancelled;
    }
    std::vector<AttendeeInfo> attendees;
    if (MapiDataStore().GetInstance(key, MinutesFromSystemTime(found.start), attendees) &&
        !attendees.empty())
    {
        instance.attendees = std::move(attendees);
    }
    CheckAppointmentAttendees(instance);
    return instance;
}

bool COutlookCtrl::ReadException(const MeetingInfo& master,
                                 const WString& key,
                                 const RecurInstance& found,
                                 MeetingInfo& current)
{
    const CComRef<IMessage> message = OpenMAPIMessage(master.itemRef.entryId);
    if (!message)
    {
        return false;
    }
    const bool isFound = GetExceptionAppointmentInfo(
        FileTimeOf(found.start), FileTimeOf(found.end), message.Get(), current);
    SEND_TRACE(2,
               "COutlookCtrl::GetRecItem",
               "bFound=%d, meetInfoCurrent.strName=%s,strDesc size=%d,strXaltDesc size=%d,"
               "strPropertyFromDeskTools size=%d,m_strUCCapabilities.size=%d",
               isFound ? 1 : 0,
               NarrowText(MaskedText(current.strName)).c_str(),
               static_cast<int>(current.strDesc.size()),
               static_cast<int>(current.strXaltDesc.size()),
               static_cast<int>(current.strPropertyFromDeskTools.size()),
               static_cast<int>(current.m_strUCCapabilities.size()));
    if (!MapiDataStore().HasSeries(key))
    {
        SeriesRecipients recipients;
        const bool isComplete = GetExceptionRecipients(message.Get(), recipients);
        // Kept also when there are none, so that the next instance does not look again; but a look that
        // failed and found nothing is left to it.
        if (isComplete || !recipients.empty())
        {
            MapiDataStore().SetSeries(key, std::move(recipients));
        }
    }
    return isFound;
}
