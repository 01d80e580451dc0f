#pragma once

#include <functional>

#include "Object.h"

namespace mapistore
{

/// The bytes of a value as a stream of type `type` shows them: wide text without a terminator,
/// 8-bit text in the system's code page, bytes as they are. Throws CMapiError MAPI_E_NOT_FOUND when
/// the value has no such form.
std::string StreamBytes(const CValue& value, ULONG type);

/// The value that the bytes of a written stream stand for.
CValue StreamValue(ULONG tag, const std::string& bytes);

/// IStream over one property. A stream that may be written gives its content to the property with
/// each Commit, and with the last Release when something was written since.
class CStream final : public CObject<IStream>
{
public:
    using Target = std::function<void(CValue)>;

    /// `target` is empty for a stream that is only read.
    CStream(std::string content, ULONG tag, Target target, Operation madeBy, Lifeline life);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI Read(void* buffer, ULONG cb, ULONG* cbRead) override;
    HRESULT WINAPI Write(const void* buffer, ULONG cb, ULONG* cbWritten) override;
    HRESULT WINAPI Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
    HRESULT WINAPI SetSize(ULARGE_INTEGER size) override;
    HRESULT WINAPI CopyTo(IStream* target,
                          ULARGE_INTEGER cb,
                          ULARGE_INTEGER* cbRead,
                          ULARGE_INTEGER* cbWritten) override;
    HRESULT WINAPI Commit(DWORD flags) override;
    HRESULT WINAPI Revert() override;
    HRESULT WINAPI LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD type) override;
    HRESULT WINAPI UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD type) override;
    HRESULT WINAPI Stat(STATSTG* stat, DWORD flags) override;
    HRESULT WINAPI Clone(IStream** out) override;

protected:
    void Dispose() noexcept override;

private:
    void Flush();

    std::string m_content;
    std::string m_committed;
    ULONG m_tag;
    Target m_target;
    std::uint64_t m_position = 0;
    bool m_dirty = false;
};

} // namespace mapistore
