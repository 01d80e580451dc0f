// COutlookCtrl: recent mail and sending.

#include "OutlookCtrl.h"
#include "Trace.h"

ULONG COutlookCtrl::SendMail(WString, WString, WString, ULONG)
{
    constexpr const char* kFunction = "COutlookCtrl::SendMail";
    SEND_TRACE(3, kFunction, "SendMail");
    if (m_hrInit != 0)
    {
        SEND_TRACE(3,
                   kFunction,
                   "CMyMAPICtrl::SendMail - hStatus [0x%x]",
                   static_cast<unsigned>(m_hrInit));
    }
    return 0;
}

ULONG COutlookCtrl::ListRecentEmail(ULONG, const WString&, ULONG, std::vector<MailRecord>&)
{
    SEND_TRACE(3, "COutlookCtrl::ListRecentEmail", "ListRecentEmail");
    return 0;
}
