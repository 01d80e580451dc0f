#include "PlatformDateChecks.h"

#include <windows.h>

#include <oleauto.h>

#include <cstring>

#include "DateTexts.h"
#include "PlatformDates.h"

namespace
{

// What both sides start from: a refusal has to leave it alone.
const SYSTEMTIME kUntouched{2000, 1, 0, 2, 3, 4, 5, 6};

bool IsSame(const SYSTEMTIME& a, const SYSTEMTIME& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

void CPlatformDateChecks::Count(bool same, const char* function, const std::string& what)
{
    ++m_compared;
    if (!same && m_differences++ == 0)
    {
        m_first = std::string(function) + " of " + what;
    }
}

void CPlatformDateChecks::FileTime(std::uint64_t ticks)
{
    const FILETIME fileTime = dates::FileTimeOf(ticks);
    SYSTEMTIME ours = kUntouched;
    SYSTEMTIME theirs = kUntouched;
    const bool ourResult = dates::FileTimeToSystemTime(fileTime, ours);
    const bool theirResult = ::FileTimeToSystemTime(&fileTime, &theirs) != FALSE;
    const bool same = ourResult == theirResult && IsSame(ours, theirs);
    Count(same, "FileTimeToSystemTime", same ? std::string() : std::to_string(ticks));
    if (ourResult && ours.wYear <= 30827)
    {
        SystemTime(ours);
    }
}

void CPlatformDateChecks::SystemTime(const SYSTEMTIME& time)
{
    FILETIME ours = dates::FileTimeOf(77);
    FILETIME theirs = dates::FileTimeOf(77);
    const bool ourResult = dates::SystemTimeToFileTime(time, ours);
    const bool theirResult = ::SystemTimeToFileTime(&time, &theirs) != FALSE;
    bool same = ourResult == theirResult && dates::TicksOf(ours) == dates::TicksOf(theirs);
    Count(same, "SystemTimeToFileTime", same ? std::string() : TextOf(time));
    same =
        dates::CompareFileTime(ours, m_lastFileTime) == ::CompareFileTime(&ours, &m_lastFileTime) &&
        dates::CompareFileTime(m_lastFileTime, ours) == ::CompareFileTime(&m_lastFileTime, &ours);
    Count(same, "CompareFileTime", same ? std::string() : TextOf(time));
    m_lastFileTime = ours;
}

void CPlatformDateChecks::Variant(const SYSTEMTIME& time)
{
    double ours = -77;
    double theirs = -77;
    SYSTEMTIME input = time;
    const bool ourResult = dates::SystemTimeToVariantTime(time, ours);
    const bool theirResult = ::SystemTimeToVariantTime(&input, &theirs) != FALSE;
    const bool same =
        ourResult == theirResult && (!ourResult || std::memcmp(&ours, &theirs, sizeof ours) == 0);
    Count(same, "SystemTimeToVariantTime", same ? std::string() : TextOf(time));
    if (ourResult)
    {
        VariantValue(ours);
    }
}

void CPlatformDateChecks::VariantValue(double variantTime)
{
    SYSTEMTIME ours = kUntouched;
    SYSTEMTIME theirs = kUntouched;
    const bool ourResult = dates::VariantTimeToSystemTime(variantTime, ours);
    const bool theirResult = ::VariantTimeToSystemTime(variantTime, &theirs) != FALSE;
    const bool same = ourResult == theirResult && (!ourResult || IsSame(ours, theirs));
    Count(same,
          "VariantTimeToSystemTime",
          same ? std::string()
               : std::to_string(variantTime) + ": " + TextWithWeekday(ours) + " against " +
                     TextWithWeekday(theirs));
}

void CPlatformDateChecks::LocalTime(const TIME_ZONE_INFORMATION& zone, const SYSTEMTIME& utc)
{
    SYSTEMTIME ours = kUntouched;
    SYSTEMTIME theirs = kUntouched;
    SYSTEMTIME input = utc;
    const bool ourResult = dates::SystemTimeToTzSpecificLocalTime(zone, utc, ours);
    const bool theirResult = ::SystemTimeToTzSpecificLocalTime(&zone, &input, &theirs) != FALSE;
    const bool same = ourResult == theirResult && IsSame(ours, theirs);
    Count(same,
          "SystemTimeToTzSpecificLocalTime",
          same ? std::string() : TextOf(utc) + ": " + TextOf(ours) + " against " + TextOf(theirs));
}
