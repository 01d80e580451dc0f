#include "EntryId.h"

#include <cstring>

#include "Text.h"

namespace mapistore
{
namespace
{

constexpr size_t kSize = 32;
constexpr unsigned char kTableFlag = 0x80;
constexpr unsigned char kOneOffUid[16] = MAPI_ONE_OFF_UID;
constexpr std::uint16_t kOneOffFlags = 0x9001; // no rich text, MIME, wide text
constexpr std::uint16_t kOneOffUnicode = 0x8000;
constexpr size_t kOneOffHead = 24;

void AppendWide(std::string& bytes, const std::wstring& text)
{
    bytes.append(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t));
}

bool TakeWide(std::string_view& bytes, std::wstring& text)
{
    text.clear();
    while (bytes.size() >= sizeof(wchar_t))
    {
        wchar_t unit = 0;
        std::memcpy(&unit, bytes.data(), sizeof(unit));
        bytes.remove_prefix(sizeof(unit));
        if (unit == 0)
        {
            return true;
        }
        text.push_back(unit);
    }
    return false;
}

bool TakeNarrow(std::string_view& bytes, std::wstring& text)
{
    const size_t end = bytes.find('\0');
    if (end == std::string_view::npos)
    {
        return false;
    }
    text = FromAnsi(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
    return true;
}

} // namespace

std::string MakeEntryId(const EntryName& name)
{
    std::string bytes(kSize, '\0');
    bytes[0] = name.tableForm ? static_cast<char>(kTableFlag) : '\0';
    std::memcpy(&bytes[4], name.uid.data(), name.uid.size());
    bytes[20] = 1;
    bytes[21] = static_cast<char>(name.objectType);
    std::memcpy(&bytes[24], &name.id, sizeof(name.id));
    return bytes;
}

std::optional<EntryName> ReadEntryId(std::string_view bytes)
{
    if (bytes.size() != kSize || bytes[1] != 0 || bytes[2] != 0 || bytes[3] != 0 ||
        bytes[20] != 1 || bytes[22] != 0 || bytes[23] != 0)
    {
        return std::nullopt;
    }
    const auto flags = static_cast<unsigned char>(bytes[0]);
    EntryName name;
    std::memcpy(name.uid.data(), &bytes[4], name.uid.size());
    name.objectType = static_cast<unsigned char>(bytes[21]);
    std::memcpy(&name.id, &bytes[24], sizeof(name.id));
    name.tableForm = flags == kTableFlag;
    if ((flags != 0 && flags != kTableFlag) || (name.tableForm && name.objectType != MAPI_MESSAGE))
    {
        return std::nullopt;
    }
    return name;
}

std::optional<EntryName> ReadEntryId(ULONG cb, const ENTRYID* entryId)
{
    if (entryId == nullptr)
    {
        return std::nullopt;
    }
    return ReadEntryId(std::string_view(reinterpret_cast<const char*>(entryId), cb));
}

std::string MakeOneOff(const OneOff& oneOff)
{
    std::string bytes(kOneOffHead, '\0');
    std::memcpy(&bytes[4], kOneOffUid, sizeof(kOneOffUid));
    std::memcpy(&bytes[22], &kOneOffFlags, sizeof(kOneOffFlags));
    AppendWide(bytes, oneOff.name);
    AppendWide(bytes, oneOff.addressType);
    AppendWide(bytes, oneOff.address);
    return bytes;
}

std::optional<OneOff> ReadOneOff(std::string_view bytes)
{
    if (bytes.size() < kOneOffHead || std::memcmp(&bytes[4], kOneOffUid, sizeof(kOneOffUid)) != 0)
    {
        return std::nullopt;
    }
    std::uint16_t flags = 0;
    std::memcpy(&flags, &bytes[22], sizeof(flags));
    bytes.remove_prefix(kOneOffHead);
    const auto take = (flags & kOneOffUnicode) != 0 ? TakeWide : TakeNarrow;
    OneOff oneOff;
    if (!take(bytes, oneOff.name) || !take(bytes, oneOff.addressType) ||
        !take(bytes, oneOff.address))
    {
        return std::nullopt;
    }
    return oneOff;
}

} // namespace mapistore
