#pragma once

#include <memory>
#include <utility>

#include "PlatformTypes.h"

/// A text that is never changed and is shared by whoever copies it: all regular instances of a series
/// have the same subject and location.
///
/// Owner:  the copies, together.
/// Thread: any; the text itself is constant.
class CSharedText
{
public:
    CSharedText() = default;
    explicit CSharedText(WString text) : m_text(std::make_shared<const WString>(std::move(text))) {}

    [[nodiscard]] const WString& Get() const noexcept
    {
        static const WString s_empty;
        return m_text != nullptr ? *m_text : s_empty;
    }

    // Not explicit: an instance's text goes wherever text goes.
    // NOLINTNEXTLINE(google-explicit-constructor)
    operator const WString&() const noexcept { return Get(); }
    // NOLINTNEXTLINE(google-explicit-constructor)
    operator WStringView() const noexcept { return Get(); }

    friend bool operator==(const CSharedText& text, WStringView other) noexcept
    {
        return text.Get() == other;
    }

private:
    std::shared_ptr<const WString> m_text; // null is the empty text
};
