#pragma once

#include <windows.h>

#include <vector>

#include "RegistrarScript.h"

/// Writes what the trees tell into the registry.
///
/// A key marked ForceRemove is emptied first; one marked Delete is removed and not written.
/// Errors: the first failure, with all that these trees wrote undone again.
HRESULT RunRegistrarTrees(const std::vector<ScriptTree>& trees) noexcept;

/// Takes back what RunRegistrarTrees wrote.
///
/// A key marked ForceRemove goes with all below it; one marked NoRemove stays and loses only the
/// values that the script names; any other goes unless foreign keys stand below it. What is not
/// there is passed over. Errors: the first failure; the rest is removed all the same.
HRESULT UndoRegistrarTrees(const std::vector<ScriptTree>& trees) noexcept;

/// While it lives, the classes root of this process is the user's own (HKCU\Software\Classes), for
/// this code and for the system's alike.
///
/// Thread: the whole process sees the change: for registration runs only.
class CPerUserClasses final
{
public:
    CPerUserClasses() noexcept;
    CPerUserClasses(const CPerUserClasses&) = delete;
    CPerUserClasses& operator=(const CPerUserClasses&) = delete;
    ~CPerUserClasses();

    /// S_OK once the view is switched, else why not.
    [[nodiscard]] HRESULT Result() const noexcept { return m_result; }

private:
    HRESULT m_result;
};
