#include "CalendarTexts.h"

#include <string_view>

#include "DateTexts.h"

FILETIME MachineTimeOf(const std::string& utcText)
{
    const SYSTEMTIME utc = TimeOf(utcText);
    SYSTEMTIME local{};
    SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    FILETIME result{};
    SystemTimeToFileTime(&local, &result);
    return result;
}

std::vector<std::wstring> ElementValues(const WString& xml, const std::wstring& element)
{
    std::vector<std::wstring> values;
    const std::wstring open = L"<" + element + L">";
    const std::wstring close = L"</" + element + L">";
    constexpr std::wstring_view kCdata = L"<![CDATA[";
    for (std::size_t at = xml.find(open); at != WString::npos; at = xml.find(open, at + 1))
    {
        const std::size_t first = at + open.size();
        std::wstring value = xml.substr(first, xml.find(close, first) - first);
        if (value.starts_with(kCdata))
        {
            value = value.substr(kCdata.size(), value.size() - kCdata.size() - 3);
        }
        values.push_back(std::move(value));
    }
    return values;
}
