// The fake session, store and folders.

#include <utility>

#include "FakeObjects.h"

namespace
{

BinaryBlock BytesOf(const char* kind, const std::wstring& path)
{
    BinaryBlock id;
    for (const char* letter = kind; *letter != 0; ++letter)
    {
        id.push_back(static_cast<std::uint8_t>(*letter));
    }
    for (const wchar_t letter : path)
    {
        id.push_back(static_cast<std::uint8_t>(letter));
    }
    return id;
}

std::wstring PathOf(const BinaryBlock& id)
{
    return std::wstring(id.begin() + 2, id.end());
}

BinaryBlock BlockOf(ULONG cbEntryId, const ENTRYID* entryId)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(entryId);
    return BinaryBlock(bytes, bytes + cbEntryId);
}

/// The node of a path; null when there is none.
const FakeFolderNode* FindFolder(const std::wstring& path)
{
    const std::vector<FakeFolderNode>* level = &g_fakeMapi->folders;
    const FakeFolderNode* found = nullptr;
    std::size_t begin = 0;
    while (begin <= path.size())
    {
        const std::size_t end = std::min(path.find(L'\\', begin), path.size());
        const std::wstring name = path.substr(begin, end - begin);
        found = nullptr;
        for (const FakeFolderNode& node : *level)
        {
            found = node.name == name ? &node : found;
        }
        if (found == nullptr)
        {
            return nullptr;
        }
        level = &found->children;
        begin = end + 1;
    }
    return found;
}

class CFakeFolder final : public CFakeObject<IFolderStub>
{
public:
    explicit CFakeFolder(std::wstring path) : CFakeObject("IMAPIFolder"), m_path(std::move(path)) {}

    HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags,
                                       ULONG,
                                       ULONG* count,
                                       SPropValue** values) override
    {
        const HRESULT answer = Enter("GetProps");
        if (FAILED(answer))
        {
            return answer;
        }
        FakeProps props;
        if (const FakeFolderNode* const node = FindFolder(m_path))
        {
            if (node->hasOwnEntryId)
            {
                props.push_back({PR_ENTRYID, FakeFolderId(m_path)});
            }
            if (!node->containerClass.empty())
            {
                props.push_back({PR_CONTAINER_CLASS_A, node->containerClass});
            }
        }
        return AnswerGetProps(props, tags, count, values);
    }

    HRESULT STDMETHODCALLTYPE
    OpenProperty(ULONG tag, LPCIID iid, ULONG, ULONG flags, IUnknown** object) override
    {
        *object = nullptr;
        const HRESULT answer = Enter("OpenProperty");
        NoteFlags("OpenProperty", flags);
        if (FAILED(answer))
        {
            return answer;
        }
        if (tag != PR_CONTAINER_HIERARCHY || !IsEqualIID(*iid, IID_IMAPITable))
        {
            return MAPI_E_INTERFACE_NOT_SUPPORTED;
        }
        const FakeFolderNode* const node = FindFolder(m_path);
        std::vector<FakeProps> rows;
        for (const FakeFolderNode& child : node != nullptr ? node->children : g_fakeMapi->folders)
        {
            FakeProps row{{PR_DISPLAY_NAME_W, child.name},
                          {PR_SUBFOLDERS, !child.children.empty()},
                          {PR_OBJECT_TYPE, LONG{MAPI_FOLDER}},
                          {PR_ENTRYID, FakeFolderId(ChildPath(child.name))},
                          {PR_ATTR_HIDDEN, child.isHidden}};
            std::erase_if(row, [&](const FakeValue& value) {
                return (value.tag == PR_DISPLAY_NAME_W && !child.hasNameColumn) ||
                       (value.tag == PR_ENTRYID && !child.hasEntryIdColumn) ||
                       (value.tag == PR_ATTR_HIDDEN && !child.hasHiddenColumn);
            });
            rows.push_back(std::move(row));
        }
        *object = MakeFakeTable("HierarchyTable", std::move(rows)).Detach();
        return answer;
    }

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cbEntryId,
                                        ENTRYID* entryId,
                                        LPCIID,
                                        ULONG flags,
                                        ULONG* objectType,
                                        IUnknown** object) override
    {
        *object = nullptr;
        const HRESULT answer = Enter("OpenEntry");
        NoteFlags("OpenEntry", flags);
        if (FAILED(answer))
        {
            return answer;
        }
        const std::wstring path = PathOf(BlockOf(cbEntryId, entryId));
        const FakeFolderNode* const node = FindFolder(path);
        if (node == nullptr)
        {
            return MAPI_E_NOT_FOUND;
        }
        *objectType = node->openedAs;
        *object = MakeFakeFolder(path).Detach();
        return answer;
    }

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, IMAPITable** table) override
    {
        *table = nullptr;
        const HRESULT answer = Enter("GetContentsTable");
        NoteFlags("GetContentsTable", flags);
        if (FAILED(answer))
        {
            return answer;
        }
        const FakeFolderNode* const node = FindFolder(m_path);
        if (node != nullptr && node->adviseAnswer != S_OK)
        {
            g_fakeMapi->answers["ContentsTable::Advise"].push_back(node->adviseAnswer);
        }
        *table = MakeFakeTable("ContentsTable", {}).Detach();
        return answer;
    }

private:
    [[nodiscard]] std::wstring ChildPath(const std::wstring& name) const
    {
        return m_path.empty() ? name : m_path + L"\\" + name;
    }

    std::wstring m_path;
};

class CFakeStore final : public CFakeObject<IStoreStub>
{
public:
    CFakeStore() : CFakeObject("IMsgStore") {}

    HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags,
                                       ULONG flags,
                                       ULONG* count,
                                       SPropValue** values) override
    {
        NoteFlags("GetProps", flags);
        NoteTags("GetProps", *tags);
        const HRESULT answer = Enter("GetProps");
        return FAILED(answer) ? answer
                              : AnswerGetProps(g_fakeMapi->storeProps, tags, count, values);
    }

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cbEntryId,
                                        ENTRYID* entryId,
                                        LPCIID,
                                        ULONG flags,
                                        ULONG* objectType,
                                        IUnknown** object) override
    {
        *object = nullptr;
        NoteFlags("OpenEntry", flags);
        const HRESULT answer = Enter("OpenEntry");
        if (FAILED(answer))
        {
            return answer;
        }
        const BinaryBlock id = BlockOf(cbEntryId, entryId);
        const std::wstring path = PathOf(id);
        const FakeFolderNode* const node = path.empty() ? nullptr : FindFolder(path);
        if (id.front() != 'F' || (node == nullptr && !path.empty()))
        {
            return MAPI_E_NOT_FOUND;
        }
        *objectType = node != nullptr ? node->openedAs : g_fakeMapi->rootOpenedAs;
        *object = MakeFakeFolder(path).Detach();
        return answer;
    }

    HRESULT STDMETHODCALLTYPE
    GetReceiveFolder(LPTSTR, ULONG flags, ULONG* cbEntryId, ENTRYID** entryId, LPTSTR*) override
    {
        NoteFlags("GetReceiveFolder", flags);
        const HRESULT answer = Enter("GetReceiveFolder");
        if (FAILED(answer))
        {
            return answer;
        }
        const BinaryBlock id = FakeFolderId(L"Inbox");
        *cbEntryId = BlockSize(id);
        (void)MAPIAllocateBuffer(*cbEntryId, reinterpret_cast<void**>(entryId));
        std::copy(id.begin(), id.end(), reinterpret_cast<std::uint8_t*>(*entryId));
        return answer;
    }

    HRESULT STDMETHODCALLTYPE StoreLogoff(ULONG* flags) override
    {
        return Enter("StoreLogoff(" + std::to_string(*flags) + ")");
    }
};

class CFakeUser final : public CFakeObject<IMailUserStub>
{
public:
    CFakeUser() : CFakeObject("IMailUser") {}

    HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags,
                                       ULONG flags,
                                       ULONG* count,
                                       SPropValue** values) override
    {
        NoteFlags("GetProps", flags);
        NoteTags("GetProps", *tags);
        HRESULT answer = Enter("GetProps");
        if (FAILED(answer))
        {
            return answer;
        }
        answer = AnswerGetProps(g_fakeMapi->user, tags, count, values);
        *count = g_fakeMapi->userValues;
        return g_fakeMapi->userStatus != S_OK ? g_fakeMapi->userStatus : answer;
    }
};

class CFakeSession final : public CFakeObject<ISessionStub>
{
public:
    CFakeSession() : CFakeObject("IMAPISession") {}

    HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG, IMAPITable** table) override
    {
        *table = nullptr;
        const HRESULT answer = Enter("GetMsgStoresTable");
        if (SUCCEEDED(answer))
        {
            *table = MakeFakeTable("StoresTable", g_fakeMapi->stores).Detach();
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR,
                                           ULONG cbEntryId,
                                           ENTRYID* entryId,
                                           LPCIID,
                                           ULONG flags,
                                           IMsgStore** store) override
    {
        *store = nullptr;
        g_fakeMapi->openStoreId = BlockOf(cbEntryId, entryId);
        g_fakeMapi->openStoreFlags = flags;
        const HRESULT answer = Enter("OpenMsgStore");
        if (SUCCEEDED(answer))
        {
            *store = MakeFakeStore().Detach();
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, MAPIERROR** error) override
    {
        *error = nullptr;
        const HRESULT answer = Enter("GetLastError");
        if (FAILED(answer))
        {
            return answer;
        }
        (void)MAPIAllocateBuffer(sizeof(MAPIERROR), reinterpret_cast<void**>(error));
        static char component[] = "fake component";
        (*error)->ulVersion = 1;
        // Narrow, since no MAPI_UNICODE was given.
        (*error)->lpszComponent =
            g_fakeMapi->hasErrorComponent ? reinterpret_cast<LPTSTR>(component) : nullptr;
        (*error)->ulLowLevelError = 42;
        (*error)->ulContext = 7;
        return answer;
    }

    HRESULT STDMETHODCALLTYPE QueryIdentity(ULONG* cbEntryId, ENTRYID** entryId) override
    {
        *cbEntryId = 0;
        *entryId = nullptr;
        const HRESULT answer = Enter("QueryIdentity");
        if (SUCCEEDED(answer))
        {
            *cbEntryId = g_fakeMapi->identityBytes;
            (void)MAPIAllocateBuffer(4, reinterpret_cast<void**>(entryId));
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE
    OpenEntry(ULONG, ENTRYID*, LPCIID, ULONG flags, ULONG* objectType, IUnknown** object) override
    {
        *object = nullptr;
        const HRESULT answer = Enter("OpenEntry(" + std::to_string(flags) + ")");
        if (SUCCEEDED(answer) && g_fakeMapi->opensUser)
        {
            *objectType = MAPI_MAILUSER;
            *object = new CFakeUser();
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG_PTR,
                                              LPCIID,
                                              ULONG flags,
                                              IAddrBook** book) override
    {
        *book = nullptr;
        const HRESULT answer = Enter("OpenAddressBook(" + std::to_string(flags) + ")");
        if (SUCCEEDED(answer))
        {
            *book = MakeFakeAddressBook().Detach();
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR, ULONG flags, ULONG reserved) override
    {
        return Enter("Logoff(" + std::to_string(flags) + "," + std::to_string(reserved) + ")");
    }
};

} // namespace

BinaryBlock FakeFolderId(const std::wstring& path)
{
    return BytesOf("F:", path);
}

CComRef<IMAPISession> MakeFakeSession()
{
    return CComRef<IMAPISession>::Adopt(new CFakeSession());
}

CComRef<IMsgStore> MakeFakeStore()
{
    return CComRef<IMsgStore>::Adopt(new CFakeStore());
}

CComRef<IMAPIFolder> MakeFakeFolder(const std::wstring& path)
{
    return CComRef<IMAPIFolder>::Adopt(new CFakeFolder(path));
}
