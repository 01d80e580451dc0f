#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "PlatformTypes.h"

/// Writes recurrence patterns and zones as a mail client stores them, for tests.
///
/// Units: dates are minutes since 1601, offsets minutes of the day.
/// Source: [MS-OXOCAL] 2.2.1.44.
namespace pattern
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t kDaily = 0x200A;
constexpr std::uint16_t kWeekly = 0x200B;
constexpr std::uint16_t kMonthly = 0x200C;
constexpr std::uint16_t kYearly = 0x200D;

constexpr std::uint32_t kEndByDate = 0x2021;
constexpr std::uint32_t kEndByCount = 0x2022;
constexpr std::uint32_t kNoEnd = 0x2023;
constexpr std::uint32_t kNoEndOld = 0xFFFFFFFF;

/// Minutes of "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM:SS".
std::uint32_t Minutes(const std::string& text);

/// One modified instance: only the fields that are set are stored, each with its flag.
struct Modified
{
    std::uint32_t original = 0; ///< original start, with its time of day
    std::uint32_t start = 0;
    std::uint32_t end = 0;
    std::optional<std::string> subject; ///< plain ASCII
    std::optional<std::uint32_t> meetingType;
    std::optional<std::uint32_t> reminderDelta;
    std::optional<std::uint32_t> reminder;
    std::optional<std::string> location; ///< plain ASCII
    std::optional<std::uint32_t> busyStatus;
    std::optional<std::uint32_t> attachment;
    std::optional<std::uint32_t> subType;
    std::optional<std::uint32_t> color;
    bool hasBody = false; ///< flag 512, which stores nothing

    std::uint16_t Flags() const;
};

/// An instance that has new times and nothing else. Texts as for Minutes.
Modified Moved(const std::string& original, const std::string& start, const std::string& end);

/// A whole pattern. `deleted` are dates at midnight; the dates of modified instances are added to
/// them on writing, as the format wants it.
struct Pattern
{
    std::uint16_t frequency = kDaily;
    std::uint16_t patternType = 0;
    std::uint16_t calendarType = 0;
    std::uint32_t firstDateTime = 0;
    std::uint32_t period = 1440;
    std::vector<std::uint32_t> specific; ///< mask, day, or mask and week
    std::uint32_t endType = kNoEnd;
    std::uint32_t occurrenceCount = 10;
    std::uint32_t startDate = 0;
    std::uint32_t endDate = 0x5AE980DF; ///< the "never" of the format
    std::uint32_t startOffset = 540;
    std::uint32_t endOffset = 600;
    std::uint32_t writerVersion2 = 0x3009;
    std::vector<std::uint32_t> deleted;
    std::vector<Modified> modified;

    Bytes Write() const;
    /// Offset of the tail, which begins with the deleted count.
    std::size_t TailOffset() const { return 34 + 4 * specific.size(); }
};

Pattern Daily(const std::string& startDate, std::uint32_t days);
Pattern WorkingDays(const std::string& startDate);
Pattern Weekly(const std::string& startDate, std::uint32_t mask, std::uint32_t weeks);
Pattern MonthlyDay(const std::string& startDate, std::uint32_t day, std::uint32_t months);
Pattern MonthlyOrdinal(const std::string& startDate,
                       std::uint32_t mask,
                       std::uint32_t week,
                       std::uint32_t months);
/// `years` become a period of months; the month is that of the start date.
Pattern YearlyDay(const std::string& startDate, std::uint32_t day, std::uint32_t years);
Pattern YearlyOrdinal(const std::string& startDate,
                      std::uint32_t mask,
                      std::uint32_t week,
                      std::uint32_t years);

/// The 48-byte zone; the standard bias is stored where the decoder reads it.
Bytes Zone(const TIME_ZONE_INFORMATION& zone);

} // namespace pattern
