#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ComRef.h"
#include "FakeProps.h"
#include "MapiHeaders.h"

// A calendar folder, its table, its messages and its store, made by the test. Objects count their
// references as real ones do, and LiveFakes() says how many are left.

/// Every method answers MAPI_E_NO_SUPPORT until a fake provides it.
#define FAKE_NOT_PROVIDED                                                                          \
    override                                                                                       \
    {                                                                                              \
        return MAPI_E_NO_SUPPORT;                                                                  \
    }

struct ITableStub : IMAPITable
{
    MAPI_IMAPITABLE_METHODS(FAKE_NOT_PROVIDED)
};

struct IMessageStub : IMessage
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMESSAGE_METHODS(FAKE_NOT_PROVIDED)
};

struct IAttachStub : IAttach
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
};

struct IFolderStub : IMAPIFolder
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMAPICONTAINER_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMAPIFOLDER_METHODS(FAKE_NOT_PROVIDED)
};

struct IStoreStub : IMsgStore
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMSGSTORE_METHODS(FAKE_NOT_PROVIDED)
};

LONG LiveFakes() noexcept;
void CountFake(LONG change) noexcept;

template <typename Stub>
class CFakeObject : public Stub
{
public:
    CFakeObject() { CountFake(1); }
    CFakeObject(const CFakeObject&) = delete;
    CFakeObject& operator=(const CFakeObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

protected:
    virtual ~CFakeObject() { CountFake(-1); }

private:
    ULONG m_references = 1;
};

/// Statuses for the next calls of a method, in order; S_OK behind the last.
class CFakeScript final
{
public:
    std::deque<HRESULT>& operator[](const std::string& method) { return m_statuses[method]; }
    HRESULT Next(const std::string& method);

private:
    std::map<std::string, std::deque<HRESULT>> m_statuses;
};

class CFakeTable final : public CFakeObject<ITableStub>
{
public:
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, MAPIERROR** error) override;
    HRESULT STDMETHODCALLTYPE GetStatus(ULONG* state, ULONG* type) override;
    HRESULT STDMETHODCALLTYPE SetColumns(SPropTagArray* columns, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG flags, ULONG* count) override;
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG count, LONG* sought) override;
    HRESULT STDMETHODCALLTYPE Restrict(SRestriction* restriction, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG flags, SRowSet** rows) override;
    HRESULT STDMETHODCALLTYPE Abort() override;

    std::vector<CFakeProps> rows;
    CFakeScript script;
    std::vector<std::string> calls; ///< each call, restrictions spelt out
    bool hasErrorText = false;
    std::function<void()> onQueryRows;
    bool appliesRestrictions = false; ///< otherwise a restriction lets every row through

private:
    std::vector<std::size_t> m_visible;
    bool m_isRestricted = false;
    std::vector<ULONG> m_columns;
    std::size_t m_position = 0;
};

class CFakeMessage;

/// A stream over given bytes.
class CFakeStream final : public IStream
{
public:
    /// `reads` gets a "254 gave 100" for each Read; it outlives the stream.
    CFakeStream(std::vector<BYTE> bytes, std::vector<std::string>& reads)
        : m_bytes(std::move(bytes)), m_reads(reads)
    {
        CountFake(1);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
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

private:
    ~CFakeStream() { CountFake(-1); }

    std::vector<BYTE> m_bytes;
    std::vector<std::string>& m_reads;
    std::size_t m_at = 0;
    ULONG m_references = 1;
};

class CFakeMessage final : public CFakeObject<IMessageStub>
{
public:
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, MAPIERROR** error) override;
    HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags,
                                       ULONG flags,
                                       ULONG* count,
                                       SPropValue** values) override;
    HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count,
                                              MAPINAMEID** names,
                                              ULONG flags,
                                              SPropTagArray** tags) override;
    HRESULT STDMETHODCALLTYPE
    OpenProperty(ULONG tag, const IID* iid, ULONG, ULONG flags, IUnknown** object) override;
    HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG flags, IMAPITable** table) override;
    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG flags, IMAPITable** table) override;
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number,
                                         const IID* iid,
                                         ULONG flags,
                                         IAttach** attach) override;

    /// Adds an embedded message as the next attachment.
    void Attach(const CComRef<CFakeMessage>& embedded, LONG method = ATTACH_EMBEDDED_MSG);

    CFakeProps props;
    std::vector<CFakeProps> recipients;
    std::map<ULONG, std::vector<BYTE>> streams; ///< by tag
    std::vector<std::string> streamReads;
    std::map<ULONG, HRESULT> failures; ///< by tag: the whole of GetProps fails
    /// Tables to hand out in place of those made of the recipients and the attachments.
    CComRef<CFakeTable> recipientTable;
    CComRef<CFakeTable> attachmentTable;
    CFakeScript script;
    std::vector<std::string> calls;
    std::vector<std::string> asked; ///< each property asked for, as SpeltTag writes it

private:
    struct Attachment
    {
        LONG method;
        CComRef<CFakeMessage> embedded;
    };
    std::vector<Attachment> m_attachments;
};

/// A folder or a store: both open messages by entry identifier.
template <typename Stub>
class CFakeOpener final : public CFakeObject<Stub>
{
public:
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cb,
                                        ENTRYID* entryId,
                                        const IID*,
                                        ULONG flags,
                                        ULONG* type,
                                        IUnknown** object) override
    {
        const auto* const first = reinterpret_cast<const BYTE*>(entryId);
        const std::vector<BYTE> id(first, first + cb);
        ++opened;
        openFlags = flags;
        *object = nullptr;
        const auto found = messages.find(id);
        if (found == messages.end())
        {
            return MAPI_E_NOT_FOUND;
        }
        if (onOpen)
        {
            onOpen();
        }
        *type = objectType;
        CFakeMessage* const message = found->second.Get();
        message->AddRef();
        *object = message;
        return S_OK;
    }

    std::map<std::vector<BYTE>, CComRef<CFakeMessage>> messages;
    ULONG objectType = MAPI_MESSAGE;
    int opened = 0;
    ULONG openFlags = 0;
    std::function<void()> onOpen;
};

using CFakeFolder = CFakeOpener<IFolderStub>;
using CFakeStore = CFakeOpener<IStoreStub>;

template <typename Fake>
CComRef<Fake> MakeFake()
{
    return CComRef<Fake>::Adopt(new Fake());
}

/// "2024-03-05T14:07:00" as a file time.
FILETIME Moment(const std::string& text);
