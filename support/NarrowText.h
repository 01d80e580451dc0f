#pragma once

#include <string>
#include <string_view>

#include "PlatformTypes.h"

/// Turns wide text into narrow text for traces and the like.
///
/// Shape:  on Windows the system code page (CP_ACP), elsewhere UTF-8.
/// Thread: any. Errors: what the code page lacks becomes its default character; never fails.
std::string NarrowText(WStringView text);

/// The way back, by the same code page.
WString WidenText(std::string_view text);

/// The way back by the code page of the calling thread (CP_THREAD_ACP), which narrow properties of
/// the mail system are in.
WString WidenThreadText(std::string_view text);
