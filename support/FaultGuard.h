#pragma once

#include <windows.h>

/// Runs `work(context)` and survives a hardware fault inside it, such as a mail provider's access
/// violation. Answers the exception code of the fault, 0 when there was none.
///
/// A fault unwinds nothing: no destructor of the frames below runs, so locks stay held and memory
/// stays allocated. Keep what `work` does to the foreign call itself, with plain data around it.
/// C++ exceptions of our own compiler pass through to the caller's handlers.
/// Thread: any.
DWORD RunGuarded(void (*work)(void* context), void* context);
