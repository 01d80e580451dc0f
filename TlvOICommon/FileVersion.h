#pragma once

#include "PlatformTypes.h"

/// Sets `text` to the version that a program file states in its first language. Answers 1 on
/// success; else 0, with `text` left alone.
int GetFileVersionText(const WCHAR* path, WString& text);
