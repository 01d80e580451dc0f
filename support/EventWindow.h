#pragma once

#include <windows.h>

/// How the lower layers reach the hidden event window, which the client monitor above them owns.

/// Gives the window, making it on the first call if need be; null when there is none (creation
/// failed, or the monitor is gone).
/// Thread: any. The provider must not trace before its window can be had by a second call, or the
///         trace calls it again without end.
using EventWindowProvider = HWND (*)() noexcept;

/// Installs the provider and returns the one before it; null means that there is no window.
EventWindowProvider SetEventWindowProvider(EventWindowProvider provider) noexcept;

/// The window as the installed provider gives it, null without one.
HWND EventWindow() noexcept;
