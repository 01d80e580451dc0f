#pragma once

#include <algorithm>

#include "Buffer.h"

namespace mapistore
{

inline SPropTagArray* WriteTags(const std::vector<ULONG>& tags, Operation operation)
{
    CBuffer buffer(CbNewSPropTagArray(tags.size()), operation);
    auto* out = buffer.As<SPropTagArray>();
    out->cValues = static_cast<ULONG>(tags.size());
    std::copy(tags.begin(), tags.end(), out->aulPropTag);
    return static_cast<SPropTagArray*>(buffer.Detach());
}

} // namespace mapistore
