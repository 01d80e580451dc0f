#pragma once

#include <windows.h>

/// A directory, and room for the name of a file behind it. No heap: it is made while the process dies.
///
/// Shape: the directory ends with a backslash, or is empty, and names then stand in the working
///        directory.
struct CrashPath
{
    wchar_t text[MAX_PATH + 64] = {};
    unsigned cchDirectory = 0;

    /// The path of the file `name`, valid until the next call.
    const wchar_t* With(const wchar_t* name) noexcept;
};

/// The directory of trace and dump: the user's roaming application data, made if it is missing, and
/// "\Talvo Connect\", made as well. Empty if the system does not tell where that is.
void FindCrashDirectory(CrashPath& path) noexcept;

/// Copies the trace file over the start of the copy, which is made if it is missing and never cut. The
/// trace library may have the file open meanwhile. Without a trace file the copy is not touched.
/// Thread: one, once: the block between the two files is static.
void CopyTraceFile(CrashPath& path, const wchar_t* from, const wchar_t* to) noexcept;
