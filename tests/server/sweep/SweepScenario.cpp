#include "SweepScenario.h"

#include <windows.h>

#include <oleauto.h>

#include "AppointmentTags.h"
#include "MapiDataStore.h"
#include "MapiHeaders.h"
#include "OutlookCtrl.h"
#include "PlatformDates.h"

namespace
{

/// The controller, with the subscribed folders in reach.
class CSweepOutlook final : public COutlookCtrl
{
public:
    [[nodiscard]] IMAPIFolder* FirstFolder() const
    {
        return m_CalendarSinks.empty() ? nullptr : m_CalendarSinks.front().folder.Get();
    }
};

FILETIME FirstOf(WORD year, WORD month)
{
    SYSTEMTIME day{};
    day.wYear = year;
    day.wMonth = month;
    day.wDay = 1;
    FILETIME time{};
    (void)dates::SystemTimeToFileTime(day, time);
    return time;
}

bool IsWhole(const WString& document, WStringView name)
{
    if (document.empty())
    {
        return true;
    }
    const WString open = L"<" + WString(name) + L">";
    const WString close = L"</" + WString(name) + L">";
    return document.starts_with(open) && document.ends_with(close);
}

std::size_t CountOf(const WString& document, WStringView text)
{
    std::size_t count = 0;
    for (std::size_t at = document.find(text); at != WString::npos;
         at = document.find(text, at + text.size()))
    {
        count++;
    }
    return count;
}

WString ElementOf(const WString& document, WStringView name)
{
    const WString open = L"<" + WString(name) + L">";
    const std::size_t begin = document.find(open);
    const std::size_t end = document.find(L"</" + WString(name) + L">", begin);
    return begin == WString::npos || end == WString::npos
               ? WString()
               : document.substr(begin + open.size(), end - begin - open.size());
}

/// The tags of named properties are kept for the process: each run looks them up anew.
void ForgetTags()
{
    g_ulStartTagEx = 0;
    g_ulEndTagEx = 0;
    g_ulRecurringTag = 0;
    g_ulAppointmentStartTag = 0;
    g_ulAppointmentEndTag = 0;
}

} // namespace

SweepResult RunSweepScenario()
{
    ForgetTags();
    MapiDataStore().ClearDataStore();
    MapiDataStore().SetReleasing(0);

    SweepResult result;
    CSweepOutlook outlook;
    result.init = outlook.Init(1);
    outlook.Init(2);

    CEventText listed;
    result.listing = outlook.ListAppointment(FirstOf(2026, 11), FirstOf(2026, 12), listed);
    const WString listing(listed.View());
    result.isListingWhole = IsWhole(listing, L"appointments");
    result.appointments = CountOf(listing, L"<appointment>");

    const WString entry = ElementOf(listing, L"entryID");
    const WString instance = ElementOf(listing, L"instanceEntryID");
    WString change;
    outlook.GetMsgInfoByTableSink(outlook.FirstFolder(), entry, instance, change);
    result.areChangesWhole = IsWhole(change, L"appointment");
    change.clear();
    outlook.DeleteMsgInfoByTableSink(instance, change);
    result.areChangesWhole = result.areChangesWhole && IsWhole(change, L"appointment");

    BSTR profile = nullptr;
    COutlookCtrl::ProfileInfoFromStore(&profile);
    result.isProfileWhole = profile != nullptr && IsWhole(profile, L"CurrentOLProfile");
    SysFreeString(profile);

    outlook.FreeLib();
    return result;
}
