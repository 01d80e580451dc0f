#pragma once

#include <cstdint>
#include <vector>

#include "RecurExceptionInfo.h"

/// Which exceptions touch a window. Both ends of the window belong to it.
struct ExceptionWindow
{
    std::vector<std::uint32_t> deleted; ///< original starts of deleted instances inside
    std::vector<std::uint32_t> moved;   ///< original starts of modified instances inside
    std::vector<std::uint32_t> added; ///< map keys of modified instances whose new start is inside
};

/// Sorts the exceptions against a window, in key order.
///
/// An instance that moved out of the window is in `moved` alone: it blocks its old slot and is not
/// listed. One that moved in is in `added` alone.
///
/// Units: minutes since 1601, local to the series.
ExceptionWindow CollectExceptionsInWindow(std::uint32_t windowStart,
                                          std::uint32_t windowEnd,
                                          const ExceptionMap& exceptions);

/// The original starts that are taken, for one look-up per candidate day.
class CTakenSlots
{
public:
    CTakenSlots() = default;
    explicit CTakenSlots(const ExceptionWindow& window);

    [[nodiscard]] bool Has(std::uint32_t start) const noexcept;

private:
    std::vector<std::uint32_t> m_starts; // sorted
};
