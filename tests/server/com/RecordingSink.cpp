#include "RecordingSink.h"

HRESULT CRecordingSink::QueryInterface(REFIID iid, void** object) noexcept
{
    *object = nullptr;
    if (!IsEqualIID(iid, __uuidof(IUnknown)) && !IsEqualIID(iid, m_answers))
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IDispatch*>(this);
    return S_OK;
}

ULONG CRecordingSink::AddRef() noexcept
{
    return static_cast<ULONG>(++references);
}

ULONG CRecordingSink::Release() noexcept
{
    return static_cast<ULONG>(--references);
}

HRESULT CRecordingSink::Invoke(DISPID id,
                               REFIID iid,
                               LCID locale,
                               WORD flags,
                               DISPPARAMS* parameters,
                               VARIANT*,
                               EXCEPINFO*,
                               UINT*) noexcept
{
    SinkCall call{id, IsEqualIID(iid, IID_NULL) ? "null" : "other", locale, flags, {}, {}};
    for (UINT i = 0; i < parameters->cArgs; i++)
    {
        const VARIANTARG& argument = parameters->rgvarg[i];
        call.types.push_back(argument.vt);
        if (argument.vt == VT_BSTR)
        {
            call.values.emplace_back(argument.bstrVal, SysStringLen(argument.bstrVal));
        }
        else
        {
            call.values.push_back(argument.vt == VT_I4 ? std::to_wstring(argument.lVal)
                                                       : std::to_wstring(argument.ulVal));
        }
    }
    calls.push_back(call);
    if (onInvoke)
    {
        onInvoke();
    }
    return answer;
}
