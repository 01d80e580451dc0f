#pragma once

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <string>
#include <vector>

/// One event as a sink got it.
struct SinkCall
{
    DISPID id;
    std::string iid; ///< "null" or "other"
    LCID locale;
    WORD flags;
    std::vector<VARTYPE> types;       ///< of the arguments, in the order of the array
    std::vector<std::wstring> values; ///< texts as they are, numbers in decimal
};

/// An event sink that keeps what it gets. Lives on the stack: counts references, and frees nothing.
///
/// Thread: one.
class CRecordingSink final : public IDispatch
{
public:
    /// `answers` is the interface that it admits to, beside IUnknown: the event interface's or
    /// IID_IDispatch, or IID_NULL for none.
    explicit CRecordingSink(REFIID answers) : m_answers(answers) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE
    GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id,
                                     REFIID iid,
                                     LCID locale,
                                     WORD flags,
                                     DISPPARAMS* parameters,
                                     VARIANT* result,
                                     EXCEPINFO* exception,
                                     UINT* wrongArgument) noexcept override;

    std::vector<SinkCall> calls;
    HRESULT answer = S_OK;          ///< of every Invoke
    std::function<void()> onInvoke; ///< runs within it
    LONG references = 1;            ///< the test's own included

private:
    const IID m_answers;
};
