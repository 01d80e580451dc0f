#include <span>
#include <vector>

#include "FuzzInput.h"
#include "HexText.h"

/// Reads any text as hexadecimal digits, and sends any bytes there and back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const WString text = WideInput(data, size);
    const std::vector<std::uint8_t> read = BytesOfHexText(text);
    Require(read.size() == text.size() / 2);
    std::vector<std::uint8_t> room(text.size() / 2);
    std::uint32_t count = 0;
    HexTextToBin(text, room.data(), count);
    Require(room == read);
    static_cast<void>(IsHexTextOf(text, read));

    const std::span<const std::uint8_t> bytes(data, size);
    const WString digits = HexTextOf(bytes);
    Require(digits.size() == 2 * size);
    Require(IsHexTextOf(digits, bytes));
    const std::vector<std::uint8_t> back = BytesOfHexText(digits);
    Require(std::equal(back.begin(), back.end(), bytes.begin(), bytes.end()));
    return 0;
}
