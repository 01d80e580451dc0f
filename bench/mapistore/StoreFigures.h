#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// One measured value.
struct StoreFigure
{
    std::string what;
    double value = 0;
    std::string unit;
};

/// Measures the library over a fresh store of so many messages in `folder`, which exists.
///
/// Errors: an empty list, with a line on standard error that says which call failed.
std::vector<StoreFigure> MeasureStore(const std::wstring& folder, std::uint32_t messages);
