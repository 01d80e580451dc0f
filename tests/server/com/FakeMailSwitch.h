#pragma once

#include <windows.h>

#include <atomic>
#include <memory>
#include <string>

#include "Handle.h"
#include "MailInterface.h"

/// A mail system that answers at once, for tests of what stands in front of the work thread.
///
/// Thread: the settings are made before the work thread is, except those that are atomic.
struct FakeMail
{
    std::atomic<ULONG> mailTypeInForce{MailTypeOutlook};
    std::atomic<ULONG> initAnswer{0};
    std::atomic<ULONG> lastMailType{0};
    std::atomic<ULONG> lastInitType{0};
    std::atomic<int> initCalls{0};
    std::atomic<int> freeLibCalls{0};
    std::atomic<int> clearCalls{0};
    CHandle called{CreateEventW(nullptr, FALSE, FALSE, nullptr)}; ///< set behind Init and FreeLib
    std::atomic<std::uint64_t> listStart{0};
    std::atomic<std::uint64_t> listEnd{0};
};

/// Waits until `calls` has left the value `before`.
void WaitForCall(const std::atomic<int>& calls, int before) noexcept;

/// The settings and counts of the switches that MakeFakeMailSwitch makes.
FakeMail& TheFakeMail() noexcept;

/// A MailSwitchFactory.
std::unique_ptr<IMailSwitch> MakeFakeMailSwitch() noexcept;
