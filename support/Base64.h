#pragma once

#include <cstddef>
#include <string>

#include "PlatformTypes.h"

/// The base64 family that the executable exports.
///
/// Shape:  the standard alphabet with padding, no line breaks at any length. Nothing here reports bad
///         input: whatever stands outside the alphabet decodes as six zero bits, and padding shortens
///         its group wherever it stands.
/// Thread: any.
extern "C"
{
    /// Room for the base64 of `length` bytes, at least four characters; `source` is not looked at.
    std::size_t xbase64_calc_encode_buf_size(const char* source, std::size_t length) noexcept;

    /// Writes base64 without a terminator and gives the number of characters. `destinationSize` is
    /// not looked at: the destination has to be as large as told above.
    std::size_t xbase64_encode(const char* source,
                               std::size_t length,
                               char* destination,
                               std::size_t destinationSize) noexcept;

    /// Gives the number of bytes. A tail of fewer than four characters is ignored. Three bytes are
    /// stored for each group of four characters whatever it holds, and `destinationSize` is not
    /// looked at: the destination needs that room.
    std::size_t xbase64_decode(const char* source,
                               std::size_t length,
                               char* destination,
                               std::size_t destinationSize) noexcept;

    /// Callers of old make the decode table before they decode. It is a constant now, and this does
    /// nothing.
    void helper_xbase64_init_decode_table() noexcept;

    /// Decodes terminated text: zeroes `*size` bytes of the destination, decodes, and sets `*size` to
    /// the number of bytes. Always 1. The destination needs room as for xbase64_decode.
    int DecodeBase64(const char* text, BYTE* destination, ULONG* size) noexcept;
}

/// Base64 of `length` bytes; empty for null bytes.
std::string EncodeBase64(const BYTE* bytes, ULONG length);

void Base64EncodeForAString(const std::string& plain, std::string& encoded);

/// False for an empty input, otherwise true; `plain` gets the decoded bytes appended.
bool Base64DecodeForAString(const std::string& encoded, std::string& plain);

/// The wide forms work on narrow text of the system code page: what the code page lacks does not
/// survive, and the base64 of a wide text is that of its narrow text. The plain text between the two
/// is wiped before its memory is given back.
void Base64EncodeForWString(const WString& plain, WString& encoded);

/// False for an empty input, otherwise true.
bool Base64DecodeForWString(const WString& encoded, WString& plain);
