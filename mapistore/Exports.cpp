#include <algorithm>
#include <cstring>

#include "AddressBook.h"
#include "Buffer.h"
#include "MapiStoreControl.h"
#include "MapiTags64.h"
#include "ProfileAdmin.h"
#include "Session.h"
#include "Text.h"

using namespace mapistore;

namespace
{

thread_local ULONG g_comUsers = 0; // of this thread

/// Runs a function of the library with the fault plan around it.
template <class Body>
HRESULT Call(Operation operation, Body&& body) noexcept
{
    try
    {
        FaultOutcome outcome;
        if (Runtime().Faults().Concerns(operation))
        {
            outcome = Runtime().Faults().Enter(operation, {});
        }
        if (outcome.fails)
        {
            return outcome.status;
        }
        const HRESULT hr = body();
        return outcome.gives ? outcome.status : hr;
    }
    catch (const CMisuse& misuse)
    {
        Runtime().Ledger().Misuse(operation, misuse.Code(), ToUtf8(misuse.Text()));
        return misuse.Code();
    }
    catch (const CMapiError& error)
    {
        return error.Code();
    }
    catch (const std::bad_alloc&)
    {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    catch (...)
    {
        return MAPI_E_CALL_FAILED;
    }
}

HRESULT Misused(Operation operation, HRESULT hr, const char* why)
{
    Runtime().Ledger().Misuse(operation, hr, why);
    return hr;
}

HRESULT CheckReady(Operation operation)
{
    if (!Runtime().Running() || !CRuntime::ThreadReady())
    {
        return Misused(
            operation, MAPI_E_NOT_INITIALIZED, "on a thread that has not called MAPIInitialize");
    }
    return S_OK;
}

std::wstring NameOf(LPTSTR text, bool unicode)
{
    if (text == nullptr)
    {
        return {};
    }
    return unicode ? std::wstring(text) : FromAnsi(reinterpret_cast<const char*>(text));
}

/// The profile to log on to: the one named, or the default one when the flags ask for it.
const Profile* ChooseProfile(const Document& document, const std::wstring& name, ULONG flags)
{
    for (const Profile& profile : document.profiles)
    {
        const bool asked = name.empty() ? (flags & MAPI_USE_DEFAULT) != 0 && profile.isDefault
                                        : EqualText(profile.name, name);
        if (asked)
        {
            return &profile;
        }
    }
    return nullptr;
}

constexpr ULONG kLogonFlags =
    MAPI_LOGON_UI | MAPI_NEW_SESSION | MAPI_ALLOW_OTHERS | MAPI_EXPLICIT_PROFILE | MAPI_EXTENDED |
    MAPI_USE_DEFAULT | MAPI_FORCE_DOWNLOAD | MAPI_SERVICE_UI_ALWAYS | MAPI_NO_MAIL |
    MAPI_NT_SERVICE | MAPI_PASSWORD_UI | MAPI_TIMEOUT_SHORT | MAPI_UNICODE;

} // namespace

extern "C"
{

    HRESULT WINAPI MAPIInitialize(LPVOID init)
    {
        constexpr Operation kOp = OperationOf("MAPIInitialize");
        const auto* given = static_cast<const MAPIINIT_0*>(init);
        const ULONG flags = given != nullptr ? given->ulFlags : 0;
        // The plan of this run is read while starting, so its faults concern the call that starts it.
        const HRESULT started =
            Runtime().Initialize(given != nullptr ? given->ulVersion : MAPI_INIT_VERSION, flags);
        if (FAILED(started))
        {
            return started;
        }
        const HRESULT hr = Call(kOp, [] { return S_OK; });
        if (FAILED(hr))
        {
            Runtime().Uninitialize();
            return hr;
        }
        if ((flags & kMapiNoCoInit) == 0 &&
            SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)))
        {
            ++g_comUsers;
        }
        return hr;
    }

    void WINAPI MAPIUninitialize(void)
    {
        Call(OperationOf("MAPIUninitialize"), [] { return S_OK; });
        Runtime().Uninitialize();
        if (g_comUsers != 0)
        {
            --g_comUsers;
            CoUninitialize();
        }
    }

    HRESULT WINAPI
    MAPILogonEx(ULONG_PTR, LPTSTR profile, LPTSTR password, ULONG flags, LPMAPISESSION* session)
    {
        ClearOut(session);
        constexpr Operation kOp = OperationOf("MAPILogonEx");
        const HRESULT ready = CheckReady(kOp);
        if (FAILED(ready))
        {
            return ready;
        }
        return Call(kOp, [&]() -> HRESULT {
            if ((flags & ~kLogonFlags) != 0 || (flags & MAPI_EXTENDED) == 0)
            {
                return Misused(
                    kOp, MAPI_E_UNKNOWN_FLAGS, "unknown flags, or none for extended MAPI");
            }
            RequireOut(session);
            const bool unicode = (flags & MAPI_UNICODE) != 0;
            const std::wstring name = NameOf(profile, unicode);
            if (!NameOf(password, unicode).empty())
            {
                return MAPI_E_LOGON_FAILED; // no profile here has a password
            }
            const std::shared_ptr<CStoreFolder> folder = Runtime().StoreFolder();
            const std::scoped_lock hold(folder->Lock());
            const Profile* chosen = ChooseProfile(folder->Data(), name, flags);
            if (chosen == nullptr)
            {
                return MAPI_E_LOGON_FAILED;
            }
            auto* made = new CSession(folder, chosen->name, kOp);
            *session = reinterpret_cast<LPMAPISESSION>(static_cast<mapi64::IMAPISession*>(made));
            return S_OK;
        });
    }

    HRESULT WINAPI MAPIAdminProfiles(ULONG flags, LPPROFADMIN* admin)
    {
        ClearOut(admin);
        constexpr Operation kOp = OperationOf("MAPIAdminProfiles");
        const HRESULT ready = CheckReady(kOp);
        if (FAILED(ready))
        {
            return ready;
        }
        return Call(kOp, [&]() -> HRESULT {
            if (flags != 0)
            {
                return Misused(kOp, MAPI_E_UNKNOWN_FLAGS, "unknown flags");
            }
            RequireOut(admin);
            *admin = new CProfileAdmin(kOp);
            return S_OK;
        });
    }

    SCODE WINAPI MAPIAllocateBuffer(ULONG cb, LPVOID* buffer)
    {
        ClearOut(buffer);
        constexpr Operation kOp = OperationOf("MAPIAllocateBuffer");
        return Call(kOp, [&]() -> HRESULT {
            RequireOut(buffer);
            if (!Runtime().Running())
            {
                return Misused(kOp, MAPI_E_NOT_INITIALIZED, "before MAPIInitialize");
            }
            *buffer = buffers::Allocate(cb, 8, kOp, true, nullptr);
            return S_OK;
        });
    }

    SCODE WINAPI MAPIAllocateMore(ULONG cb, LPVOID object, LPVOID* buffer)
    {
        ClearOut(buffer);
        constexpr Operation kOp = OperationOf("MAPIAllocateMore");
        return Call(kOp, [&]() -> HRESULT {
            RequireOut(buffer);
            buffers::Head* head = buffers::FindHead(object);
            if (head == nullptr)
            {
                return Misused(kOp, MAPI_E_INVALID_PARAMETER, "linked to no live head of a buffer");
            }
            *buffer = buffers::AllocateLinked(head, cb, 8);
            return S_OK;
        });
    }

    ULONG WINAPI MAPIFreeBuffer(LPVOID buffer)
    {
        constexpr Operation kOp = OperationOf("MAPIFreeBuffer");
        if (buffer == nullptr)
        {
            return S_OK;
        }
        return static_cast<ULONG>(Call(kOp, [&]() -> HRESULT {
            std::string problem;
            const bool freed = buffers::Free(buffer, problem);
            if (!problem.empty())
            {
                Misused(kOp, MAPI_E_INVALID_PARAMETER, problem.c_str());
            }
            return freed ? S_OK : MAPI_E_INVALID_PARAMETER;
        }));
    }

    HRESULT WINAPI MapiStoreConfigure(const wchar_t* name, const wchar_t* value)
    {
        try
        {
            return OverrideConfig(name, value) ? S_OK : E_INVALIDARG;
        }
        catch (...)
        {
            return E_OUTOFMEMORY;
        }
    }

    HRESULT WINAPI MapiStoreSetFaults(const char* plan)
    {
        std::string problem;
        const bool good = Runtime().Faults().Parse(plan != nullptr ? plan : "", problem);
        if (!good)
        {
            Runtime().Say(problem);
        }
        return good ? S_OK : E_INVALIDARG;
    }

    void WINAPI MapiStoreGetCounts(MapiStoreCounts* counts)
    {
        const CLedger::Counts held = Runtime().Ledger().Count();
        *counts = {held.handed[0],
                   held.handed[1],
                   held.handed[2],
                   held.left[0],
                   held.left[1],
                   held.left[2],
                   held.misuse};
    }

    ULONG WINAPI MapiStoreGetReport(char* text, ULONG cb)
    {
        const std::string report = Runtime().Report();
        if (text != nullptr && cb != 0)
        {
            const size_t copied = std::min<size_t>(cb - 1, report.size());
            std::memcpy(text, report.data(), copied);
            text[copied] = '\0';
        }
        return static_cast<ULONG>(report.size() + 1);
    }

    void WINAPI MapiStoreDropShells(void)
    {
        Runtime().DropShells();
    }

    HRESULT WINAPI MapiStoreRefresh(void)
    {
        try
        {
            Runtime().StoreFolder()->Refresh();
            return S_OK;
        }
        catch (const CMapiError& error)
        {
            return error.Code();
        }
        catch (...)
        {
            return E_OUTOFMEMORY;
        }
    }

} // extern "C"
