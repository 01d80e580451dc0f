#pragma once

#include <functional>
#include <string>
#include <vector>

#include "MapiHeaders.h"

// The platform's method macros have no place for `override`.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsuggest-override"

/// A number in upper-case hexadecimal digits, as the notes of calls have it.
std::string HexNumber(ULONG value);

/// What a fake object does not pretend to answers MAPI_E_NO_SUPPORT. Fakes live on the stack: their
/// references are counted, so that a test can see whether each was given back, and free nothing.
struct FakeReferences
{
    LONG held = 0;
};

/// A row of a fake table: its values, the binary ones in blocks that the row owns.
struct FakeRow
{
    std::vector<SPropValue> values;

    static FakeRow WithEntryId(BYTE id);
    /// A row whose first column could not be read.
    static FakeRow WithoutEntryId();
    /// A row of an attachment table.
    static FakeRow WithAttachment(LONG number);
};

/// A table that gives prepared batches of rows.
class CFakeTable final : public IMAPITable
{
public:
    struct Batch
    {
        HRESULT status = S_OK;
        std::vector<FakeRow> rows;
        bool isNull = false; ///< no row set at all
    };

    MAPI_IUNKNOWN_METHODS(IMPL)
    MAPI_IMAPITABLE_METHODS(IMPL)

    std::vector<std::string> calls; ///< each call with its arguments
    std::vector<Batch> batches;     ///< handed out in order; empty success behind the last
    std::function<HRESULT()> onWait = [] { return S_OK; };
    SRestriction lastRestriction{}; ///< a copy of the last node; its value in `lastValue`
    SPropValue lastValue{};
    HRESULT setColumns = S_OK;
    HRESULT restrict = S_OK;
    HRESULT sort = S_OK;
    FakeReferences references;

private:
    std::size_t m_next = 0;
};

/// The properties of a fake object, and what was asked of them.
class CFakeProps
{
public:
    HRESULT GetProps(SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values);
    HRESULT GetIds(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags);

    std::vector<std::string> calls;
    HRESULT propStatus = S_OK;
    std::wstring text;        ///< what a property of type PT_UNICODE holds
    std::string narrowText;   ///< what a property of type PT_STRING8 holds
    bool isValueNull = false; ///< a success without a value
    HRESULT idStatus = S_OK;
    ULONG namedTag = 0x80050000; ///< what every name maps to
    bool isTagsNull = false;
};

/// An attachment: its data as one property, or as a stream.
class CFakeAttach final : public IAttach
{
public:
    MAPI_IUNKNOWN_METHODS(IMPL)
    MAPI_IMAPIPROP_METHODS(IMPL)

    std::vector<std::string> calls;
    std::vector<BYTE> data;
    HRESULT status = S_OK; ///< of GetProps; a warning answers with `error` in the value's place
    HRESULT error = S_OK;
    HRESULT openProperty = S_OK;
    IStream* stream = nullptr;
    FakeReferences references;
};

/// A message.
class CFakeMessage final : public IMessage
{
public:
    MAPI_IUNKNOWN_METHODS(IMPL)
    MAPI_IMAPIPROP_METHODS(IMPL)
    MAPI_IMESSAGE_METHODS(IMPL)

    CFakeProps props;
    HRESULT openProperty = S_OK;
    IStream* stream = nullptr;
    CFakeTable* attachmentTable = nullptr; ///< none fails GetAttachmentTable
    CFakeAttach* attachment = nullptr;     ///< what every number opens; none fails OpenAttach
    FakeReferences references;
};

/// A container that opens prepared objects by the first byte of their entry identifier.
class CFakeContainer final : public IMAPIContainer
{
public:
    MAPI_IUNKNOWN_METHODS(IMPL)
    MAPI_IMAPIPROP_METHODS(IMPL)
    MAPI_IMAPICONTAINER_METHODS(IMPL)

    CFakeProps props;
    std::vector<std::string> calls;
    /// Answers OpenEntry; null fails it with MAPI_E_NOT_FOUND.
    std::function<CFakeMessage*(BYTE id)> open;
    ULONG objectType = MAPI_MESSAGE;
    FakeReferences references;
};

/// A stream over prepared bytes.
class CFakeStream final : public IStream
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG cb, ULONG* cbRead) override;
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*,
                                     ULARGE_INTEGER,
                                     ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* facts, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

    std::vector<BYTE> bytes;
    ULONGLONG statedSize = 0;
    HRESULT stat = S_OK;
    int failingRead = -1; ///< which Read fails, counted from 0
    std::vector<ULONG> reads;
    FakeReferences references;

private:
    std::size_t m_at = 0;
};

#pragma GCC diagnostic pop
