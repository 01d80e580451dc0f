#pragma once

#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "BinaryBlock.h"
#include "ComRef.h"
#include "MapiHeaders.h"

/// A small mail system made of COM objects, for tests that have to see every call and to fail any.

/// One property. The data fits the type in the tag.
struct FakeValue
{
    ULONG tag;
    std::variant<LONG, bool, std::string, std::wstring, BinaryBlock> data;
};

using FakeProps = std::vector<FakeValue>;

/// What stands in a mail folder tree.
struct FakeFolderNode
{
    std::wstring name = {};
    std::string containerClass = {}; ///< empty: the property is missing
    bool isHidden = false;
    bool hasHiddenColumn = true;  ///< whether the parent's table tells about hiding at all
    bool hasNameColumn = true;    ///< whether the parent's table tells the name
    bool hasEntryIdColumn = true; ///< whether the parent's table tells the identifier
    bool hasOwnEntryId = true;    ///< whether the open folder tells it
    ULONG openedAs = MAPI_FOLDER;
    HRESULT adviseAnswer = S_OK;
    std::vector<FakeFolderNode> children = {};
};

/// What stands in the address book: a container, or an entry in one.
struct FakeContainerNode
{
    std::wstring name = {};
    LONG objectType = MAPI_ABCONT;
    LONG flags = 0;
    LONG displayType = 0;
    bool hasEntryIdColumn = true; ///< whether the parent's table tells the identifier
    std::vector<FakeContainerNode> children = {};
    std::vector<FakeProps> entries =
        {}; ///< rows of the contents table; opened, they answer the same
};

/// The state of the fake mail system: what there is, what was called, what has to fail.
///
/// Thread: the test's.
struct FakeMapi
{
    // What there is.
    std::vector<FakeProps> profiles;
    std::vector<FakeProps> stores;
    FakeProps storeProps;
    FakeProps user;
    ULONG rootOpenedAs = MAPI_FOLDER;
    std::vector<FakeFolderNode> folders; ///< below the IPM subtree
    FakeContainerNode addressBook;       ///< the root

    // How it answers where a status alone does not tell.
    ULONG identityBytes = 4;       ///< of the identifier of the session's user
    bool opensUser = true;         ///< whether a success of OpenEntry comes with the user
    HRESULT userStatus = S_OK;     ///< what GetProps of the user answers beside all its values
    ULONG userValues = 7;          ///< how many values GetProps of the user speaks of
    bool hasErrorComponent = true; ///< whether GetLastError names the part that failed

    // What has to fail: a status by operation ("IMsgStore::OpenEntry"), taken once for each entry.
    // An operation with an empty list succeeds; S_OK in a list lets one call through.
    std::map<std::string, std::vector<HRESULT>> answers;
    bool isCountToldOnFailure = false; ///< GetRowCount tells the count also when it fails
    /// Called at the begin of an operation, if there is one for it.
    std::map<std::string, std::function<void()>> actions;

    // What was called.
    std::vector<std::string> calls;
    /// Flags and tags of the last call of an operation, where it has them.
    std::map<std::string, ULONG> flags;
    std::map<std::string, std::vector<ULONG>> tags;
    std::map<std::string, LONG> limits; ///< how many rows QueryRows was asked for
    ULONG openStoreFlags = 0;
    BinaryBlock openStoreId;
    ULONG logonFlags = 0;
    std::wstring logonProfile;
    ULONG initializeFlags = 0xFFFFFFFF;
    SRestriction lastRestriction{};
    std::wstring lastRestrictionText;
    ULONG lastRestrictionTag = 0;
    std::vector<IMAPIAdviseSink*> sinks; ///< held, in order of Advise; null after Unadvise
    LONG liveObjects = 0;

    /// Notes a call and says what it answers.
    HRESULT Enter(const std::string& operation);
    [[nodiscard]] std::size_t CountCalls(const std::string& operation) const;
};

/// The one the objects of this process work on; set by the test fixture.
extern FakeMapi* g_fakeMapi;

/// The identifier of a folder of the tree, by its path ("Calendar\\Team"); the root's is empty text.
BinaryBlock FakeFolderId(const std::wstring& path);
/// The identifier of a container or entry of the address book, by its path.
BinaryBlock FakeAddressId(const std::wstring& path);

CComRef<IProfAdmin> MakeFakeProfAdmin();
CComRef<IMAPISession> MakeFakeSession();
CComRef<IMsgStore> MakeFakeStore();
CComRef<IAddrBook> MakeFakeAddressBook();
CComRef<IMAPIFolder> MakeFakeFolder(const std::wstring& path);
/// A table of rows that names its operations "<name>::SetColumns" and so on.
CComRef<IMAPITable> MakeFakeTable(std::string name, std::vector<FakeProps> rows);
