#pragma once

/// Reads messages into records.
///
/// Shape:  a mix-in without data.
/// Thread: the work thread.
class CMAPIMessageBase
{
protected:
    CMAPIMessageBase() = default;
    ~CMAPIMessageBase() = default;
};
