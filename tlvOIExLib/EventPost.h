#pragma once

#include <windows.h>

#include "EventText.h"
#include "PlatformTypes.h"

/// Sends a document to the event window, in a block that the window frees.
///
/// `handler` names the handler in the trace line of a failed allocation; null keeps that silent.
/// Errors: without memory nothing is posted. Without a window, or when its queue is full, the
///         document is lost.
/// Thread: any but the window's own has a use for it.
void PostEventText(UINT message, WPARAM wParam, WStringView text, const char* handler) noexcept;

/// The same with a text that stands in such a block already. A lost one counts as a failed allocation.
void PostEventText(UINT message, WPARAM wParam, CEventText text, const char* handler) noexcept;

/// Sends a status, which travels as a number in place of a block.
void PostEventStatus(UINT message, WPARAM wParam, ULONG status) noexcept;
