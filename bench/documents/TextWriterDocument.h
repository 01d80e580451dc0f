#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One recipient, in the form that libxml2 takes: UTF-8.
struct NarrowAttendee
{
    std::string name;
    std::string email;
    std::uint32_t recipientFlags = 0;
    std::uint32_t recipientType = 0;
    std::uint32_t trackStatus = 0;
};

/// The fields of an appointment that the document shows, in the form that libxml2 takes.
struct NarrowMeeting
{
    std::uint32_t subKey = 0;
    std::string subject;
    std::string location;
    std::string description;
    std::string hostName;
    std::string hostEmail;
    std::uint32_t duration = 0;
    std::uint32_t meetingStatus = 0;
    bool isRecurring = false;
    std::int32_t recurrenceType = 0;
    std::string recurrencePattern;
    std::string profileName;
    std::string storeName;
    bool isAllDay = false;
    std::uint32_t responseStatus = 0;
    std::uint32_t busyStatus = 0;
    std::string calendarText;
    std::string deskToolsProperty;
    std::string capabilities;
    int startTime[6] = {}; ///< month, day, year, hour, minute, second
    int endTime[6] = {};
    int firstTime[6] = {};
    std::vector<std::uint8_t> recurrenceState;
    std::vector<std::uint8_t> timeZone;
    std::vector<std::uint8_t> entryId;
    std::vector<std::uint8_t> instanceKey;
    std::vector<std::uint8_t> storeEntryId;
    std::string uid;
    std::string htmlBody;
    std::vector<NarrowAttendee> attendees;
};

/// The document of the appointments, written by libxml2's text writer as its manual shows.
std::string TextWriterDocument(const std::vector<NarrowMeeting>& meetings);
