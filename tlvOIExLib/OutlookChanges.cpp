// COutlookCtrl: what a changed or deleted row of a calendar means to the client.

#include "AppointmentTrace.h"
#include "AppointmentXml.h"
#include "HexText.h"
#include "MapiDataStore.h"
#include "MeetingCompare.h"
#include "NarrowText.h"
#include "OutlookCtrl.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

/// The row now stands for another message: the record of the old one is reported as deleted, by a
/// task of its own behind the ones that wait already.
void QueueDelete(IMAPIFolder* folder, const WString& instanceHex)
{
    const CWorkThreadUse workThread;
    if (!workThread)
    {
        return;
    }
    WorkTask task;
    task.eTaskType = TaskType::DeleteAppt;
    task.Param1 = reinterpret_cast<std::uint64_t>(folder);
    task.Param3 = TaskText(instanceHex);
    workThread->AddTableWork(task);
}

} // namespace

ULONG COutlookCtrl::GetMsgInfoByTableSink(IMAPIFolder* folder,
                                          const WString& entryHex,
                                          const WString& instanceHex,
                                          WString& xml)
{
    constexpr const char* kFunction = "COutlookCtrl::GetMsgInfoByTableSink";
    SEND_TRACE(2, kFunction, "GetMsgInfoByTableSink");
    if (m_hrInit != 0)
    {
        return 1;
    }
    MeetingInfo fresh;
    fresh.itemRef.entryId = BytesOfHexText(entryHex);
    fresh.itemRef.instanceKey = BytesOfHexText(instanceHex);
    if (m_bNeedRealEntryID != 0)
    {
        ResolveEntryId(folder, fresh.itemRef);
    }
    const WString key = HexTextOf(fresh.itemRef.entryId);
    MeetingInfo held;
    if (MapiDataStore().GetAppointment(key, held))
    {
        // Out of the way, so that message and exceptions are read afresh.
        MapiDataStore().RemoveAppointment(key);
        MapiDataStore().RemoveSeries(key);
    }
    else if (MapiDataStore().FindAppointmentByInstance(instanceHex, held))
    {
        QueueDelete(folder, instanceHex);
        held.attendees.clear();
    }

    const SharedMeeting read = GetAppointmentInfo(folder, std::move(fresh));
    if (read && !IsSameMeeting(held, *read))
    {
        xml = BuildAppointmentXml(*read);
        return 1;
    }
    if (!held.strPropertyFromDeskTools.empty() && held.isRecurring != 0)
    {
        // A changed exception leaves the series itself as it was, and a failed read tells nothing.
        SEND_TRACE(0, kFunction, "Notify modifications for DT Recurrence meeting.");
        xml = BuildAppointmentXml(held);
        return 1;
    }
    xml = BuildAppointmentXml(MeetingInfo());
    return 0;
}

ULONG COutlookCtrl::DeleteMsgInfoByTableSink(const WString& instanceHex, WString& xml)
{
    constexpr const char* kFunction = "COutlookCtrl::DeleteMsgInfoByTableSink";
    SEND_TRACE(3, kFunction, "instanceID[%s]", NarrowText(instanceHex).c_str());
    MeetingInfo meeting;
    if (!MapiDataStore().TakeAppointmentByInstance(instanceHex, meeting))
    {
        return 0;
    }
    MapiDataStore().RemoveSeries(HexTextOf(meeting.itemRef.entryId));
    SEND_TRACE(3, kFunction, "%s", AppointmentFacts(meeting).c_str());
    xml = BuildAppointmentXml(meeting);
    return 1;
}
