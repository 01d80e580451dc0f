#include "TimeRecordInvoke.h"

namespace
{

constexpr DISPID kListAppointment = 5;
constexpr DISPID kListRecurrentInstance = 6;

// The record's identifier in the interface description; the generated header does not carry it.
constexpr GUID kTimeRecord = {
    0x39320E1F, 0x136C, 0x4A19, {0xAE, 0xF8, 0x82, 0xB9, 0x4E, 0x67, 0x40, 0x05}};

/// The record that an argument holds, null when it holds none of this kind.
oiexMapiFileTime* TimeOf(const VARIANTARG& argument) noexcept
{
    const VARIANTARG& value = argument.vt == (VT_VARIANT | VT_BYREF) ? *argument.pvarVal : argument;
    GUID kind{};
    if ((value.vt & ~VT_BYREF) != VT_RECORD || value.pRecInfo == nullptr ||
        FAILED(value.pRecInfo->GetGuid(&kind)) || !IsEqualGUID(kind, kTimeRecord))
    {
        return nullptr;
    }
    return static_cast<oiexMapiFileTime*>(value.pvRecord);
}

HRESULT Answer(HRESULT called, ULONG sequence, VARIANT* result, EXCEPINFO* exception) noexcept
{
    if (FAILED(called))
    {
        if (exception != nullptr)
        {
            *exception = {};
            exception->scode = called;
        }
        return DISP_E_EXCEPTION;
    }
    if (result != nullptr)
    {
        result->vt = VT_UI4;
        result->ulVal = sequence;
    }
    return S_OK;
}

} // namespace

HRESULT InvokeWithTimeRecords(IMapiDtClient& client,
                              DISPID id,
                              const DISPPARAMS& parameters,
                              VARIANT* result,
                              EXCEPINFO* exception) noexcept
{
    if (id != kListAppointment && id != kListRecurrentInstance)
    {
        return DISP_E_MEMBERNOTFOUND;
    }
    if (parameters.cNamedArgs != 0)
    {
        return DISP_E_NONAMEDARGS;
    }
    if (parameters.cArgs != (id == kListAppointment ? 2U : 3U))
    {
        return DISP_E_BADPARAMCOUNT;
    }
    oiexMapiFileTime* const end = TimeOf(parameters.rgvarg[0]); // arguments come last first
    oiexMapiFileTime* const start = TimeOf(parameters.rgvarg[1]);
    if (start == nullptr || end == nullptr)
    {
        return DISP_E_TYPEMISMATCH;
    }
    ULONG sequence = 0;
    if (id == kListAppointment)
    {
        const HRESULT hr = client.ListAppointment(start, end, &sequence);
        return Answer(hr, sequence, result, exception);
    }
    VARIANT text;
    VariantInit(&text);
    const HRESULT converted = VariantChangeType(&text, &parameters.rgvarg[2], 0, VT_BSTR);
    if (FAILED(converted))
    {
        return converted;
    }
    const HRESULT hr = client.ListRecurrentInstance(text.bstrVal, start, end, &sequence);
    VariantClear(&text);
    return Answer(hr, sequence, result, exception);
}
