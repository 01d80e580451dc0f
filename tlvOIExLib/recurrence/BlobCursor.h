#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "PlatformTypes.h"

/// Walks over a stored block from any position, and cannot read outside it.
///
/// Shape:  little-endian, read byte by byte. A byte behind the end reads as 0, and the cursor moves
///         all the same, so that a check that follows sees how far the data was asked to reach.
/// Owner:  borrows the block.
class CBlobCursor
{
public:
    CBlobCursor(std::span<const std::uint8_t> blob, std::uint64_t position) noexcept
        : m_blob(blob), m_position(position)
    {
    }

    [[nodiscard]] std::uint64_t Position() const noexcept { return m_position; }
    [[nodiscard]] bool IsPastEnd() const noexcept { return m_position > m_blob.size(); }
    /// Whether `count` more bytes exist.
    [[nodiscard]] bool Has(std::uint64_t count) const noexcept
    {
        return m_position <= m_blob.size() && count <= m_blob.size() - m_position;
    }

    void Skip(std::uint64_t count) noexcept { m_position += count; }
    std::uint16_t ReadU16() noexcept { return static_cast<std::uint16_t>(Read(2)); }
    std::uint32_t ReadU32() noexcept { return Read(4); }

    /// The next number without moving.
    [[nodiscard]] std::uint32_t PeekU32() const noexcept { return CBlobCursor(*this).Read(4); }

    /// Reads `units` UTF-16 code units and cuts the text at the first zero unit. Moves over all.
    WString ReadText(std::uint32_t units)
    {
        const std::uint64_t end = m_position + 2 * std::uint64_t{units};
        WString text;
        while (Has(2) && m_position < end)
        {
            const std::uint16_t unit = ReadU16();
            if (unit == 0)
            {
                break;
            }
            text.push_back(static_cast<WCHAR>(unit));
        }
        m_position = end;
        return text;
    }

private:
    std::uint32_t Read(std::uint32_t bytes) noexcept
    {
        std::uint32_t value = 0;
        const std::uint64_t left = m_position < m_blob.size() ? m_blob.size() - m_position : 0;
        const auto present = static_cast<std::uint32_t>(std::min<std::uint64_t>(bytes, left));
        for (std::uint32_t i = 0; i < present; ++i)
        {
            value |= std::uint32_t{m_blob[m_position + i]} << (8 * i);
        }
        m_position += bytes;
        return value;
    }

    std::span<const std::uint8_t> m_blob;
    std::uint64_t m_position;
};
