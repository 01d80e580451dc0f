#pragma once

#include <cstdint>
#include <vector>

/// A block of bytes taken from the mail system: an entry identifier, an instance key, a stored
/// blob.
///
/// Shape: raw bytes in memory order; at most 4 GiB, since the mail system counts them in 32 bits.
/// Owner: the block owns its bytes; a copy of the block is a copy of the bytes.
using BinaryBlock = std::vector<std::uint8_t>;

/// The size of `block` as the documents and the mail system count it.
inline std::uint32_t BlockSize(const BinaryBlock& block) noexcept
{
    return static_cast<std::uint32_t>(block.size());
}
