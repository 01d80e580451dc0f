#pragma once

#include <windows.h>

#include <string>
#include <string_view>

/// Text conversions and the one meaning of "equal" that tables, resolution and the store share.
///
/// Shape:  wide text is UTF-16; 8-bit text is in the system's code page, as the 8-bit half of MAPI
///         has it; store files are UTF-8.
/// Thread: any.
namespace mapistore
{

std::wstring FromUtf8(std::string_view text);
std::string ToUtf8(std::wstring_view text);
std::wstring FromAnsi(std::string_view text);
std::string ToAnsi(std::wstring_view text);

/// Fold for comparison: lower case by the invariant map when `ignoreCase`, combining marks removed
/// when `ignoreMarks` ("e" with an acute becomes "e").
std::wstring Fold(std::wstring_view text, bool ignoreCase, bool ignoreMarks);

/// Below, equal or above as -1, 0, 1, without regard to case, by code units.
int CompareText(std::wstring_view left, std::wstring_view right);

bool EqualText(std::wstring_view left, std::wstring_view right);

/// The RES_CONTENT test: `fuzzyLevel` as the FL_ flags.
bool ContentMatches(std::wstring_view text, std::wstring_view pattern, ULONG fuzzyLevel);

std::string HexText(const void* bytes, size_t cb);

/// False when the text is no even run of hexadecimal digits.
bool ParseHex(std::string_view text, std::string& bytes);

} // namespace mapistore
