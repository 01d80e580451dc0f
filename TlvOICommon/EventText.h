#pragma once

#include <cstddef>

#include "PlatformTypes.h"

/// A text on its way to the client: built in the very block that goes to the event window, so that a
/// document of many megabytes stands in memory once until it is fired.
///
/// Shape:  UTF-16 with a terminator behind it.
/// Owner:  the block, of the general allocator, until Release.
/// Errors: nothing throws. Without memory for it the text is lost: it has no units then, and IsLost tells.
/// Thread: one at a time.
class CEventText final
{
public:
    CEventText() noexcept = default;
    /// Room for `length` units that are to be written.
    explicit CEventText(std::size_t length) noexcept;
    explicit CEventText(WStringView text) noexcept;
    CEventText(CEventText&& other) noexcept;
    CEventText& operator=(CEventText&& other) noexcept;
    CEventText(const CEventText&) = delete;
    CEventText& operator=(const CEventText&) = delete;
    ~CEventText();

    [[nodiscard]] bool IsLost() const noexcept { return m_isLost; }
    [[nodiscard]] WStringView View() const noexcept { return {m_block, m_length}; }
    /// Null without a block: a default text has none, and a lost one.
    [[nodiscard]] WCHAR* Data() noexcept { return m_block; }

    /// Hands the block to the caller, who frees it by at_mem_free; null without a block.
    [[nodiscard]] WCHAR* Release() noexcept;

private:
    WCHAR* m_block = nullptr;
    std::size_t m_length = 0;
    bool m_isLost = false;
};
