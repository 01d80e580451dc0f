#pragma once

#include <cstdint>

#include "ABEmailEntry.h"
#include "MapiItemRef.h"
#include "PlatformTypes.h"

/// One mail of the inbox or of the sent items.
///
/// Units: `deliveryTime` is UTC.
struct MailRecord
{
    MapiItemRef itemRef;
    WString subject;
    WString messageClass;
    std::uint32_t messageFlags = 0;
    std::uint32_t importance = 0;
    FILETIME deliveryTime{};
    ABEmailEntry sender;
    ABEmailEntry representing;
};
