#pragma once

#include <vector>

#include "MapiFolderInfo.h"
#include "MapiHeaders.h"

/// Appends the folders of `wantedKind` below `folder` to `list`, depth first, and returns how many
/// there were. A subtree is entered only through a folder of the wanted kind: a calendar below a
/// mail folder is not found, one below a calendar is. Hidden folders are passed over with all that
/// lies below them. With FolderKindAny every folder is wanted.
///
/// Shape:  `path` stands before each name; empty, or a path with a backslash at its end.
/// Owner:  `folder` is borrowed.
/// Thread: the work thread.
/// Errors: a folder that cannot be read is passed over; a table that cannot be read gives 0.
ULONG RecFolders(IMAPIFolder* folder,
                 ULONG level,
                 const WString& path,
                 std::vector<MapiFolderInfo>& list,
                 ULONG wantedKind);
