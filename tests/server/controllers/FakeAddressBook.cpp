// The fake address book.

#include <utility>

#include "FakeObjects.h"

namespace
{

/// A node of the address book by its identifier, and how it is opened.
struct Found
{
    const FakeContainerNode* container = nullptr;
    const FakeProps* entry = nullptr;
};

bool IsEntry(const FakeProps& entry, const BinaryBlock& id)
{
    for (const FakeValue& value : entry)
    {
        if (value.tag == PR_ENTRYID && std::get<BinaryBlock>(value.data) == id)
        {
            return true;
        }
    }
    return false;
}

Found Find(const FakeContainerNode& node, const std::wstring& path, const BinaryBlock& id)
{
    if (id == FakeAddressId(path) || (id.empty() && path.empty()))
    {
        return {&node, nullptr};
    }
    for (const FakeProps& entry : node.entries)
    {
        if (IsEntry(entry, id))
        {
            return {nullptr, &entry};
        }
    }
    for (const FakeContainerNode& child : node.children)
    {
        const std::wstring childPath = path.empty() ? child.name : path + L"\\" + child.name;
        if (const Found found = Find(child, childPath, id);
            found.container != nullptr || found.entry != nullptr)
        {
            return found;
        }
    }
    return {};
}

class CFakeEntry final : public CFakeObject<IMailUserStub>
{
public:
    explicit CFakeEntry(FakeProps props) : CFakeObject("ABEntry"), m_props(std::move(props)) {}

    HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags,
                                       ULONG,
                                       ULONG* count,
                                       SPropValue** values) override
    {
        const HRESULT answer = Enter("GetProps");
        return FAILED(answer) ? answer : AnswerGetProps(m_props, tags, count, values);
    }

private:
    FakeProps m_props;
};

class CFakeContainer final : public CFakeObject<IContainerStub>
{
public:
    CFakeContainer(const FakeContainerNode& node, std::wstring path)
        : CFakeObject("IABContainer"), m_node(node), m_path(std::move(path))
    {
    }

    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, IMAPITable** table) override
    {
        *table = nullptr;
        const HRESULT answer = Enter("GetHierarchyTable");
        NoteFlags("GetHierarchyTable", flags);
        if (FAILED(answer))
        {
            return answer;
        }
        std::vector<FakeProps> rows;
        for (const FakeContainerNode& child : m_node.children)
        {
            const std::wstring childPath =
                m_path.empty() ? child.name : m_path + L"\\" + child.name;
            FakeProps row{{PR_DISPLAY_NAME_W, child.name},
                          {PR_ENTRYID, FakeAddressId(childPath)},
                          {PR_OBJECT_TYPE, child.objectType},
                          {PR_CONTAINER_FLAGS, child.flags},
                          {PR_DISPLAY_TYPE, child.displayType}};
            if (!child.hasEntryIdColumn)
            {
                std::erase_if(row, [](const FakeValue& value) { return value.tag == PR_ENTRYID; });
            }
            rows.push_back(std::move(row));
        }
        *table = MakeFakeTable("ABHierarchyTable", std::move(rows)).Detach();
        return answer;
    }

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, IMAPITable** table) override
    {
        *table = nullptr;
        const HRESULT answer = Enter("GetContentsTable");
        NoteFlags("GetContentsTable", flags);
        if (SUCCEEDED(answer))
        {
            *table = MakeFakeTable("ABContentsTable", m_node.entries).Detach();
        }
        return answer;
    }

private:
    const FakeContainerNode& m_node;
    std::wstring m_path;
};

class CFakeAddressBook final : public CFakeObject<IAddrBookStub>
{
public:
    CFakeAddressBook() : CFakeObject("IAddrBook") {}

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
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(entryId);
        const BinaryBlock id(bytes, bytes + cbEntryId);
        const Found found = Find(g_fakeMapi->addressBook, L"", id);
        if (found.entry != nullptr)
        {
            *objectType = MAPI_MAILUSER;
            *object = new CFakeEntry(*found.entry);
        }
        else if (found.container != nullptr)
        {
            *objectType = static_cast<ULONG>(found.container->objectType);
            *object = new CFakeContainer(*found.container,
                                         id.empty() ? L"" : std::wstring(id.begin() + 2, id.end()));
        }
        return *object != nullptr ? answer : MAPI_E_NOT_FOUND;
    }
};

} // namespace

BinaryBlock FakeAddressId(const std::wstring& path)
{
    BinaryBlock id{'A', ':'};
    for (const wchar_t letter : path)
    {
        id.push_back(static_cast<std::uint8_t>(letter));
    }
    return id;
}

CComRef<IAddrBook> MakeFakeAddressBook()
{
    return CComRef<IAddrBook>::Adopt(new CFakeAddressBook());
}
