#pragma once

#include <array>
#include <cstdint>

#include "PlatformTypes.h"

/// Local time of a zone to UTC, by variant times.
///
/// The way there is not SystemTimeToTzSpecificLocalTime turned round: switches are judged on the
/// local time itself, the standard bias does not count, and neither switch moment belongs to
/// daylight time.

/// Fills a zone from the 48 bytes of the TZREG layout; `zone` is zeroed first.
///
/// Shape:  little-endian; the standard bias is taken from offset 26, inside the standard date, and
///         years, weekdays, minutes and seconds of both dates stay 0, so switches fall on Sundays.
/// Errors: false unless `size` is 48 and both pointers are set; then nothing is touched.
bool ConvertBinToTimezoneInfo(std::uint32_t size,
                              const std::uint8_t* blob,
                              TIME_ZONE_INFORMATION* zone) noexcept;

/// Whether `local` is daylight time of `zone`.
[[nodiscard]] bool IsDaylightTime(const SYSTEMTIME& local,
                                  const TIME_ZONE_INFORMATION& zone) noexcept;

/// Errors: false, with all fields of `utc` zero, when either end lies outside the years 100 to
/// 9999.
bool LocalToUtcSystemTime(const SYSTEMTIME& local,
                          SYSTEMTIME& utc,
                          const TIME_ZONE_INFORMATION& zone) noexcept;

/// Takes the file time as local time of the zone.
/// Errors: false, with `utc` 0, when either conversion is refused.
bool LocalToUtcFileTime(const FILETIME& local,
                        FILETIME& utc,
                        const TIME_ZONE_INFORMATION& zone) noexcept;

/// LocalToUtcSystemTime for many minutes of one zone: the switch moments of a year are worked out
/// once and kept, results are the same to the letter.
///
/// Thread: one at a time.
class CZoneClock
{
public:
    CZoneClock() noexcept = default;
    explicit CZoneClock(const TIME_ZONE_INFORMATION& zone) noexcept : m_zone(zone) {}

    /// All fields are zero when the result lies outside the years 100 to 9999.
    [[nodiscard]] SYSTEMTIME UtcFromMinutes(std::uint32_t localMinutes1601) noexcept;

private:
    /// One calendar year's switch moments. Days count from 1601-01-01, moments in variant seconds.
    struct YearSwitches
    {
        std::int64_t firstDay = 0;
        std::int64_t endDay = 0; ///< exclusive; an unused entry covers nothing
        std::int64_t toStandard = 0;
        std::int64_t toDaylight = 0;
    };

    [[nodiscard]] const YearSwitches& SwitchesOfDay(std::int64_t day1601) noexcept;
    [[nodiscard]] bool IsDaylight(std::int64_t day1601, std::int64_t variantSeconds) noexcept;

    static constexpr std::size_t kYears = 8; // a power of two: years are taken modulo this

    TIME_ZONE_INFORMATION m_zone{};
    std::array<YearSwitches, kYears> m_years{};
    std::size_t m_lastYear = 0; // index of the entry used last
};
