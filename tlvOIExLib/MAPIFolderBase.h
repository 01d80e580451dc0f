#pragma once

/// Reads contents tables of folders and opens the messages in them.
///
/// Shape:  a mix-in without data.
/// Thread: the work thread.
class CMAPIFolderBase
{
protected:
    CMAPIFolderBase() = default;
    ~CMAPIFolderBase() = default;
};
