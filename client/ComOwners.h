#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>
#include <utility>

namespace dtclient
{
/// Owns one COM reference.
///
/// Thread: that of the interface pointer.
template <class T>
class CComRef
{
public:
    CComRef() = default;
    CComRef(const CComRef&) = delete;
    CComRef& operator=(const CComRef&) = delete;
    CComRef(CComRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    CComRef& operator=(CComRef&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_object = std::exchange(other.m_object, nullptr);
        }
        return *this;
    }
    ~CComRef() { Reset(); }

    /// The slot for a call that gives a reference; what was held is released first.
    T** Put()
    {
        Reset();
        return &m_object;
    }

    /// The same for calls that give any interface, such as CoCreateInstance.
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    void Reset()
    {
        if (T* const object = std::exchange(m_object, nullptr))
        {
            object->Release();
        }
    }

    [[nodiscard]] T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

/// Owns one BSTR.
class CBstr
{
public:
    CBstr() = default;
    explicit CBstr(std::wstring_view text)
        : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))
    {
    }
    CBstr(const CBstr&) = delete;
    CBstr& operator=(const CBstr&) = delete;
    ~CBstr() { SysFreeString(m_text); }

    [[nodiscard]] BSTR Get() const { return m_text; }

    BSTR* Put()
    {
        SysFreeString(m_text);
        m_text = nullptr;
        return &m_text;
    }

    [[nodiscard]] std::wstring_view View() const
    {
        return m_text == nullptr ? std::wstring_view()
                                 : std::wstring_view(m_text, SysStringLen(m_text));
    }

private:
    BSTR m_text = nullptr;
};

/// Owns one kernel object.
class CHandle
{
public:
    explicit CHandle(HANDLE handle) : m_handle(handle) {}
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle()
    {
        if (m_handle != nullptr)
        {
            CloseHandle(m_handle);
        }
    }

    [[nodiscard]] HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};
} // namespace dtclient
