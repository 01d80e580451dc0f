#pragma once

#include <cstdint>
#include <span>

#include "PatternTail.h"

/// Which of the server's rules a pattern is for.
enum class RuleForm
{
    Unknown,
    EveryDays,
    WorkingDays,
    Weekly,
    MonthlyDay,
    MonthlyOrdinal,
    YearlyDay,
    YearlyOrdinal,
};

/// A stored pattern, taken apart for showing. Read the way the server reads it.
struct PatternView
{
    explicit PatternView(std::span<const std::uint8_t> blob,
                         WStringView subject,
                         WStringView location);

    /// Whether the server would look at any instance at all.
    [[nodiscard]] bool IsComplete() const noexcept { return form != RuleForm::Unknown; }

    RuleForm form = RuleForm::Unknown;
    std::uint32_t frequency = 0; ///< low byte
    std::uint32_t patternType = 0;
    std::uint32_t calendarType = 0;
    std::uint32_t firstDateTime = 0;
    std::uint32_t period = 0;
    std::uint32_t specific = 0; ///< mask or day of the month
    std::uint32_t week = 0;     ///< of the ordinal forms
    std::uint32_t endType = 0;
    std::uint32_t occurrenceCount = 0;
    std::size_t size = 0;
    PatternTail tail;
    ExceptionMap exceptions;
    TailResult tailResult;
};
