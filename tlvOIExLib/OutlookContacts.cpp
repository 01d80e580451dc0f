// COutlookCtrl: contacts and the resolution of names.

#include "MapiDataStore.h"
#include "OutlookCtrl.h"
#include "Trace.h"

ULONG COutlookCtrl::GetSMTPFromDispName(const WString&, WString&)
{
    if (m_hrInit != 0)
    {
        SEND_TRACE(3,
                   "COutlookCtrl::GetSMTPFromDispName",
                   "CMyMAPICtrl::GetSMTPFromDispName - hStatus [0x%x]",
                   static_cast<unsigned>(m_hrInit));
    }
    return 0;
}

ULONG COutlookCtrl::GetPersonalContact(std::vector<ContactRecord>&)
{
    return 0;
}

ULONG COutlookCtrl::GetContactDetail(const WString& key, ContactRecord& contact)
{
    // The deleted message can no longer be read: what was held is all that can be told.
    return MapiDataStore().TakeContactByKey(key, contact) ? 1 : 0;
}

ULONG COutlookCtrl::GetContactInfoByTableSink(IMAPIFolder*,
                                              const WString&,
                                              const WString&,
                                              ContactRecord&)
{
    return 0;
}

ULONG COutlookCtrl::SearchContacts(const WString&, std::vector<ContactRecord>&, ULONG)
{
    return 0;
}

ULONG COutlookCtrl::ResolveContacts(const WString&, std::vector<ContactRecord>&, ULONG)
{
    return 0;
}
