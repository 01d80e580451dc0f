#pragma once

#include "ComRef.h"
#include "MapiFolderInfo.h"
#include "MapiHeaders.h"
#include "MAPITableAdviseSink.h"

/// One subscribed folder: what is watched for changes, and what listings read.
///
/// Owner:  one reference to table and folder each, and the sink. `connection` is given back with
///         Unadvise before any of them goes.
/// Thread: the work thread.
struct MAPI_TBLSinkInfo
{
    CComRef<IMAPITable> table;
    CComRef<IMAPIFolder> folder;
    ULONG_PTR connection = 0;
    CTableSink sink;
    MapiFolderInfo folderInfo;
};
