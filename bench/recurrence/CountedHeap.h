#pragma once

#include <cstddef>

/// Bytes that operator new has given out since the start of this program.
std::size_t HeapBytesAsked() noexcept;
