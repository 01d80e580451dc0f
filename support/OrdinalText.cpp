#include "OrdinalText.h"

#ifdef _WIN32

#include <windows.h>

#include <limits>

namespace
{

constexpr std::size_t kLongestText = static_cast<std::size_t>(std::numeric_limits<int>::max());

} // namespace

bool EqualIgnoringCase(WStringView first, WStringView second) noexcept
{
    if (first.size() != second.size() || first.size() > kLongestText)
    {
        return false;
    }
    // The platform refuses a null pointer even with a length of 0.
    return first.empty() || CompareStringOrdinal(first.data(),
                                                 static_cast<int>(first.size()),
                                                 second.data(),
                                                 static_cast<int>(second.size()),
                                                 TRUE) == CSTR_EQUAL;
}

WString LowerCaseText(WStringView text)
{
    WString lower(text);
    if (!text.empty() && text.size() <= kLongestText)
    {
        const int cch = static_cast<int>(text.size());
        if (LCMapStringEx(LOCALE_NAME_INVARIANT,
                          LCMAP_LOWERCASE,
                          text.data(),
                          cch,
                          lower.data(),
                          cch,
                          nullptr,
                          nullptr,
                          0) != cch)
        {
            lower.assign(text);
        }
    }
    return lower;
}

#else

#include <algorithm>

#include "CaseTables.h"

bool EqualIgnoringCase(WStringView first, WStringView second) noexcept
{
    return std::equal(
        first.begin(), first.end(), second.begin(), second.end(), [](WCHAR a, WCHAR b) {
            return a == b || UpperCaseUnit(a) == UpperCaseUnit(b);
        });
}

WString LowerCaseText(WStringView text)
{
    WString lower(text);
    for (WCHAR& unit : lower)
    {
        unit = LowerCaseUnit(unit);
    }
    return lower;
}

#endif
