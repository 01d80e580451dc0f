// COutlookCtrl: the calendar, as long as there is no road to it. Refused by the status as ever.

#include "OutlookCtrl.h"
#include "Trace.h"

ULONG COutlookCtrl::ListAppointment(FILETIME, FILETIME, WString&)
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
    return 0;
}

ULONG
COutlookCtrl::ListRecurrentInstance(const WString&, const FILETIME*, const FILETIME*, WString&)
{
    return 0;
}

ULONG COutlookCtrl::GetAppointment(const WString&, WString&)
{
    return 0;
}

ULONG COutlookCtrl::GetMsgInfoByTableSink(IMAPIFolder*, const WString&, const WString&, WString&)
{
    SEND_TRACE(2, "COutlookCtrl::GetMsgInfoByTableSink", "GetMsgInfoByTableSink");
    return m_hrInit != 0 ? 1 : 0;
}

ULONG COutlookCtrl::DeleteMsgInfoByTableSink(const WString&, WString&)
{
    return 0;
}
