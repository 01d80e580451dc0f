#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Mapi64.h"

namespace mapistore
{

using Uid = std::array<unsigned char, 16>;

/// What an entry identifier of this library says.
struct EntryName
{
    Uid uid{};
    ULONG objectType = 0; // MAPI_STORE, MAPI_FOLDER, ...
    std::uint64_t id = 0;
    bool tableForm = false;
};

/// Name, address type and address inside a one-off entry identifier.
struct OneOff
{
    std::wstring name;
    std::wstring addressType;
    std::wstring address;
};

/// Shape: 32 bytes as docs/mapistore.md gives them.
std::string MakeEntryId(const EntryName& name);
std::optional<EntryName> ReadEntryId(std::string_view bytes);
std::optional<EntryName> ReadEntryId(ULONG cb, const ENTRYID* entryId);

/// Shape: [MS-OXCDATA] 2.2.5.1, One-Off EntryID; wide text, flags 0x9001.
std::string MakeOneOff(const OneOff& oneOff);
std::optional<OneOff> ReadOneOff(std::string_view bytes);

} // namespace mapistore
