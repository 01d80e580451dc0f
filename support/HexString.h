#pragma once

#include <cstddef>
#include <memory>

/// A dump of a range of memory as text, for debugging.
///
/// Shape:  a line for each 16 bytes: the low half of the address in eight digits, " : ", two digits
///         and a blank for each byte, and from column 60 the bytes as characters, in which zeros and
///         line feeds show as blanks. Lower-case digits; each line ends with a line feed. An empty
///         range gives an empty text.
/// Owner:  owns the text that the conversion hands out.
class CHexString
{
public:
    CHexString(const void* start, std::size_t length);
    CHexString(const void* start, const void* end);

    // Not explicit: callers hand the object itself to functions that take text.
    // NOLINTNEXTLINE(google-explicit-constructor)
    operator char*() const noexcept { return m_text.get(); }

private:
    std::unique_ptr<char[]> m_text;
};
