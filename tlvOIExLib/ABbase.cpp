#include "ABbase.h"

#include <algorithm>
#include <iterator>

#include "MapiMemory.h"
#include "NarrowText.h"
#include "PropValue.h"
#include "Trace.h"

namespace
{

constexpr const char* kListContainer = "CABbase::ListABContainer";

/// Bit of PR_CONTAINER_FLAGS that keeps a container, and all below it, out of the list.
constexpr ULONG kContainerLeftOut = 0x100;

constexpr ULONG kAllContainers = 1; // selector of ListABContainerByType

unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

ABContainerInfo ReadContainerRow(const SRow& row)
{
    ABContainerInfo info;
    for (ULONG column = 0; column < row.cValues; ++column)
    {
        const SPropValue& value = row.lpProps[column];
        switch (value.ulPropTag)
        {
        case PR_DISPLAY_NAME_W:
            info.name = value.Value.lpszW != nullptr ? value.Value.lpszW : L"";
            break;
        case PR_ENTRYID:
            prop::TakeBlock(&value, info.entryId);
            break;
        case PR_OBJECT_TYPE:
            info.objectType = value.Value.ul;
            break;
        case PR_CONTAINER_FLAGS:
            info.containerFlags = value.Value.ul;
            break;
        case PR_DISPLAY_TYPE:
            info.displayType = value.Value.ul;
            break;
        default:
            break;
        }
    }
    return info;
}

void TraceContainer(const char* step, const ABContainerInfo& info)
{
    SEND_TRACE(3,
               kListContainer,
               "CABbase::ListABContainer - %s abcontainer name[%s], contentflag[0x%x], "
               "displayType[0x%x]",
               step,
               NarrowText(info.name).c_str(),
               static_cast<unsigned>(info.containerFlags),
               static_cast<unsigned>(info.displayType));
}

} // namespace

void CABbase::CloseAddressbook()
{
    SEND_TRACE(3, "CABbase::CloseAddressbook", "close address book");
    m_isContainerListLoaded = false;
    m_lpAdrBook.Reset();
}

CComRef<IABContainer> CABbase::OpenContainer(const BinaryBlock& containerId)
{
    ULONG objectType = 0;
    CComRef<IUnknown> object;
    // MAPI takes identifiers as writable and does not write them.
    const HRESULT status = m_lpAdrBook->OpenEntry(
        BlockSize(containerId),
        reinterpret_cast<ENTRYID*>(const_cast<std::uint8_t*>(containerId.data())),
        nullptr,
        MAPI_BEST_ACCESS,
        &objectType,
        object.Put());
    if (objectType != MAPI_ABCONT || !object)
    {
        SEND_TRACE(3,
                   kListContainer,
                   "CABbase::ListABContainer - OpenEntry failed, result [0x%x]",
                   Code(status));
        return nullptr;
    }
    return CComRef<IABContainer>::Adopt(static_cast<IABContainer*>(object.Detach()));
}

ULONG CABbase::ListABContainer(const BinaryBlock& containerId, std::vector<ABContainerInfo>& list)
{
    if (!m_lpAdrBook)
    {
        SEND_TRACE(3, kListContainer, "CABbase::ListABContainer m_lpAdrBook == NULL");
        return 0;
    }
    const CComRef<IABContainer> container = OpenContainer(containerId);
    if (!container)
    {
        return 0;
    }
    CComRef<IMAPITable> table;
    const HRESULT status = container->GetHierarchyTable(MAPI_UNICODE, table.Put());
    if (FAILED(status) || !table)
    {
        SEND_TRACE(3,
                   kListContainer,
                   "CABbase::ListABContainer - GetHierarchyTable failed, result [0x%x]",
                   Code(status));
        return 0;
    }
    return ListContainerRows(table.Get(), list);
}

ULONG CABbase::ListContainerRows(IMAPITable* table, std::vector<ABContainerInfo>& list)
{
    ULONG rowCount = 0;
    HRESULT status = table->GetRowCount(0, &rowCount);
    if (rowCount == 0)
    {
        SEND_TRACE(3,
                   kListContainer,
                   "CABbase::ListABContainer - GetRowCount is 0, result [0x%x]",
                   Code(status));
        return 0;
    }
    SizedSPropTagArray(5, columns) = {
        5, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DISPLAY_TYPE}};
    // A column that is not there shows as an error in the row, so the answer says nothing more.
    (void)table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), TBL_BATCH);
    CMapiRows rows;
    status = table->QueryRows(static_cast<LONG>(rowCount), 0, rows.Put());
    if (FAILED(status) || !rows)
    {
        SEND_TRACE(3,
                   kListContainer,
                   "CABbase::ListABContainer - QueryRows failed, result [0x%x]",
                   Code(status));
        return 0;
    }
    ULONG count = 0;
    for (const SRow& row : rows)
    {
        const ABContainerInfo info = ReadContainerRow(row);
        TraceContainer("check", info);
        if (info.objectType != MAPI_ABCONT || (info.containerFlags & kContainerLeftOut) != 0)
        {
            continue;
        }
        list.push_back(info);
        ++count;
        TraceContainer("got", info);
        if ((info.containerFlags & AB_SUBCONTAINERS) == 0)
        {
            continue;
        }
        if (info.entryId.empty())
        {
            // An empty identifier is the root: the walk would begin anew, and never end.
            SEND_TRACE(1,
                       kListContainer,
                       "CABbase::ListABContainer - abcontainer without an entryid is not entered");
            continue;
        }
        count += ListABContainer(info.entryId, list);
    }
    return count;
}

ULONG CABbase::ListABContainerByType(ULONG selector, std::vector<ABContainerInfo>& list)
{
    if (!m_isContainerListLoaded)
    {
        ListABContainer(BinaryBlock(), m_containers);
        m_isContainerListLoaded = true;
    }
    std::copy_if(m_containers.begin(),
                 m_containers.end(),
                 std::back_inserter(list),
                 [selector](const ABContainerInfo& info) {
                     return selector == kAllContainers ||
                            (selector == DT_GLOBAL && info.displayType == DT_GLOBAL);
                 });
    return static_cast<ULONG>(list.size());
}
