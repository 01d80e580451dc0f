#pragma once

/// How many blocks went back to the general allocator since the program started. Null does not count.
int FreedBlocks() noexcept;
