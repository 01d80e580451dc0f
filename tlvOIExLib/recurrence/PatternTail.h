#pragma once

#include <cstdint>
#include <span>

#include "RecurExceptionInfo.h"

/// The fixed fields of a pattern's tail. Dates are minutes since 1601, offsets minutes of the day.
struct PatternTail
{
    std::uint32_t deletedCount = 0;
    std::uint32_t modifiedCount = 0;
    std::uint32_t startDate = 0;
    std::uint32_t endDate = 0;
    std::uint32_t startTimeOffset = 0;
    std::uint32_t endTimeOffset = 0;
};

/// What ended the reading of a tail early. The numbers go into the trace.
enum class TailWarning : std::uint32_t
{
    None = 0,
    ExtendedStart = 1,
    ExtendedDates = 2,
    ExtendedUnknownDate = 3,
    ExtendedSubject = 5,
    ExtendedLocation = 7,
    DeletedList = 8,
    FixedPart = 9,
    ExceptionRecord = 10,
    ExceptionSubject = 13,
    ExceptionLocation = 14,
    FirstReservedSize = 15,
};

struct TailResult
{
    TailWarning warning = TailWarning::None;
    std::uint64_t position = 0; ///< of the cursor when the reading ended
    bool isComplete = false;    ///< there are exceptions, and all of them were read to their end
};

/// Reads the tail of a recurrence pattern: deleted dates, modified instances, their texts.
///
/// Shape:  the tail of AppointmentRecurrencePattern, of which only a part is looked at; the texts of
///         the first pass are skipped, and the reserved blocks are found by their sizes of 0 and 4.
/// Errors: never fails. A pattern that ends early leaves in `tail` and `exceptions` what was read
///         until then, and says where in the result.
/// Source: [MS-OXOCAL] 2.2.1.44.5.
class CPatternTailReader
{
public:
    /// `subject` and `location` are the rule's, which an exception keeps until it brings its own.
    CPatternTailReader(std::span<const std::uint8_t> blob,
                       WStringView subject,
                       WStringView location) noexcept
        : m_blob(blob), m_subject(subject), m_location(location)
    {
    }

    /// `tailStart` is the offset of the deleted count.
    TailResult Read(std::uint64_t tailStart, PatternTail& tail, ExceptionMap& exceptions) const;

private:
    std::span<const std::uint8_t> m_blob;
    WStringView m_subject;
    WStringView m_location;
};
