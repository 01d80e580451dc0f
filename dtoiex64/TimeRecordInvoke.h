#pragma once

#include <windows.h>

#include <oleauto.h>

#include "dtOIEx64_i.h"

/// Late binding of the two methods that take times as records, for an automation library whose own
/// dispatch does not pass pointers to records.
///
/// Wine 8 answers E_NOTIMPL there, where Windows makes the call. Drop this when the test
/// TimesArePassedAsRecordsByLateBinding passes without it.
///
/// Shape:  ListAppointment(start, end) and ListRecurrentInstance(text, start, end); a time is a
///         VT_RECORD of oiexMapiFileTime, by reference or not. The result is the sequence id, VT_UI4.
/// Errors: DISP_E_MEMBERNOTFOUND for any other method, DISP_E_BADPARAMCOUNT, DISP_E_TYPEMISMATCH,
///         DISP_E_NONAMEDARGS; DISP_E_EXCEPTION with the method's own failure in `exception`.
HRESULT InvokeWithTimeRecords(IMapiDtClient& client,
                              DISPID id,
                              const DISPPARAMS& parameters,
                              VARIANT* result,
                              EXCEPINFO* exception) noexcept;
