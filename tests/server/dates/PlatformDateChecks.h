#pragma once

#include <cstdint>
#include <string>

#include "PlatformTypes.h"

/// Holds one value through our date functions and the system's, and counts where they part.
///
/// Whoever calls leaves out what `docs/dates.md` lists as a known difference.
class CPlatformDateChecks
{
public:
    /// Both FileTimeToSystemTime, and SystemTimeToFileTime on the result.
    void FileTime(std::uint64_t ticks);
    /// Both SystemTimeToFileTime, and CompareFileTime of the result with the one before.
    void SystemTime(const SYSTEMTIME& time);
    /// Both SystemTimeToVariantTime, and VariantTimeToSystemTime on the result.
    void Variant(const SYSTEMTIME& time);
    /// Both VariantTimeToSystemTime.
    void VariantValue(double variantTime);
    /// Both SystemTimeToTzSpecificLocalTime.
    void LocalTime(const TIME_ZONE_INFORMATION& zone, const SYSTEMTIME& utc);

    std::uint64_t Compared() const { return m_compared; }
    /// 0 when all agreed.
    std::uint64_t Differences() const { return m_differences; }
    /// The first difference, to be told by the test that failed.
    const std::string& First() const { return m_first; }

private:
    void Count(bool same, const char* function, const std::string& what);

    std::uint64_t m_compared = 0;
    std::uint64_t m_differences = 0;
    std::string m_first;
    FILETIME m_lastFileTime{};
};
