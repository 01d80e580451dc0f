#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "PatternTail.h"
#include "PlatformTypes.h"
#include "RecurExceptionInfo.h"
#include "RecurInstance.h"
#include "RecurrenceSettings.h"

class CRecurrenceFrame;

/// Kind of a rule, from the low byte of the stored frequency.
enum class RuleKind : std::uint32_t
{
    Unknown = 0,
    Daily = 1,
    Weekly = 2,
    Monthly = 3,
    Yearly = 4,
};

/// The stored end type. Only its low byte is ever looked at.
union RecurrentType {
    std::uint32_t value;
    struct
    {
        std::uint8_t b1;
        std::uint8_t b2;
        std::uint8_t b3;
        std::uint8_t b4;
    } byte_acc;
};

/// Turns a stored recurrence pattern and zone into the instances of a window.
///
/// Lives for one expansion: construct, SetInfo, ParseRule, destroy.
///
/// Shape:  the pattern is AppointmentRecurrencePattern of [MS-OXOCAL], of which only a part is read;
///         the zone is the 48-byte TZREG layout.
/// Units:  pattern dates are whole minutes since 1601 in the time zone of the series, unsigned 32
///         bits, and all arithmetic on them wraps.
/// Owner:  copies what it is given, but borrows the settings.
/// Thread: one.
/// Errors: no exception but the one for lack of memory; a pattern that makes no sense gives fewer
///         instances or none, and trace lines.
class CRecurrentRule
{
public:
    /// `settings` may be null: then no site is set.
    explicit CRecurrentRule(const IRecurrenceSettings* settings) noexcept : m_settings(settings) {}
    CRecurrentRule(const CRecurrentRule&) = delete;
    CRecurrentRule& operator=(const CRecurrentRule&) = delete;
    virtual ~CRecurrentRule() = default;

    /// `recurrentType` is ignored. A zone of any size but 48 leaves local time equal to UTC.
    void SetInfo(std::uint32_t recurrentType,
                 std::uint32_t blobSize,
                 const std::uint8_t* blob,
                 std::uint32_t zoneSize,
                 const std::uint8_t* zoneBlob,
                 const SYSTEMTIME& firstTime,
                 const FILETIME& windowStart,
                 const FILETIME& windowEnd,
                 WStringView subject,
                 WStringView location);

    /// Fills the list; true if it holds at least one instance.
    bool ParseRule(std::uint32_t& outCount, InstanceList& instances);

    [[nodiscard]] RuleKind Kind() const noexcept { return m_ruleKind; }
    [[nodiscard]] const TIME_ZONE_INFORMATION& Zone() const noexcept { return m_zInfo; }

private:
    friend class CRecurrenceFrame;

    bool ParseDaily(std::uint32_t& outCount, InstanceList& instances);
    bool ParseNonworkDaily(std::uint32_t& outCount, InstanceList& instances);
    bool ParseWorkDaily(std::uint32_t& outCount, InstanceList& instances);
    bool ParseWeekly(std::uint32_t& outCount, InstanceList& instances);
    bool ParseMonthly(std::uint32_t& outCount, InstanceList& instances);
    bool ParseMonthly02(std::uint32_t& outCount, InstanceList& instances);
    bool ParseMonthly03(std::uint32_t& outCount, InstanceList& instances);
    bool ParseYearly(std::uint32_t& outCount, InstanceList& instances);
    bool ParseYearly02(std::uint32_t& outCount, InstanceList& instances);
    bool ParseYearly03(std::uint32_t& outCount, InstanceList& instances);

    /// Reads the tail; true only if it ran to the end of the last extended record.
    bool GetResExceptionInfo(std::uint32_t tailArgument, ExceptionMap& exceptions);
    void TraceTailWarning(const TailResult& result) const;
    void TraceBlob() const;

    /// Whether the whole head is there; `patternBytes` is the size of the pattern-specific field.
    [[nodiscard]] bool HasHead(std::uint32_t patternBytes, const char* function) const;
    [[nodiscard]] std::uint32_t HeadU32(std::uint32_t offset) const noexcept;
    [[nodiscard]] std::uint16_t HeadU16(std::uint32_t offset) const noexcept;
    /// Copies end type and occurrence count, two bytes of each or all four.
    void TakeEnd(std::uint32_t offset, std::uint32_t bytes) noexcept;
    /// Whether the weekly handler lists deleted and moved instances all the same.
    [[nodiscard]] bool KeepsAll() const;

    RuleKind m_ruleKind = RuleKind::Unknown;
    std::vector<std::uint8_t> m_blob;
    std::uint32_t m_firstDateTime = 0;
    std::uint32_t m_period = 0;
    RecurrentType m_uRecurrentType{};
    std::uint32_t m_occurrenceCount = 0; // never used: an end by count is the end date
    PatternTail m_tail;
    std::uint32_t m_weeklyPeriod = 0; // weeks
    std::uint32_t m_weekdayMask = 0;  // bit 0 is Sunday
    SYSTEMTIME m_firstTime{};
    FILETIME m_windowStart{}; // UTC
    FILETIME m_windowEnd{};   // UTC
    std::int32_t m_instanceCount = 0;
    TIME_ZONE_INFORMATION m_zInfo{};
    WString m_subject;
    WString m_location;
    const IRecurrenceSettings* m_settings;
};
