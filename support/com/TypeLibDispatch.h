#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>

#include "ComRef.h"

/// IDispatch of a dual interface, taken from a type library that some file carries.
///
/// The library is read from the file itself and not looked up in the registry, so that late binding
/// works however the server was registered.
///
/// Thread: the apartment of the object that uses it. The library is read on first use.
class CTypeLibDispatch final
{
public:
    /// `file` is a module with the library as its first resource, or a library's own file.
    CTypeLibDispatch(std::wstring file, REFIID iid) : m_file(std::move(file)), m_iid(iid) {}

    HRESULT GetTypeInfoCount(UINT* count) noexcept;
    /// Errors: DISP_E_BADINDEX for any index but 0; what reading the library answers.
    HRESULT GetTypeInfo(UINT index, ITypeInfo** info) noexcept;
    HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
    /// `self` is the interface that the library describes, of the object to call.
    HRESULT Invoke(IDispatch* self,
                   DISPID id,
                   REFIID reserved,
                   WORD flags,
                   DISPPARAMS* parameters,
                   VARIANT* result,
                   EXCEPINFO* exception,
                   UINT* wrongArgument) noexcept;

private:
    HRESULT Load() noexcept;

    const std::wstring m_file;
    const IID m_iid;
    CComRef<ITypeInfo> m_info;
};
