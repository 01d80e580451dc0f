#include <span>

#include "FuzzInput.h"
#include "RegValue.h"

/// A registry value of any type and any bytes. The first byte of the input is the type.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
    {
        return 0;
    }
    const std::uint32_t type = data[0] & 15U;
    const std::span<const std::uint8_t> bytes(data + 1, size - 1);

    std::uint32_t number = 0;
    Require(regvalue::TakeDword(type, bytes, number) == (type == 4 && bytes.size() <= 4));
    WString text;
    Require(regvalue::TakeText(type, bytes, text) == (type == 1));
    Require(text.size() <= bytes.size() / sizeof(WCHAR));
    Require(text.find(WCHAR{}) == WString::npos);
    return 0;
}
