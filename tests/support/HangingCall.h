#pragma once

#include <windows.h>

#include <string>

/// A call of the mail library that hangs by the plan "... hang NAME".
class CHangingCall
{
public:
    explicit CHangingCall(const std::wstring& name);
    CHangingCall(const CHangingCall&) = delete;
    CHangingCall& operator=(const CHangingCall&) = delete;
    ~CHangingCall();

    /// Waits until the call hangs.
    [[nodiscard]] bool WaitUntilReached() const;

    void LetGo() const;

private:
    HANDLE m_reached;
    HANDLE m_goOn;
};
