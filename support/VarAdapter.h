#pragma once

#include <string_view>

/// One value of the raw trace writer.
///
/// Owner:  borrows its text, which outlives the call that it is passed to.
class CVarAdapter
{
public:
    explicit CVarAdapter(std::string_view text) noexcept : m_text(text) {}
    CVarAdapter(const CVarAdapter&) = default;
    CVarAdapter& operator=(const CVarAdapter&) = default;
    virtual ~CVarAdapter() = default;

    [[nodiscard]] std::string_view Text() const noexcept { return m_text; }

private:
    std::string_view m_text;
};
