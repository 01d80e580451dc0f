#pragma once

#include <map>
#include <unordered_map>

#include "EntryId.h"
#include "JsonTree.h"
#include "NameMap.h"
#include "Row.h"

namespace mapistore
{

struct MessageBody;

struct Attachment
{
    CPropertyBag props;
    std::shared_ptr<const MessageBody> message; // of an attachment with method 5
};

/// What a message holds, embedded or not. Immutable once it is in a document.
struct MessageBody
{
    CPropertyBag props;
    std::vector<CPropertyBag> recipients;
    std::vector<Attachment> attachments;
};

enum class FolderRole
{
    None,
    Root,
    IpmSubtree,
    Inbox,
    Outbox,
    SentItems,
    DeletedItems,
    Calendar,
    Contacts,
    Drafts,
    Journal,
    Notes,
    Tasks,
    CommonViews,
    Views,
    Finder
};

/// What the rows of a store need to know of it.
struct StoreIdentity
{
    std::uint64_t id = 0;
    Uid uid{};
    bool tableForm = false; // contents tables show the table form of identifiers
};

/// Where an object stands in the document's text.
struct TextRange
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

class CMessageRow;

struct Folder
{
    std::uint64_t id = 0;
    std::uint64_t parent = 0; // 0 for the root
    std::uint64_t order = 0;
    FolderRole role = FolderRole::None;
    bool advise = true;
    CPropertyBag props;                                       // name, class and hidden among them
    std::vector<std::shared_ptr<const CMessageRow>> messages; // ordinary and associated, by order
};

struct Store
{
    std::shared_ptr<const StoreIdentity> identity;
    std::wstring name;
    bool isDefault = false;
    bool isPersonal = false;
    CPropertyBag props;
    std::vector<Folder> folders;
    std::unordered_map<std::uint64_t, std::shared_ptr<const CMessageRow>> messages; // by id
};

struct Profile
{
    std::wstring name;
    bool isDefault = false;
    std::uint64_t identity = 0;
    std::vector<std::uint64_t> stores;
};

struct Container
{
    std::uint64_t id = 0;
    std::uint64_t parent = 0; // 0: the root
    CPropertyBag props;
};

struct Entry
{
    std::uint64_t id = 0;
    std::vector<std::uint64_t> containers;
    bool isList = false;
    std::vector<std::uint64_t> members;
    CPropertyBag props;
};

struct AddressBook
{
    Uid uid{};
    std::vector<Container> containers;
    std::vector<Entry> entries;
};

/// A whole store document in memory.
///
/// Thread: the caller holds the store folder's lock; rows are immutable and go anywhere.
struct Document
{
    std::uint64_t revision = 0;
    std::uint64_t nextId = 1;
    std::uint64_t largeValueBytes = 32768;
    std::uint64_t sendDelayMs = 0;
    CNameMap names;
    std::vector<Profile> profiles;
    std::vector<Store> stores;
    AddressBook addressBook;

    // Places in the text, for changing it without touching the rest.
    TextRange revisionRange;
    TextRange nextIdRange;
    TextRange namedIdsRange; // empty when there is no such key
    std::uint64_t rootBegin = 0;
    std::map<std::uint64_t, TextRange> messageArrays; // by store
    std::map<std::uint64_t, TextRange> folderArrays;
    std::unordered_map<std::uint64_t, TextRange> messageRanges;
    std::unordered_map<std::uint64_t, TextRange> folderRanges;
    size_t namesInText = 0; // how many names stand in the text

    Store* FindStore(std::uint64_t id);
    Store* FindStore(const Uid& uid);
    const Entry* FindEntry(std::uint64_t id) const;
    const Container* FindContainer(std::uint64_t id) const;
};

Folder* FindFolder(Store& store, std::uint64_t id);
const Folder* FindFolder(const Store& store, std::uint64_t id);
const Folder* FindRole(const Store& store, FolderRole role);
/// The role by its name in a document; None for an unknown one.
FolderRole RoleOf(std::string_view name);

/// Reads a document. Throws CDocumentError.
///
/// `folderPath` is where `files/` lies. `known` supplies the identifiers that names already have in
/// this process, so that a name met before keeps its identifier although it was never saved.
std::unique_ptr<Document> ReadDocument(std::string_view text,
                                       const std::wstring& folderPath,
                                       const CNameMap* known);

} // namespace mapistore
