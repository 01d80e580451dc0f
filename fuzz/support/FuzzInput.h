#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "PlatformTypes.h"

/// The input as 16-bit text; an odd last byte is left out.
inline WString WideInput(const std::uint8_t* data, std::size_t size)
{
    WString text(size / sizeof(WCHAR), WCHAR{});
    if (!text.empty())
    {
        std::memcpy(text.data(), data, text.size() * sizeof(WCHAR));
    }
    return text;
}

/// Ends the run as a finding when something that always holds does not.
inline void Require(bool holds)
{
    if (!holds)
    {
        std::abort();
    }
}
