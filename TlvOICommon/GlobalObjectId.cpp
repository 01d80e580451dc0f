#include "GlobalObjectId.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "NarrowText.h"

namespace
{

constexpr std::size_t kLongestWithoutUid = 53;
constexpr std::size_t kLengthAt = 36;
constexpr std::size_t kMarkAt = 40;
constexpr std::string_view kMark = "vCal-Uid";
constexpr std::size_t kUidAt = 52;
constexpr std::uint32_t kMarkAndVersion = 12; // what the length counts before the text

} // namespace

WString GetUidFromGlobalObjectId(std::span<const std::uint8_t> value)
{
    if (value.size() <= kLongestWithoutUid)
    {
        return {};
    }
    std::uint32_t length = 0;
    std::memcpy(&length, value.data() + kLengthAt, sizeof(length));
    if (!std::equal(kMark.begin(), kMark.end(), value.data() + kMarkAt))
    {
        return {};
    }
    // A length below 12 wraps and is cut at the end of the block like any other that is too long.
    const std::uint32_t uidLength = length - kMarkAndVersion;
    const auto rest = value.subspan(kUidAt);
    const auto uid = rest.first(std::min<std::size_t>(uidLength, rest.size()));
    const auto end = std::find(uid.begin(), uid.end(), std::uint8_t{0});
    return WidenThreadText(
        {reinterpret_cast<const char*>(uid.data()), static_cast<std::size_t>(end - uid.begin())});
}
