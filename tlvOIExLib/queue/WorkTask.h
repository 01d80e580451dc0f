#pragma once

#include <cstdint>

#include "PlatformTypes.h"

/// Numbers of the work tasks. They are a stated interface: clients' requests and table
/// notifications meet their handlers by these numbers alone.
enum class TaskType : std::int32_t
{
    InitMapi = 0,
    SendMail = 1,
    GetSmtpAddress = 2,
    GetAppointments = 3,
    GetRecurrentInstances = 4,
    GetRecentEmail = 5,
    GetAppointment = 6,
    DroppedText = 7, ///< no handler: its text is read and dropped
    Hibernate = 8,
    Release = 9,
    DeleteAppt = 10,
    ModifyAppt = 11,
    AddAppt = 12,
    PostDelete = 13,
    PostUpdate = 14,
    PostAdd = 15,
    DeleteContact = 16,
    ModifyContact = 17,
    AddContact = 18,
    GetPersonalContact = 19,
    SearchForContacts = 20,
    ResolveByUri = 21,
    ResolveByPhoneNumber = 22,
};

/// The record of the work queue, passed by value.
///
/// Shape: what the three payload words hold depends on the type:
///
///        | Type           | Param1                      | Param2         | Param3       |
///        |----------------|-----------------------------|----------------|--------------|
///        | 0              | halves: mail, init type     |                |              |
///        | 1              | subject                     | recipients     | body         |
///        | 2              | display name                |                |              |
///        | 3              | start FILETIME              | end FILETIME   |              |
///        | 4              | start FILETIME              | end FILETIME   | entry id     |
///        | 5              | halves: number, folder type | contact        |              |
///        | 6              | entry id                    |                |              |
///        | 7              | a text                      |                |              |
///        | 10, 16         | borrowed folder             |                | instance key |
///        | 11, 12, 17, 18 | borrowed folder             | entry id       | instance key |
///        | 13, 14, 15     |                             | key            |              |
///        | 20             | search text                 | maximum (low)  |              |
///        | 21, 22         | a text                      |                |              |
///
///        Of two halves the first named is the low one. A text is a terminated UTF-16 copy made by
///        TaskText; entry ids and instance keys are uppercase hexadecimal text.
/// Owner: a task on a list owns its texts; whoever pops it frees them with FreeTaskTexts. The folder
///        stays the subscription's.
struct WorkTask
{
    std::uint32_t ulSequenceID = 0; ///< 0 where the request has none
    TaskType eTaskType = TaskType::InitMapi;
    std::uint64_t Param1 = 0;
    std::uint64_t Param2 = 0;
    std::uint64_t Param3 = 0;
};

/// A heap copy of `text` as a payload word.
/// Errors: 0 when there is no memory.
std::uint64_t TaskText(WStringView text) noexcept;

/// The text of a payload word; 0 reads as the empty text.
WString TextOfParam(std::uint64_t param);

/// Frees every text that the task owns and clears the words that held them. An unknown type owns
/// nothing that could be known.
void FreeTaskTexts(WorkTask& task) noexcept;

/// Two 32-bit values in one payload word, and back.
constexpr std::uint64_t TaskHalves(std::uint32_t low, std::uint32_t high) noexcept
{
    return (static_cast<std::uint64_t>(high) << 32) | low;
}

constexpr std::uint32_t LowHalf(std::uint64_t param) noexcept
{
    return static_cast<std::uint32_t>(param);
}

constexpr std::uint32_t HighHalf(std::uint64_t param) noexcept
{
    return static_cast<std::uint32_t>(param >> 32);
}

constexpr std::uint64_t TaskTime(const FILETIME& time) noexcept
{
    return TaskHalves(time.dwLowDateTime, time.dwHighDateTime);
}

constexpr FILETIME TimeOfParam(std::uint64_t param) noexcept
{
    return FILETIME{LowHalf(param), HighHalf(param)};
}
