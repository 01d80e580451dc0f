#pragma once

#include <atomic>
#include <mutex>
#include <new>

#include "Buffer.h"
#include "Runtime.h"
#include "Value.h"

namespace mapistore
{

/// Whether the session, and the store above it, that an object came from still stands.
class CLifeline
{
public:
    explicit CLifeline(std::shared_ptr<const CLifeline> above = nullptr) : m_above(std::move(above))
    {
    }
    void End() { m_ended = true; }
    bool Ended() const { return m_ended || (m_above && m_above->Ended()); }

private:
    std::shared_ptr<const CLifeline> m_above;
    std::atomic<bool> m_ended{false};
};

using Lifeline = std::shared_ptr<const CLifeline>;
using Subjects = std::vector<std::string>;

/// What every object of the library shares: counting references, refusing calls that must not
/// come, the fault plan, the last error.
///
/// Owner:  starts with one reference, the creator's. After the last Release the object drops what
///         it holds and stays as an empty shell for a while, so that a later call is refused
///         instead of reading freed memory.
/// Thread: any thread that called MAPIInitialize; calls on one object take turns.
class CObjectCore : public CShell
{
public:
    CObjectCore(const CObjectCore&) = delete;
    CObjectCore& operator=(const CObjectCore&) = delete;

protected:
    CObjectCore(const char* interfaceName, Operation madeBy, Lifeline life);
    ~CObjectCore() override;

    ULONG CoreAddRef() noexcept;
    ULONG CoreRelease() noexcept;
    bool Alive() const { return m_refs.load() != 0; }
    HRESULT RefuseQuery() noexcept;

    /// Drops what the object holds; called once, after the last reference went.
    virtual void Dispose() noexcept = 0;

    /// Runs one operation. `body` may throw CMapiError and whatever the library throws.
    template <class Body>
    HRESULT Run(Operation operation, Body&& body, const Subjects& subjects = {}) noexcept
    {
        FaultOutcome outcome;
        HRESULT hr = Enter(operation, subjects, outcome);
        if (hr != S_OK || outcome.fails)
        {
            return Leave(hr != S_OK ? hr : outcome.status, L"");
        }
        const std::scoped_lock hold(m_callLock);
        std::wstring text;
        const FaultOutcome* before = m_outcome;
        m_outcome = &outcome;
        try
        {
            hr = body();
        }
        catch (const CMisuse& misuse)
        {
            hr = misuse.Code();
            text = misuse.Text();
            NoteMisuse(operation, misuse);
        }
        catch (const CMapiError& error)
        {
            hr = error.Code();
            text = error.Text();
        }
        catch (const std::bad_alloc&)
        {
            hr = MAPI_E_NOT_ENOUGH_MEMORY;
        }
        catch (...)
        {
            hr = MAPI_E_CALL_FAILED;
        }
        m_outcome = before;
        return Leave(outcome.gives ? outcome.status : hr, text);
    }

    /// Refuses flags that the operation does not know, and notes it.
    void CheckFlags(Operation operation, ULONG flags, ULONG allowed) const;
    /// Refuses a call that the interface forbids, with a note.
    [[noreturn]] void Refuse(Operation operation, HRESULT hr, const char* why) const;

    HRESULT LastError(Operation operation, HRESULT hr, ULONG flags, MAPIERROR** error) noexcept;

    const FaultOutcome& Outcome() const { return *m_outcome; }
    const Lifeline& Life() const { return m_life; }

private:
    HRESULT Enter(Operation operation, const Subjects& subjects, FaultOutcome& outcome) noexcept;
    HRESULT Leave(HRESULT hr, const std::wstring& text) noexcept;
    void Note(Operation operation, HRESULT hr, const char* text) const noexcept;
    void NoteMisuse(Operation operation, const CMisuse& misuse) const noexcept;

    const char* m_name;
    std::atomic<ULONG> m_refs{1};
    std::uint32_t m_run;
    CLedger::Ticket m_ticket;
    Lifeline m_life;
    std::recursive_mutex m_callLock; // one call at a time; also guards the members below
    const FaultOutcome* m_outcome = nullptr;
    HRESULT m_lastError = S_OK;
    std::wstring m_lastText;
};

/// IUnknown for an object with one interface and those that it derives from.
template <class Interface>
class CObject : public Interface, public CObjectCore
{
public:
    HRESULT WINAPI QueryInterface(REFIID iid, void** out) override
    {
        if (out == nullptr)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        *out = nullptr;
        if (!Alive())
        {
            return RefuseQuery();
        }
        if (!Supports(iid))
        {
            return MAPI_E_INTERFACE_NOT_SUPPORTED;
        }
        CoreAddRef();
        *out = static_cast<Interface*>(this);
        return S_OK;
    }
    ULONG WINAPI AddRef() override { return CoreAddRef(); }
    ULONG WINAPI Release() override { return CoreRelease(); }

    /// Whether the interface is one that this object has.
    virtual bool Supports(REFIID iid) const = 0;

protected:
    using CObjectCore::CObjectCore;
};

inline constexpr const wchar_t* kNoSuchInterface = L"an interface that the object does not have";

/// The pointer to give for `iid`, which may be null for the usual interface. Releases the object
/// and throws when it has no such interface.
template <class T>
void CheckInterface(T* object, const IID* iid)
{
    if (iid != nullptr && !object->Supports(*iid))
    {
        object->Release();
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
    }
}

template <class T>
void RequireOut(T* out)
{
    if (out == nullptr)
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a null pointer");
    }
}

template <class T>
void ClearOut(T** out)
{
    if (out != nullptr)
    {
        *out = nullptr;
    }
}

inline void ClearOut(ULONG* out)
{
    if (out != nullptr)
    {
        *out = 0;
    }
}

} // namespace mapistore
