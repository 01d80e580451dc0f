#include "MapiClientEvents.h"

#include <algorithm>
#include <iterator>

#include "dtOIEx64_i.h"

namespace
{

constexpr LCID kUserDefaultLocale = 1024;

VARIANTARG TextArgument(BSTR text) noexcept
{
    VARIANTARG argument{};
    argument.vt = VT_BSTR;
    argument.bstrVal = text;
    return argument;
}

VARIANTARG UnsignedArgument(ULONG number) noexcept
{
    VARIANTARG argument{};
    argument.vt = VT_UI4;
    argument.ulVal = number;
    return argument;
}

VARIANTARG SignedArgument(LONG number) noexcept
{
    VARIANTARG argument{};
    argument.vt = VT_I4;
    argument.lVal = number;
    return argument;
}

} // namespace

CProxy_IMapiDtClientEvents::CProxy_IMapiDtClientEvents(
    IConnectionPointContainer& container) noexcept
    : m_point(container, DIID__IMapiDtClientEvents)
{
}

/// Calls every sink. `arguments` come last first, and borrow their texts.
template <std::size_t Count>
void CProxy_IMapiDtClientEvents::Fire(DISPID id, const VARIANTARG (&arguments)[Count])
{
    for (std::size_t slot = 0; slot < m_point.SlotCount(); slot++)
    {
        const CComRef<IDispatch> sink = m_point.SinkAt(slot);
        if (!sink)
        {
            continue;
        }
        VARIANTARG copies[Count]; // a sink in this process could write into them
        std::copy(std::begin(arguments), std::end(arguments), std::begin(copies));
        DISPPARAMS parameters{copies, nullptr, static_cast<UINT>(Count), 0};
        VARIANT result;
        VariantInit(&result);
        sink->Invoke(id,
                     IID_NULL,
                     kUserDefaultLocale,
                     DISPATCH_METHOD,
                     &parameters,
                     &result,
                     nullptr,
                     nullptr);
        VariantClear(&result);
    }
}

void CProxy_IMapiDtClientEvents::FireText(DISPID id, BSTR text)
{
    Fire(id, {TextArgument(text)});
}

void CProxy_IMapiDtClientEvents::FireNumberAndText(DISPID id, ULONG number, BSTR text)
{
    Fire(id, {TextArgument(text), UnsignedArgument(number)});
}

void CProxy_IMapiDtClientEvents::Fire_OnCalendarUpdated(ULONG type, BSTR appointmentInfo)
{
    FireNumberAndText(1, type, appointmentInfo);
}

void CProxy_IMapiDtClientEvents::Fire_OnInitialize(LONG result)
{
    Fire(2, {SignedArgument(result)});
}

void CProxy_IMapiDtClientEvents::Fire_OnListAppointment(ULONG sequence, BSTR appointments)
{
    FireNumberAndText(3, sequence, appointments);
}

void CProxy_IMapiDtClientEvents::Fire_OnListRecurrentInstance(ULONG sequence, BSTR appointments)
{
    FireNumberAndText(4, sequence, appointments);
}

void CProxy_IMapiDtClientEvents::Fire_OnGetAppointment(ULONG sequence, BSTR appointment)
{
    FireNumberAndText(5, sequence, appointment);
}

void CProxy_IMapiDtClientEvents::Fire_OnGetRecentEmails(ULONG sequence, BSTR emails)
{
    FireNumberAndText(6, sequence, emails);
}

void CProxy_IMapiDtClientEvents::Fire_OnResolveName(BSTR resolvedInfo)
{
    FireText(7, resolvedInfo);
}

void CProxy_IMapiDtClientEvents::Fire_OnGetContactDetail(ULONG sequence, BSTR contactInfo)
{
    FireNumberAndText(8, sequence, contactInfo);
}

void CProxy_IMapiDtClientEvents::Fire_OnGetPersonalContact(BSTR contact)
{
    FireText(9, contact);
}

void CProxy_IMapiDtClientEvents::Fire_OnContactUpdated(ULONG type, BSTR contacts)
{
    FireNumberAndText(10, type, contacts);
}

void CProxy_IMapiDtClientEvents::Fire_OnSearchForContacts(BSTR searchResult)
{
    FireText(11, searchResult);
}

void CProxy_IMapiDtClientEvents::Fire_OnResolveByUri(BSTR resolveString)
{
    FireText(12, resolveString);
}

void CProxy_IMapiDtClientEvents::Fire_OnResolveByPhoneNumber(BSTR resolveString)
{
    FireText(13, resolveString);
}

void CProxy_IMapiDtClientEvents::Fire_OnTrace(BSTR resolveString)
{
    FireText(14, resolveString);
}
