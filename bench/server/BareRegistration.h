#pragma once

#include <string>

/// Registers the bare COM server for as long as it lives. For the machine: Wine 8 does not look for
/// classes among those of the user.
class CBareRegistration
{
public:
    /// `path` is that of the executable.
    explicit CBareRegistration(const std::wstring& path);
    CBareRegistration(const CBareRegistration&) = delete;
    CBareRegistration& operator=(const CBareRegistration&) = delete;
    ~CBareRegistration();
};
