#pragma once

#include <windows.h>

#include <vector>

/// Puts a function of the test in the place of a system function that this program binds by name, for as
/// long as it lives. Only calls from this program's own image are caught, not those of libraries.
///
/// Thread: the test's, while no other thread calls the function.
/// Errors: fails the test when the program does not bind the function.
class CPatchedImport final
{
public:
    template <typename Fn>
    CPatchedImport(const char* name, Fn* replacement)
        : CPatchedImport(name, reinterpret_cast<ULONG_PTR>(replacement))
    {
    }
    CPatchedImport(const CPatchedImport&) = delete;
    CPatchedImport& operator=(const CPatchedImport&) = delete;
    ~CPatchedImport();

private:
    CPatchedImport(const char* name, ULONG_PTR replacement);

    struct Place
    {
        ULONG_PTR* bound;
        ULONG_PTR before;
    };
    std::vector<Place> m_places;
};
