#include "FileStream.h"

#include <shlwapi.h>

#include <atomic>
#include <new>
#include <string>

namespace mapistore
{
namespace
{

/// A stream whose file goes with its last reference: the system's own knows no STGM_DELETEONRELEASE.
///
/// Owner: of the stream behind it.
class CTemporaryStream final : public IStream
{
public:
    CTemporaryStream(IStream* stream, std::wstring file) : m_stream(stream), m_file(std::move(file))
    {
    }
    CTemporaryStream(const CTemporaryStream&) = delete;
    CTemporaryStream& operator=(const CTemporaryStream&) = delete;

    HRESULT WINAPI QueryInterface(REFIID iid, void** out) override
    {
        if (out == nullptr)
        {
            return E_POINTER;
        }
        const bool known =
            iid == IID_IUnknown || iid == IID_ISequentialStream || iid == IID_IStream;
        *out = known ? static_cast<IStream*>(this) : nullptr;
        if (known)
        {
            AddRef();
        }
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG WINAPI AddRef() override { return ++m_refs; }
    ULONG WINAPI Release() override
    {
        const ULONG left = --m_refs;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }
    HRESULT WINAPI Read(void* buffer, ULONG cb, ULONG* cbRead) override
    {
        return m_stream->Read(buffer, cb, cbRead);
    }
    HRESULT WINAPI Write(const void* buffer, ULONG cb, ULONG* cbWritten) override
    {
        return m_stream->Write(buffer, cb, cbWritten);
    }
    HRESULT WINAPI Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override
    {
        return m_stream->Seek(move, origin, position);
    }
    HRESULT WINAPI SetSize(ULARGE_INTEGER size) override { return m_stream->SetSize(size); }
    HRESULT WINAPI CopyTo(IStream* target,
                          ULARGE_INTEGER cb,
                          ULARGE_INTEGER* cbRead,
                          ULARGE_INTEGER* cbWritten) override
    {
        return m_stream->CopyTo(target, cb, cbRead, cbWritten);
    }
    HRESULT WINAPI Commit(DWORD flags) override { return m_stream->Commit(flags); }
    HRESULT WINAPI Revert() override { return m_stream->Revert(); }
    HRESULT WINAPI LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD type) override
    {
        return m_stream->LockRegion(offset, cb, type);
    }
    HRESULT WINAPI UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD type) override
    {
        return m_stream->UnlockRegion(offset, cb, type);
    }
    HRESULT WINAPI Stat(STATSTG* stat, DWORD flags) override { return m_stream->Stat(stat, flags); }
    HRESULT WINAPI Clone(IStream** out) override { return m_stream->Clone(out); }

private:
    ~CTemporaryStream()
    {
        m_stream->Release();
        DeleteFileW(m_file.c_str());
    }

    std::atomic<ULONG> m_refs{1};
    IStream* m_stream;
    std::wstring m_file;
};

/// Empty for a path that cannot be.
std::wstring ChooseFile(ULONG flags, const wchar_t* path, const wchar_t* prefix)
{
    if ((flags & SOF_UNIQUEFILENAME) == 0)
    {
        return path != nullptr ? path : L"";
    }
    wchar_t folder[MAX_PATH] = {};
    wchar_t file[MAX_PATH] = {};
    if (path == nullptr && GetTempPathW(MAX_PATH, folder) == 0)
    {
        return {};
    }
    const UINT chosen = GetTempFileNameW(
        path != nullptr ? path : folder, prefix != nullptr ? prefix : L"SOF", 0, file);
    return chosen != 0 ? file : L"";
}

bool IsMissing(HRESULT hr)
{
    return hr == STG_E_FILENOTFOUND || hr == STG_E_PATHNOTFOUND ||
           hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ||
           hr == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
}

} // namespace

HRESULT OpenFileStream(ULONG flags, const wchar_t* path, const wchar_t* prefix, IStream** stream)
{
    const bool unique = (flags & SOF_UNIQUEFILENAME) != 0;
    std::wstring file;
    try
    {
        file = ChooseFile(flags, path, prefix);
    }
    catch (const std::bad_alloc&)
    {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    if (file.empty())
    {
        return MAPI_E_INVALID_PARAMETER;
    }
    // A file of the system's choice stands already, and is for writing whatever the flags say.
    const DWORD mode =
        (flags & ~(SOF_UNIQUEFILENAME | STGM_DELETEONRELEASE)) | (unique ? STGM_READWRITE : 0U);
    const BOOL create = (flags & STGM_CREATE) != 0 ? TRUE : FALSE;
    IStream* opened = nullptr;
    const HRESULT hr =
        SHCreateStreamOnFileEx(file.c_str(), mode, FILE_ATTRIBUTE_NORMAL, create, nullptr, &opened);
    if (FAILED(hr))
    {
        if (unique)
        {
            DeleteFileW(file.c_str());
        }
        return IsMissing(hr) ? MAPI_E_NOT_FOUND : hr;
    }
    if ((flags & STGM_DELETEONRELEASE) == 0)
    {
        *stream = opened;
        return S_OK;
    }
    *stream = new (std::nothrow) CTemporaryStream(opened, std::move(file));
    if (*stream == nullptr)
    {
        opened->Release();
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    return S_OK;
}

} // namespace mapistore
