#pragma once

#include <windows.h>

#include <mutex>
#include <string>
#include <vector>

/// Collects what this process sends to the debugger, for as long as it lives. One at a time.
///
/// The text travels as an exception that the sender handles itself; a vectored handler sees it pass.
/// Thread: texts of all threads are collected.
class CDebuggerText final
{
public:
    CDebuggerText();
    CDebuggerText(const CDebuggerText&) = delete;
    CDebuggerText& operator=(const CDebuggerText&) = delete;
    ~CDebuggerText();

    std::vector<std::string> Texts() const;

private:
    static LONG CALLBACK SeeException(EXCEPTION_POINTERS* pointers);

    static CDebuggerText* s_instance;

    mutable std::mutex m_textsLock; // guards m_texts
    std::vector<std::string> m_texts;
    void* m_handler;
};
