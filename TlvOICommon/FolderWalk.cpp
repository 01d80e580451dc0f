#include "FolderWalk.h"

#include <utility>

#include "ComRef.h"
#include "FolderKind.h"
#include "MapiMemory.h"
#include "MapiUtil.h"
#include "Trace.h"

namespace
{

/// What the hierarchy table says of one child.
struct ChildRow
{
    SBinary entryId{}; ///< borrowed from the row
    WString name;
    bool hasSubfolders = false;
    bool isHidden = false;
};

ChildRow ReadChildRow(const SRow& row)
{
    ChildRow child;
    for (ULONG column = 0; column < row.cValues; ++column)
    {
        const SPropValue& value = row.lpProps[column];
        switch (value.ulPropTag)
        {
        case PR_ENTRYID:
            child.entryId = value.Value.bin;
            break;
        case PR_DISPLAY_NAME_W:
            child.name = value.Value.lpszW != nullptr ? value.Value.lpszW : L"";
            break;
        case PR_SUBFOLDERS:
            child.hasSubfolders = value.Value.b != 0;
            break;
        case PR_ATTR_HIDDEN:
            child.isHidden = value.Value.b != 0;
            break;
        default:
            break;
        }
    }
    return child;
}

bool ReadChildren(IMAPIFolder* folder, CMapiRows& rows)
{
    CComRef<IMAPITable> table;
    const HRESULT status =
        folder->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, table.PutUnknown());
    if (FAILED(status) || !table)
    {
        return false;
    }
    SizedSPropTagArray(5, columns) = {
        5, {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_SUBFOLDERS, PR_OBJECT_TYPE, PR_ATTR_HIDDEN}};
    return SUCCEEDED(CUtil::QueryAllRows(table.Get(),
                                         reinterpret_cast<SPropTagArray*>(&columns),
                                         nullptr,
                                         nullptr,
                                         0,
                                         rows,
                                         TBL_NOADVANCE)) &&
           rows.Count() != 0;
}

CComRef<IMAPIFolder> OpenChild(IMAPIFolder* parent, const SBinary& entryId)
{
    ULONG objectType = 0;
    CComRef<IUnknown> object;
    const HRESULT status = parent->OpenEntry(
        entryId.cb, reinterpret_cast<ENTRYID*>(entryId.lpb), nullptr, 0, &objectType, object.Put());
    if (FAILED(status) || !object || objectType != MAPI_FOLDER)
    {
        return nullptr;
    }
    return CComRef<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object.Detach()));
}

bool ReadOwnEntryId(IMAPIFolder* folder, BinaryBlock& entryId)
{
    CMapiBuffer<SPropValue> value;
    if (GetOneProp(folder, PR_ENTRYID, value) != S_OK || !value || value->ulPropTag != PR_ENTRYID)
    {
        return false;
    }
    const SBinary& bin = value->Value.bin;
    if (bin.lpb == nullptr)
    {
        return false;
    }
    entryId.assign(bin.lpb, bin.lpb + bin.cb);
    return true;
}

} // namespace

ULONG RecFolders(IMAPIFolder* folder,
                 ULONG level,
                 const WString& path,
                 std::vector<MapiFolderInfo>& list,
                 ULONG wantedKind)
{
    SEND_TRACE(2, "CUtil::RecFolders", "RecFolders");
    CMapiRows rows;
    if (folder == nullptr || !ReadChildren(folder, rows))
    {
        return 0;
    }
    ULONG count = 0;
    for (const SRow& row : rows)
    {
        ChildRow child = ReadChildRow(row);
        if (child.isHidden || child.entryId.lpb == nullptr || child.entryId.cb == 0)
        {
            continue;
        }
        const CComRef<IMAPIFolder> opened = OpenChild(folder, child.entryId);
        MapiFolderInfo info;
        if (!opened || !ReadOwnEntryId(opened.Get(), info.entryId))
        {
            continue;
        }
        info.level = level;
        info.path = path + child.name;
        info.name = std::move(child.name);
        info.kind = ClassifyFolder(nullptr, opened.Get());
        if (wantedKind != FolderKindAny && info.kind != wantedKind)
        {
            continue;
        }
        const WString below = info.path + L"\\";
        list.push_back(std::move(info));
        ++count;
        if (child.hasSubfolders)
        {
            count += RecFolders(opened.Get(), level + 1, below, list, wantedKind);
        }
    }
    return count;
}
