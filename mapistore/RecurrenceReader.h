#pragma once

#include "DocumentCursor.h"
#include "RecurrenceBlob.h"

namespace mapistore
{

/// Read the readable forms of docs/mapistore.md. Both throw CDocumentError.
RecurrenceDescription ReadRecurrence(const CPlace& place);
ZoneDescription ReadZone(const CPlace& place);

/// "2026-11-02" as days since 1601.
std::uint32_t ReadDate(const CPlace& place);

/// "2026-11-02T09:00:00Z" with up to seven decimals, as 100 ns since 1601.
std::uint64_t ReadTime(const CPlace& place);

} // namespace mapistore
