#pragma once

/// The platform's plain types, for code that is built both for Windows and natively.
///
/// On Windows they are the system's own. Elsewhere the same layouts are declared here, so that the
/// portable core needs no Windows header. `WCHAR` is 16 bits wide everywhere: `wchar_t` on Windows,
/// `char16_t` elsewhere. Portable code never names `wchar_t`, and writes wide literals as
/// WTEXT("...").

#include <cstdint>
#include <string>
#include <string_view>

#ifdef _WIN32

#include <windows.h>

#define WTEXT_JOIN(literal) L##literal
#define WTEXT(literal) WTEXT_JOIN(literal)

#else

// The platform's own names. NOLINTBEGIN(readability-identifier-naming)
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using HRESULT = std::int32_t;
using WCHAR = char16_t;

/// Units: 100 ns steps since 1601-01-01, in two halves.
struct FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

/// A calendar date and time of day. wDayOfWeek is 0 for Sunday.
struct SYSTEMTIME
{
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

/// Units: all three biases in minutes; UTC = local time + bias.
struct TIME_ZONE_INFORMATION
{
    LONG Bias;
    WCHAR StandardName[32];
    SYSTEMTIME StandardDate;
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate;
    LONG DaylightBias;
};

/// Layout of the platform's GUID.
struct GUID
{
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};

#define WTEXT_JOIN(literal) u##literal
#define WTEXT(literal) WTEXT_JOIN(literal)

constexpr HRESULT S_OK = 0;
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
// NOLINTEND(readability-identifier-naming)

#endif

using WString = std::basic_string<WCHAR>;
using WStringView = std::basic_string_view<WCHAR>;
