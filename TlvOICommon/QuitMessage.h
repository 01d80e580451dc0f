#pragma once

#include <windows.h>

/// Posts WM_QUIT to a thread and traces each try at level 3 as "PostThreadMessage return value[%d]",
/// or with a colon behind "value" when `withColon`. While the post fails it tries again every second,
/// without limit: it fails only while the thread has no message queue yet.
void PostQuitTo(DWORD threadId, const char* function, bool withColon);
