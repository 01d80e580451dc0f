#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>
#include <utility>

/// Owner of one BSTR.
///
/// Shape: a null BSTR is an empty text; embedded zeros are kept.
/// Errors: a copy for which there is no memory is null; `IsNull` tells.
class CBstr final
{
public:
    CBstr() noexcept = default;
    explicit CBstr(std::wstring_view text) noexcept
        : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))
    {
    }
    CBstr(const CBstr&) = delete;
    CBstr& operator=(const CBstr&) = delete;
    CBstr(CBstr&& other) noexcept : m_text(other.Detach()) {}
    CBstr& operator=(CBstr&& other) noexcept
    {
        if (this != &other)
        {
            SysFreeString(std::exchange(m_text, other.Detach()));
        }
        return *this;
    }
    ~CBstr() { SysFreeString(m_text); }

    [[nodiscard]] static CBstr Adopt(BSTR text) noexcept
    {
        CBstr owner;
        owner.m_text = text;
        return owner;
    }

    /// The slot for an out parameter; frees what is held first.
    [[nodiscard]] BSTR* Put() noexcept
    {
        SysFreeString(std::exchange(m_text, nullptr));
        return &m_text;
    }

    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }
    [[nodiscard]] BSTR Get() const noexcept { return m_text; }
    [[nodiscard]] bool IsNull() const noexcept { return m_text == nullptr; }

    [[nodiscard]] std::wstring_view View() const noexcept
    {
        return m_text != nullptr ? std::wstring_view(m_text, SysStringLen(m_text))
                                 : std::wstring_view();
    }

private:
    BSTR m_text = nullptr;
};
