#include "NotesCtrl.h"

namespace
{

constexpr ULONG kNotProvided = static_cast<ULONG>(E_FAIL);

} // namespace

ULONG CNotesCtrl::SendMail(WString, WString, WString, ULONG)
{
    return 0;
}

ULONG CNotesCtrl::GetSMTPFromDispName(const WString&, WString&)
{
    return 0;
}

ULONG CNotesCtrl::ListAppointment(FILETIME, FILETIME, CEventText&)
{
    return kNotProvided;
}

ULONG CNotesCtrl::ListRecurrentInstance(const WString&, const FILETIME*, const FILETIME*, WString&)
{
    return 0;
}

ULONG CNotesCtrl::ListRecentEmail(ULONG, const WString&, ULONG, std::vector<MailRecord>&)
{
    return kNotProvided;
}

ULONG CNotesCtrl::GetAppointment(const WString&, WString&)
{
    return 0;
}

ULONG CNotesCtrl::GetPersonalContact(std::vector<ContactRecord>&)
{
    return kNotProvided;
}

ULONG CNotesCtrl::GetContactDetail(const WString&, ContactRecord&)
{
    return 0;
}

ULONG CNotesCtrl::GetCurProfileInfo(BSTR*)
{
    return 0;
}
