#include "Base64.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "NarrowText.h"

namespace
{

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';

constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kGroupCharacters = 4;

/// Two characters of the alphabet for each 12 bits.
using CharacterPair = std::array<char, 2>;

constexpr std::array<CharacterPair, 4096> MakePairs()
{
    std::array<CharacterPair, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits)
    {
        pairs[bits] = {kAlphabet[bits >> 6], kAlphabet[bits & 63]};
    }
    return pairs;
}

constexpr std::array<std::uint8_t, 256> MakeDecodeTable()
{
    std::array<std::uint8_t, 256> table{};
    for (std::size_t value = 0; value < kAlphabet.size(); ++value)
    {
        table[static_cast<std::uint8_t>(kAlphabet[value])] = static_cast<std::uint8_t>(value);
    }
    return table;
}

constexpr std::array<CharacterPair, 4096> kPairs = MakePairs();
constexpr std::array<std::uint8_t, 256> kDecodeTable = MakeDecodeTable();

constexpr std::uint32_t Byte(char value) noexcept
{
    return static_cast<std::uint8_t>(value);
}

constexpr std::uint32_t SixBits(char character) noexcept
{
    return kDecodeTable[static_cast<std::uint8_t>(character)];
}

/// Writes the four characters of 24 bits.
void WriteGroup(std::uint32_t bits, char* out) noexcept
{
    std::memcpy(out, kPairs[bits >> 12].data(), sizeof(CharacterPair));
    std::memcpy(out + 2, kPairs[bits & 4095].data(), sizeof(CharacterPair));
}

/// Fills with "A" and then with zeros, in a way that the compiler may not leave out.
void Wipe(std::string& secret) noexcept
{
    for (const char filler : {'A', '\0'})
    {
        volatile char* const first = secret.data();
        for (std::size_t i = 0; i < secret.size(); ++i)
        {
            first[i] = filler;
        }
    }
}

/// Wipes the text at the end of its scope, also when an exception ends it.
class CSecretText
{
public:
    CSecretText() = default;
    explicit CSecretText(std::string secret) noexcept : text(std::move(secret)) {}
    CSecretText(const CSecretText&) = delete;
    CSecretText& operator=(const CSecretText&) = delete;
    ~CSecretText() { Wipe(text); }

    std::string text;
};

} // namespace

std::size_t xbase64_calc_encode_buf_size(const char* /*source*/, std::size_t length) noexcept
{
    return length / kGroupBytes * kGroupCharacters + kGroupCharacters;
}

std::size_t xbase64_encode(const char* source,
                           std::size_t length,
                           char* destination,
                           std::size_t /*destinationSize*/) noexcept
{
    char* out = destination;
    const std::size_t tail = length % kGroupBytes;
    const char* const tailStart = source + (length - tail);
    for (const char* in = source; in != tailStart; in += kGroupBytes)
    {
        WriteGroup(Byte(in[0]) << 16 | Byte(in[1]) << 8 | Byte(in[2]), out);
        out += kGroupCharacters;
    }
    if (tail != 0)
    {
        const std::uint32_t second = tail == 2 ? Byte(tailStart[1]) : 0;
        WriteGroup(Byte(tailStart[0]) << 16 | second << 8, out);
        out[2] = tail == 2 ? out[2] : kPadding;
        out[3] = kPadding;
        out += kGroupCharacters;
    }
    return static_cast<std::size_t>(out - destination);
}

std::size_t xbase64_decode(const char* source,
                           std::size_t length,
                           char* destination,
                           std::size_t /*destinationSize*/) noexcept
{
    char* out = destination;
    for (std::size_t groups = length / kGroupCharacters; groups != 0; --groups)
    {
        const std::uint32_t bits = SixBits(source[0]) << 18 | SixBits(source[1]) << 12 |
                                   SixBits(source[2]) << 6 | SixBits(source[3]);
        out[0] = static_cast<char>(bits >> 16);
        out[1] = static_cast<char>(bits >> 8 & 0xFF);
        out[2] = static_cast<char>(bits & 0xFF);
        if (source[2] == kPadding)
        {
            out[1] = 0;
            out[2] = 0;
            out += 1;
        }
        else if (source[3] == kPadding)
        {
            out[2] = 0;
            out += 2;
        }
        else
        {
            out += kGroupBytes;
        }
        source += kGroupCharacters;
    }
    return static_cast<std::size_t>(out - destination);
}

void helper_xbase64_init_decode_table() noexcept {}

int DecodeBase64(const char* text, BYTE* destination, ULONG* size) noexcept
{
    std::memset(destination, 0, *size);
    const std::size_t decoded =
        xbase64_decode(text, std::strlen(text), reinterpret_cast<char*>(destination), *size);
    *size = static_cast<ULONG>(decoded);
    return 1;
}

std::string EncodeBase64(const BYTE* bytes, ULONG length)
{
    if (bytes == nullptr)
    {
        return {};
    }
    const char* const source = reinterpret_cast<const char*>(bytes);
    std::string encoded(xbase64_calc_encode_buf_size(source, length), '\0');
    encoded.resize(xbase64_encode(source, length, encoded.data(), encoded.size()));
    return encoded;
}

void Base64EncodeForAString(const std::string& plain, std::string& encoded)
{
    std::string text(xbase64_calc_encode_buf_size(plain.data(), plain.size()), '\0');
    text.resize(xbase64_encode(plain.data(), plain.size(), text.data(), text.size()));
    encoded = std::move(text);
}

bool Base64DecodeForAString(const std::string& encoded, std::string& plain)
{
    if (encoded.empty())
    {
        return false;
    }
    CSecretText buffer(std::string(encoded.size(), '\0'));
    const std::size_t decoded =
        xbase64_decode(encoded.data(), encoded.size(), buffer.text.data(), buffer.text.size());
    plain.append(buffer.text, 0, decoded);
    return true;
}

void Base64EncodeForWString(const WString& plain, WString& encoded)
{
    const CSecretText narrow(NarrowText(plain));
    std::string narrowEncoded;
    Base64EncodeForAString(narrow.text, narrowEncoded);
    encoded = WidenText(narrowEncoded);
}

bool Base64DecodeForWString(const WString& encoded, WString& plain)
{
    CSecretText narrow;
    if (!Base64DecodeForAString(NarrowText(encoded), narrow.text))
    {
        return false;
    }
    plain = WidenText(narrow.text);
    return true;
}
