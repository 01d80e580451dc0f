#pragma once

#include "FakeMapi.h"
#include "MapiMemory.h"

// The bases of the fake objects: every method of an interface answers MAPI_E_NO_SUPPORT until a
// fake provides it.

#define FAKE_NOT_PROVIDED                                                                          \
    override                                                                                       \
    {                                                                                              \
        return MAPI_E_NO_SUPPORT;                                                                  \
    }

struct ITableStub : IMAPITable
{
    MAPI_IMAPITABLE_METHODS(FAKE_NOT_PROVIDED)
};

struct IPropStub : IMAPIProp
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
};

struct IMailUserStub : IMailUser
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
};

struct IStoreStub : IMsgStore
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMSGSTORE_METHODS(FAKE_NOT_PROVIDED)
};

struct IFolderStub : IMAPIFolder
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMAPICONTAINER_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMAPIFOLDER_METHODS(FAKE_NOT_PROVIDED)
};

struct IContainerStub : IABContainer
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IMAPICONTAINER_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IABCONTAINER_METHODS(FAKE_NOT_PROVIDED)
};

struct ISessionStub : IMAPISession
{
    MAPI_IMAPISESSION_METHODS(FAKE_NOT_PROVIDED)
};

struct IAddrBookStub : IAddrBook
{
    MAPI_IMAPIPROP_METHODS(FAKE_NOT_PROVIDED)
    MAPI_IADDRBOOK_METHODS(FAKE_NOT_PROVIDED)
};

struct IProfAdminStub : IProfAdmin
{
    MAPI_IPROFADMIN_METHODS(FAKE_NOT_PROVIDED)
};

/// Counts references, and itself among the live objects of the fake mail system.
template <typename Stub>
class CFakeObject : public Stub
{
public:
    explicit CFakeObject(std::string name) : m_name(std::move(name)) { ++g_fakeMapi->liveObjects; }
    CFakeObject(const CFakeObject&) = delete;
    CFakeObject& operator=(const CFakeObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        *object = nullptr;
        const HRESULT answer = Enter(IsEqualIID(iid, IID_IMailUser)   ? "QueryInterface(IMailUser)"
                                     : IsEqualIID(iid, IID_IMAPIProp) ? "QueryInterface(IMAPIProp)"
                                                                      : "QueryInterface");
        if (answer == S_OK)
        {
            AddRef();
            *object = this;
        }
        return answer;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            // The object is gone when the release answers: that is what its callers rely on.
            const std::string name = m_name;
            delete this;
            g_fakeMapi->Enter(name + "::Release");
        }
        return left;
    }

protected:
    virtual ~CFakeObject() { --g_fakeMapi->liveObjects; }

    HRESULT Enter(const std::string& method) const
    {
        return g_fakeMapi->Enter(m_name + "::" + method);
    }
    void NoteFlags(const char* method, ULONG flags) const
    {
        g_fakeMapi->flags[m_name + "::" + method] = flags;
    }
    void NoteLimit(const char* method, LONG limit) const
    {
        g_fakeMapi->limits[m_name + "::" + method] = limit;
    }
    void NoteTags(const char* method, const SPropTagArray& tags) const
    {
        g_fakeMapi->tags[m_name + "::" + method].assign(tags.aulPropTag,
                                                        tags.aulPropTag + tags.cValues);
    }

private:
    std::string m_name;
    ULONG m_references = 1;
};

/// The property in `props` with the identifier of `tag`, as a value for MAPI; PT_ERROR without one.
SPropValue FakePropValue(const FakeProps& props, ULONG tag, void* head);

/// Answers GetProps from `props`: MAPI_W_ERRORS_RETURNED with whatever is missing.
HRESULT AnswerGetProps(const FakeProps& props,
                       const SPropTagArray* tags,
                       ULONG* count,
                       SPropValue** values);
