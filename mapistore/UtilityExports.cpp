#include <windows.h>

#include <objbase.h>

#include "FileStream.h"
#include "Object.h"

// The utility functions that the system's mapi32.dll passes on to a mail client's library. They stand
// on the interfaces and buffers alone, as an application could write them itself, so no fault plan
// knows them; what they allocate and open is in the ledger under the operations that they call.

using namespace mapistore;

namespace
{

using ProvideComponent = UINT(WINAPI*)(LPCSTR, LPCSTR, DWORD, LPSTR, DWORD*);

constexpr DWORD kInstallDefault = 0;
constexpr DWORD kUseExisting = ~DWORD{0};

SPropValue* FindIn(SPropValue* values, ULONG count, ULONG tag)
{
    for (ULONG i = 0; values != nullptr && i < count; ++i)
    {
        const bool sameType =
            PROP_TYPE(tag) == PT_UNSPECIFIED || PROP_TYPE(values[i].ulPropTag) == PROP_TYPE(tag);
        if (PROP_ID(values[i].ulPropTag) == PROP_ID(tag) && sameType)
        {
            return &values[i];
        }
    }
    return nullptr;
}

HRESULT SetUp(LPMAPITABLE table, LPSPropTagArray tags, LPSRestriction res, LPSSortOrderSet order)
{
    HRESULT hr = tags != nullptr ? table->SetColumns(tags, TBL_BATCH) : S_OK;
    if (SUCCEEDED(hr) && res != nullptr)
    {
        hr = table->Restrict(res, TBL_BATCH);
    }
    if (SUCCEEDED(hr) && order != nullptr)
    {
        hr = table->SortTable(order, TBL_BATCH);
    }
    return SUCCEEDED(hr) ? table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr) : hr;
}

} // namespace

extern "C"
{

    void WINAPI FreeProws(LPSRowSet rows)
    {
        for (ULONG i = 0; rows != nullptr && i < rows->cRows; ++i)
        {
            MAPIFreeBuffer(rows->aRow[i].lpProps);
        }
        MAPIFreeBuffer(rows);
    }

    void WINAPI FreePadrlist(LPADRLIST list)
    {
        for (ULONG i = 0; list != nullptr && i < list->cEntries; ++i)
        {
            MAPIFreeBuffer(list->aEntries[i].rgPropVals);
        }
        MAPIFreeBuffer(list);
    }

    SCODE WINAPI ScInitMapiUtil(ULONG flags)
    {
        return flags == 0 ? S_OK : MAPI_E_UNKNOWN_FLAGS;
    }

    void WINAPI DeinitMapiUtil(void)
    {
        // Nothing is set up for the utility functions alone.
    }

    HRESULT WINAPI HrThisThreadAdviseSink(LPMAPIADVISESINK sink, LPMAPIADVISESINK* out)
    {
        // The library calls every sink on its own thread, so the sink itself is what it asks for.
        if (sink == nullptr || out == nullptr)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        sink->AddRef();
        *out = sink;
        return S_OK;
    }

    LPMALLOC WINAPI MAPIGetDefaultMalloc(void)
    {
        IMalloc* allocator = nullptr;
        return CoGetMalloc(1, &allocator) == S_OK ? allocator : nullptr;
    }

    HRESULT WINAPI MAPIOpenLocalFormContainer(LPVOID* container)
    {
        ClearOut(container);
        return MAPI_E_NO_SUPPORT;
    }

    HRESULT WINAPI WrapCompressedRTFStream(LPSTREAM, ULONG, LPSTREAM* stream)
    {
        ClearOut(stream);
        return MAPI_E_NO_SUPPORT;
    }

    HRESULT WINAPI HrQueryAllRows(LPMAPITABLE table,
                                  LPSPropTagArray tags,
                                  LPSRestriction res,
                                  LPSSortOrderSet order,
                                  LONG most,
                                  LPSRowSet* rows)
    {
        ClearOut(rows);
        if (table == nullptr || rows == nullptr || most < 0)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        HRESULT hr = SetUp(table, tags, res, order);
        LPSRowSet all = nullptr;
        if (SUCCEEDED(hr))
        {
            hr = table->QueryRows(most != 0 && most < INT32_MAX ? most + 1 : INT32_MAX, 0, &all);
        }
        if (SUCCEEDED(hr) && most != 0 && all->cRows > static_cast<ULONG>(most))
        {
            FreeProws(all);
            return MAPI_E_TABLE_TOO_BIG;
        }
        if (SUCCEEDED(hr))
        {
            *rows = all;
        }
        return hr;
    }

    HRESULT WINAPI HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* value)
    {
        ClearOut(value);
        if (object == nullptr || value == nullptr)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        SPropTagArray tags{1, {tag}};
        ULONG count = 0;
        LPSPropValue got = nullptr;
        HRESULT hr = object->GetProps(&tags, 0, &count, &got);
        if (SUCCEEDED(hr) && PROP_TYPE(got->ulPropTag) == PT_ERROR)
        {
            hr = got->Value.err;
            MAPIFreeBuffer(got);
        }
        else if (SUCCEEDED(hr))
        {
            *value = got;
            hr = S_OK;
        }
        return hr;
    }

    HRESULT WINAPI HrSetOneProp(LPMAPIPROP object, LPSPropValue value)
    {
        if (object == nullptr || value == nullptr)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        LPSPropProblemArray problems = nullptr;
        HRESULT hr = object->SetProps(1, value, &problems);
        if (SUCCEEDED(hr) && problems != nullptr)
        {
            hr = problems->aProblem[0].scode;
        }
        MAPIFreeBuffer(problems);
        return hr;
    }

    WINBOOL WINAPI FPropExists(LPMAPIPROP object, ULONG tag)
    {
        LPSPropTagArray tags = nullptr;
        if (object == nullptr || FAILED(object->GetPropList(0, &tags)))
        {
            return FALSE;
        }
        bool found = false;
        for (ULONG i = 0; i < tags->cValues && !found; ++i)
        {
            SPropValue value{};
            value.ulPropTag = tags->aulPropTag[i];
            found = FindIn(&value, 1, tag) != nullptr;
        }
        MAPIFreeBuffer(tags);
        return found ? TRUE : FALSE;
    }

    LPSPropValue WINAPI PpropFindProp(LPSPropValue values, ULONG count, ULONG tag)
    {
        return FindIn(values, count, tag);
    }

    LPSPropValue WINAPI LpValFindProp(ULONG tag, ULONG count, LPSPropValue values)
    {
        // By the identifier alone, whatever type the value has.
        return FindIn(values, count, PROP_TAG(PT_UNSPECIFIED, PROP_ID(tag)));
    }

    ULONG WINAPI UlAddRef(LPVOID object)
    {
        return object != nullptr ? static_cast<IUnknown*>(object)->AddRef() : 0;
    }

    ULONG WINAPI UlRelease(LPVOID object)
    {
        return object != nullptr ? static_cast<IUnknown*>(object)->Release() : 0;
    }

    HRESULT WINAPI OpenStreamOnFile(
        LPALLOCATEBUFFER, LPFREEBUFFER, ULONG flags, LPTSTR path, LPTSTR prefix, LPSTREAM* stream)
    {
        ClearOut(stream);
        return stream != nullptr ? OpenFileStream(flags, path, prefix, stream)
                                 : MAPI_E_INVALID_PARAMETER;
    }

    WINBOOL WINAPI
    FGetComponentPath(LPCSTR component, LPCSTR qualifier, LPSTR path, DWORD cbPath, WINBOOL install)
    {
        if (component == nullptr || path == nullptr || cbPath == 0)
        {
            return FALSE;
        }
        path[0] = '\0';
        HMODULE installer = LoadLibraryW(L"msi.dll");
        if (installer == nullptr)
        {
            return FALSE;
        }
        const auto provide = reinterpret_cast<ProvideComponent>(reinterpret_cast<void (*)()>(
            GetProcAddress(installer, "MsiProvideQualifiedComponentA")));
        const DWORD mode = install != FALSE ? kInstallDefault : kUseExisting;
        const bool found = provide != nullptr &&
                           provide(component, qualifier, mode, path, &cbPath) == ERROR_SUCCESS;
        FreeLibrary(installer);
        return found ? TRUE : FALSE;
    }

    HRESULT WINAPI DllGetClassObject(REFCLSID, REFIID, LPVOID* object)
    {
        if (object == nullptr)
        {
            return E_INVALIDARG;
        }
        *object = nullptr;
        return CLASS_E_CLASSNOTAVAILABLE;
    }

} // extern "C"
