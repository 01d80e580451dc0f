#include "AppointmentTrace.h"

#include "Base64.h"
#include "NarrowText.h"

std::string AppointmentFacts(const MeetingInfo& meeting)
{
    std::string name;
    Base64EncodeForAString(NarrowText(meeting.strName), name);
    constexpr std::size_t kAllBesideTheName = 160; // seven numbers and what stands around them
    std::string facts;
    facts.reserve(name.size() + kAllBesideTheName);
    facts.append("name=[").append(name);
    const auto append = [&facts](const char* before, int number) {
        facts.append(before).append(std::to_string(number));
    };
    append("], rectype=[", meeting.recurrenceType);
    append("], meetingstatus=[", static_cast<std::int32_t>(meeting.meetingStatus));
    append("] stFirst=[", meeting.firstTime.wYear);
    append("/", meeting.firstTime.wMonth);
    append("/", meeting.firstTime.wDay);
    append(" ", meeting.firstTime.wHour);
    append(":", meeting.firstTime.wMinute);
    facts += ']';
    return facts;
}

WString MaskedText(WStringView text)
{
    constexpr std::size_t kKept = 5;
    WString masked(text);
    if (text.size() > 2 * kKept)
    {
        masked.replace(kKept, text.size() - 2 * kKept, text.size() - 2 * kKept, WTEXT('*'));
    }
    return masked;
}
