#include <algorithm>

#include "Container.h"
#include "FolderRow.h"

namespace mapistore
{
namespace
{

class CBookContainer final : public CContainerBase<IABContainer>
{
public:
    CBookContainer(std::uint64_t id,
                   CPropertyBag bag,
                   std::shared_ptr<CStoreFolder> folder,
                   Lifeline life,
                   Operation madeBy)
        : CContainerBase("IABContainer",
                         OperationOf("IABContainer", "GetLastError"),
                         id,
                         std::move(bag),
                         std::move(folder),
                         std::move(life),
                         madeBy)
    {
    }
    bool Supports(REFIID iid) const override
    {
        return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IMAPIContainer ||
               iid == IID_IABContainer;
    }

protected:
    std::vector<const Entry*> Entries() const override
    {
        std::vector<const Entry*> entries;
        for (const Entry& entry : Files()->Data().addressBook.entries)
        {
            if (std::find(entry.containers.begin(), entry.containers.end(), Id()) !=
                entry.containers.end())
            {
                entries.push_back(&entry);
            }
        }
        return entries;
    }
    bool HasContainers() const override { return true; }
};

class CDistributionList final : public CContainerBase<IDistList>
{
public:
    CDistributionList(std::uint64_t id,
                      CPropertyBag bag,
                      std::shared_ptr<CStoreFolder> folder,
                      Lifeline life,
                      Operation madeBy)
        : CContainerBase("IDistList",
                         OperationOf("IDistList", "GetLastError"),
                         id,
                         std::move(bag),
                         std::move(folder),
                         std::move(life),
                         madeBy)
    {
    }
    bool Supports(REFIID iid) const override
    {
        return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IMAPIContainer ||
               iid == IID_IDistList;
    }

protected:
    std::vector<const Entry*> Entries() const override
    {
        std::vector<const Entry*> entries;
        const Entry* list = Files()->Data().FindEntry(Id());
        if (list != nullptr)
        {
            for (const std::uint64_t member : list->members)
            {
                entries.push_back(Files()->Data().FindEntry(member));
            }
        }
        return entries;
    }
    bool HasContainers() const override { return false; }
};

class CMailUser final : public CBagObject<IMailUser>
{
public:
    CMailUser(CPropertyBag bag,
              std::shared_ptr<CStoreFolder> folder,
              Lifeline life,
              Operation madeBy)
        : CBagObject(std::move(bag),
                     "IMailUser",
                     OperationOf("IMailUser", "GetLastError"),
                     madeBy,
                     std::move(folder),
                     std::move(life))
    {
    }
    bool Supports(REFIID iid) const override
    {
        return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IMailUser;
    }
};

} // namespace

IUnknown* OpenBookEntry(const std::shared_ptr<CStoreFolder>& folder,
                        const Lifeline& life,
                        ULONG cb,
                        const ENTRYID* entryId,
                        const IID* iid,
                        ULONG flags,
                        ULONG* objectType,
                        Operation madeBy)
{
    if ((flags & MAPI_MODIFY) != 0)
    {
        throw CMapiError(MAPI_E_NO_ACCESS, L"the address book is read only");
    }
    const Document& document = folder->Data();
    const AddressBook& book = document.addressBook;
    const auto give = [&](auto* object, ULONG type) -> IUnknown* {
        CheckInterface(object, iid);
        if (objectType != nullptr)
        {
            *objectType = type;
        }
        return object;
    };
    if (cb == 0)
    {
        return give(new CBookContainer(0, RootContainerProperties(book), folder, life, madeBy),
                    MAPI_ABCONT);
    }
    RequireOut(const_cast<ENTRYID*>(entryId));
    const std::string_view bytes(reinterpret_cast<const char*>(entryId), cb);
    if (const std::optional<OneOff> oneOff = ReadOneOff(bytes))
    {
        return give(new CMailUser(OneOffProperties(*oneOff, bytes), folder, life, madeBy),
                    MAPI_MAILUSER);
    }
    const std::optional<EntryName> name = ReadEntryId(bytes);
    if (!name)
    {
        throw CMapiError(MAPI_E_INVALID_ENTRYID, L"no identifier of this library");
    }
    if (name->uid != book.uid)
    {
        throw CMapiError(MAPI_E_UNKNOWN_ENTRYID, L"an identifier of another address book");
    }
    if (name->objectType == MAPI_ABCONT)
    {
        const Container* container = document.FindContainer(name->id);
        if (container == nullptr)
        {
            throw CMapiError(MAPI_E_NOT_FOUND, L"there is no such container");
        }
        return give(new CBookContainer(
                        container->id, ContainerProperties(book, *container), folder, life, madeBy),
                    MAPI_ABCONT);
    }
    const Entry* entry = document.FindEntry(name->id);
    if (entry == nullptr)
    {
        throw CMapiError(MAPI_E_NOT_FOUND, L"there is no such entry");
    }
    if (entry->isList)
    {
        return give(
            new CDistributionList(entry->id, EntryProperties(book, *entry), folder, life, madeBy),
            MAPI_DISTLIST);
    }
    return give(new CMailUser(EntryProperties(book, *entry), folder, life, madeBy), MAPI_MAILUSER);
}

} // namespace mapistore
