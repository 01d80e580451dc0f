#include "TypeLibDispatch.h"

HRESULT CTypeLibDispatch::Load() noexcept
{
    if (m_info)
    {
        return S_OK;
    }
    CComRef<ITypeLib> library;
    const HRESULT hr = LoadTypeLibEx(m_file.c_str(), REGKIND_NONE, library.Put());
    return FAILED(hr) ? hr : library->GetTypeInfoOfGuid(m_iid, m_info.Put());
}

HRESULT CTypeLibDispatch::GetTypeInfoCount(UINT* count) noexcept
{
    if (count == nullptr)
    {
        return E_POINTER;
    }
    *count = 1;
    return S_OK;
}

HRESULT CTypeLibDispatch::GetTypeInfo(UINT index, ITypeInfo** info) noexcept
{
    if (info == nullptr)
    {
        return E_POINTER;
    }
    *info = nullptr;
    if (index != 0)
    {
        return DISP_E_BADINDEX;
    }
    const HRESULT hr = Load();
    if (SUCCEEDED(hr))
    {
        *info = CComRef<ITypeInfo>::Share(m_info.Get()).Detach();
    }
    return hr;
}

HRESULT CTypeLibDispatch::GetIDsOfNames(REFIID reserved,
                                        LPOLESTR* names,
                                        UINT count,
                                        DISPID* ids) noexcept
{
    if (!IsEqualIID(reserved, IID_NULL))
    {
        return DISP_E_UNKNOWNINTERFACE;
    }
    const HRESULT hr = Load();
    return FAILED(hr) ? hr : m_info->GetIDsOfNames(names, count, ids);
}

HRESULT CTypeLibDispatch::Invoke(IDispatch* self,
                                 DISPID id,
                                 REFIID reserved,
                                 WORD flags,
                                 DISPPARAMS* parameters,
                                 VARIANT* result,
                                 EXCEPINFO* exception,
                                 UINT* wrongArgument) noexcept
{
    if (!IsEqualIID(reserved, IID_NULL))
    {
        return DISP_E_UNKNOWNINTERFACE;
    }
    const HRESULT hr = Load();
    return FAILED(hr)
               ? hr
               : m_info->Invoke(self, id, flags, parameters, result, exception, wrongArgument);
}
