#pragma once

#include <vector>

#include "ABEmailEntry.h"
#include "BinaryBlock.h"
#include "ComRef.h"
#include "MapiHeaders.h"
#include "PlatformTypes.h"

/// One container of the address book.
struct ABContainerInfo
{
    WString name;
    WString reserved; ///< kept empty
    BinaryBlock entryId;
    ULONG containerFlags = 0;
    ULONG displayType = 0;
    ULONG objectType = 0;
};

/// The MAPI address book: its containers, and the mail users in them.
///
/// Owner:  the open address book and the container list. The list outlives the book: after a logoff
///         and a new logon it holds the old containers as well as the new.
/// Thread: the work thread.
/// Errors: none is raised. A failed step is traced, and the operation answers 0 or leaves its list
///         as it is; a failure in one container does not stop a walk over others.
class CABbase
{
public:
    CABbase(const CABbase&) = delete;
    CABbase& operator=(const CABbase&) = delete;

protected:
    CABbase() = default;
    virtual ~CABbase() = default;

    /// Answers 1 when the book is open, else 0.
    virtual ULONG OpenAddressbook() = 0;
    void CloseAddressbook();

    /// Appends the containers below `containerId`, depth first, and returns how many there were. An
    /// empty identifier is the root.
    ULONG ListABContainer(const BinaryBlock& containerId, std::vector<ABContainerInfo>& list);

    /// Appends the containers of one kind and returns the length of `list`: selector 1 takes all,
    /// DT_GLOBAL those of the global address lists, any other none. The hierarchy is read on the
    /// first call after an open, and not again even when that failed.
    ULONG ListABContainerByType(ULONG selector, std::vector<ABContainerInfo>& list);

    /// Appends the mail users whose display name or SMTP address begins with `name`, which the
    /// caller gives in lower case. The directory is asked for the part of the name before its first
    /// period or blank.
    void ListABEmailWithName(const BinaryBlock& containerId,
                             const WString& name,
                             std::vector<ABEmailEntry>& list);

    /// Appends the mail users that the directory finds for `key` under `tag` and whose SMTP address
    /// is `key`, whatever the case. Returns how many there were.
    ULONG ListABEmailWithKey(const BinaryBlock& containerId,
                             const WString& key,
                             ULONG tag,
                             std::vector<ABEmailEntry>& list);

    /// Reads names and addresses of one entry. Answers 1 when that gave an SMTP address, else 0.
    ULONG GetABEmailAddress(const BinaryBlock& entryId, ABEmailEntry& entry);

    CComRef<IAddrBook> m_lpAdrBook;
    bool m_isContainerListLoaded = false;
    std::vector<ABContainerInfo> m_containers;

private:
    CComRef<IABContainer> OpenContainer(const BinaryBlock& containerId);
    ULONG ListContainerRows(IMAPITable* table, std::vector<ABContainerInfo>& list);
};
