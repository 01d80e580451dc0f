#include "Object.h"

#include "Text.h"

namespace mapistore
{

CObjectCore::CObjectCore(const char* interfaceName, Operation madeBy, Lifeline life)
    : m_name(interfaceName), m_run(Runtime().Run()),
      m_ticket(Runtime().Ledger().Hand(LedgerKind::Interface, interfaceName, madeBy, 0)),
      m_life(std::move(life))
{
}

CObjectCore::~CObjectCore() = default;

ULONG CObjectCore::CoreAddRef() noexcept
{
    ULONG refs = m_refs.load();
    do
    {
        if (refs == 0)
        {
            Note(kNoOperation, MAPI_E_INVALID_OBJECT, "AddRef after the last Release");
            return 0;
        }
    } while (!m_refs.compare_exchange_weak(refs, refs + 1));
    return refs + 1;
}

ULONG CObjectCore::CoreRelease() noexcept
{
    ULONG refs = m_refs.load();
    do
    {
        if (refs == 0)
        {
            Note(kNoOperation, MAPI_E_INVALID_OBJECT, "Release after the last Release");
            return 0;
        }
    } while (!m_refs.compare_exchange_weak(refs, refs - 1));
    if (refs != 1)
    {
        return refs - 1;
    }
    {
        const std::scoped_lock hold(m_callLock);
        Dispose();
    }
    Runtime().Ledger().Return(m_ticket);
    try
    {
        Runtime().Keep(std::unique_ptr<CShell>(this));
    }
    catch (...)
    {
        // Without memory for the list the shell is lost, which only costs its few bytes.
        return 0;
    }
    return 0;
}

HRESULT CObjectCore::RefuseQuery() noexcept
{
    Note(kNoOperation, MAPI_E_INVALID_OBJECT, "QueryInterface after the last Release");
    return MAPI_E_INVALID_OBJECT;
}

HRESULT CObjectCore::Enter(Operation operation,
                           const Subjects& subjects,
                           FaultOutcome& outcome) noexcept
{
    try
    {
        if (!Alive())
        {
            Note(operation, MAPI_E_INVALID_OBJECT, "called after the last Release");
            return MAPI_E_INVALID_OBJECT;
        }
        if (!Runtime().Running() || m_run != Runtime().Run())
        {
            Note(operation, MAPI_E_NOT_INITIALIZED, "called after MAPIUninitialize");
            return MAPI_E_NOT_INITIALIZED;
        }
        if (!CRuntime::ThreadReady())
        {
            Note(operation,
                 MAPI_E_NOT_INITIALIZED,
                 "called on a thread that has not called MAPIInitialize");
            return MAPI_E_NOT_INITIALIZED;
        }
        if (m_life && m_life->Ended())
        {
            Note(operation, MAPI_E_END_OF_SESSION, "called after its session or store was closed");
            return MAPI_E_END_OF_SESSION;
        }
        if (Runtime().Faults().Concerns(operation))
        {
            outcome = Runtime().Faults().Enter(operation, subjects);
        }
        return S_OK;
    }
    catch (...)
    {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
}

HRESULT CObjectCore::Leave(HRESULT hr, const std::wstring& text) noexcept
{
    if (hr != S_OK)
    {
        const std::scoped_lock hold(m_callLock);
        m_lastError = hr;
        try
        {
            m_lastText = text;
        }
        catch (...)
        {
            m_lastText.clear();
        }
    }
    return hr;
}

void CObjectCore::Note(Operation operation, HRESULT hr, const char* text) const noexcept
{
    try
    {
        // The operation names the interface, unless it is none.
        const std::string name = operation == kNoOperation ? std::string(m_name) + " " : "";
        Runtime().Ledger().Misuse(operation, hr, name + text);
    }
    catch (...)
    {
        OutputDebugStringA("mapistore: no memory to note a misuse\n");
    }
}

void CObjectCore::NoteMisuse(Operation operation, const CMisuse& misuse) const noexcept
{
    try
    {
        Runtime().Ledger().Misuse(operation, misuse.Code(), ToUtf8(misuse.Text()));
    }
    catch (...)
    {
        OutputDebugStringA("mapistore: no memory to note a misuse\n");
    }
}

void CObjectCore::CheckFlags(Operation operation, ULONG flags, ULONG allowed) const
{
    if ((flags & ~allowed) != 0)
    {
        char text[64];
        std::snprintf(text, sizeof(text), "unknown flags 0x%08lX", flags & ~allowed);
        Refuse(operation, MAPI_E_UNKNOWN_FLAGS, text);
    }
}

void CObjectCore::Refuse(Operation operation, HRESULT hr, const char* why) const
{
    Note(operation, hr, why);
    throw CMapiError(hr, FromUtf8(why));
}

HRESULT CObjectCore::LastError(Operation operation,
                               HRESULT hr,
                               ULONG flags,
                               MAPIERROR** error) noexcept
{
    ClearOut(error);
    const HRESULT last = m_lastError;
    return Run(operation, [&] {
        CheckFlags(operation, flags, MAPI_UNICODE);
        RequireOut(error);
        if (hr == S_OK || hr != last)
        {
            return S_OK;
        }
        const bool unicode = (flags & MAPI_UNICODE) != 0;
        CBuffer buffer(sizeof(MAPIERROR), operation);
        auto* out = buffer.As<MAPIERROR>();
        out->ulVersion = MAPI_ERROR_VERSION;
        const std::wstring text = m_lastText.empty() ? L"the operation failed" : m_lastText;
        out->lpszError = static_cast<LPTSTR>(WriteText(buffer, text, unicode));
        out->lpszComponent = static_cast<LPTSTR>(WriteText(buffer, L"mapistore", unicode));
        out->ulLowLevelError = static_cast<ULONG>(hr);
        out->ulContext = operation;
        *error = static_cast<MAPIERROR*>(buffer.Detach());
        return S_OK;
    });
}

} // namespace mapistore
