#include "MailXml.h"

#include <array>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <string>

#include "HexText.h"
#include "XmlText.h"

namespace
{

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;

WString Number(std::uint32_t value)
{
    // The documents print these two as signed.
    const std::string digits = std::to_string(static_cast<std::int32_t>(value));
    return {digits.begin(), digits.end()};
}

WString TimeText(const FILETIME& time)
{
    using namespace std::chrono;
    const std::uint64_t ticks =
        (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    if (ticks > static_cast<std::uint64_t>(INT64_MAX))
    {
        // Such a time has no calendar date, and an empty one is printed as zeros.
        return WTEXT("00/00/0000 00:00:00");
    }
    const Ticks since1601(static_cast<std::int64_t>(ticks));
    const days wholeDays = floor<days>(since1601);
    const year_month_day date(sys_days(year(1601) / 1 / 1) + wholeDays);
    const hh_mm_ss clock(floor<seconds>(since1601 - wholeDays));
    std::array<char, 48> text{};
    std::snprintf(text.data(),
                  text.size(),
                  "%02u/%02u/%04d %02d:%02d:%02d",
                  static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()),
                  static_cast<int>(date.year()),
                  static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    const std::string_view narrow(text.data());
    return {narrow.begin(), narrow.end()};
}

} // namespace

WString BuildMailInfoXml(const MailRecord& mail)
{
    WString xml = WTEXT("<MailInfo><Subject><![CDATA[");
    xml += EscapeXmlText(mail.subject);
    xml += WTEXT("]]></Subject><MessageClass>");
    xml += mail.messageClass;
    xml += WTEXT("</MessageClass><MessageFlag>");
    xml += Number(mail.messageFlags);
    xml += WTEXT("</MessageFlag>\t\t\t\t\t\t   <Importance>");
    xml += Number(mail.importance);
    xml += WTEXT("</Importance><DeliveryTime>");
    xml += TimeText(mail.deliveryTime);
    xml += WTEXT("</DeliveryTime><EntryID>");
    xml += HexTextOf(mail.itemRef.entryId);
    xml += WTEXT("</EntryID></MailInfo>");
    return xml;
}

WString BuildMailsXml(std::span<const MailRecord> mails)
{
    WString xml = WTEXT("<Mails>");
    for (const MailRecord& mail : mails)
    {
        xml += BuildMailInfoXml(mail);
    }
    xml += WTEXT("</Mails>");
    return xml;
}
