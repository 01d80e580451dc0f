#include <string>
#include <vector>

#include "Base64.h"
#include "FuzzInput.h"

/// Decodes any bytes in a destination of exactly the room that the decoder asks for, and sends them
/// there and back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);

    std::vector<char> room(size / 4 * 3);
    const std::size_t decoded = xbase64_decode(input.data(), size, room.data(), room.size());
    Require(decoded <= room.size());

    std::string plain;
    Require(Base64DecodeForAString(input, plain) == !input.empty());
    Require(plain == std::string(room.data(), decoded));

    std::string encoded;
    Base64EncodeForAString(input, encoded);
    Require(encoded.size() == (size + 2) / 3 * 4);
    std::string back;
    Require(Base64DecodeForAString(encoded, back) == !input.empty());
    Require(back == input);

    WString wide;
    static_cast<void>(Base64DecodeForWString(WideInput(data, size), wide));
    return 0;
}
