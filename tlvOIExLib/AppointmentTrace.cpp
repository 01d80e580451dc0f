#include "AppointmentTrace.h"

#include "Base64.h"
#include "NarrowText.h"

std::string AppointmentFacts(const MeetingInfo& meeting)
{
    std::string name;
    Base64EncodeForAString(NarrowText(meeting.strName), name);
    std::string facts = "name=[" + name + "], rectype=[";
    facts += std::to_string(meeting.recurrenceType) + "], meetingstatus=[";
    facts += std::to_string(static_cast<std::int32_t>(meeting.meetingStatus)) + "] stFirst=[";
    facts += std::to_string(meeting.firstTime.wYear) + "/";
    facts += std::to_string(meeting.firstTime.wMonth) + "/";
    facts += std::to_string(meeting.firstTime.wDay) + " ";
    facts += std::to_string(meeting.firstTime.wHour) + ":";
    facts += std::to_string(meeting.firstTime.wMinute) + "]";
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
