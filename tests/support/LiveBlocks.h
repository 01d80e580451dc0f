#pragma once

/// How many blocks of the C heap are in use in this program. It counts what the program itself
/// allocates, by malloc or by new.
///
/// The program has to be linked with dt_count_blocks(target).
long LiveBlocks() noexcept;
