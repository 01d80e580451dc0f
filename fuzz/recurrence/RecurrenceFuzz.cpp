#include <algorithm>
#include <array>

#include "CalendarDays.h"
#include "FuzzInput.h"
#include "Minutes1601.h"
#include "PlatformDates.h"
#include "RecurrentRule.h"
#include "Trace.h"

namespace
{

class CAnySite final : public IRecurrenceSettings
{
public:
    [[nodiscard]] WString SiteName() const override { return WTEXT("Site"); }
    [[nodiscard]] WString KeepAllSiteName() const override { return WTEXT("site"); }
};

/// Takes the lines, so that their making is fuzzed as well.
class CNowhere final : public ITraceRoute
{
public:
    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view /*line*/) noexcept override {}
    void Write(TL_SDK::TLLoggerLevel /*level*/, std::string_view line) noexcept override
    {
        m_bytes += line.size();
    }

private:
    std::size_t m_bytes = 0;
};

constexpr std::size_t kHeadBytes = 16;

std::uint32_t NumberAt(const std::uint8_t* data)
{
    return static_cast<std::uint32_t>(data[0] | data[1] << 8 | data[2] << 16) |
           std::uint32_t{data[3]} << 24;
}

} // namespace

/// Expands any bytes as a pattern, in any window, with any zone or none.
/// Shape: two bytes of first year, one of switches, a size of zone, window start and length in
/// minutes as 32 bits, four bytes more; the zone; the pattern.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < kHeadBytes)
    {
        return 0;
    }
    SYSTEMTIME first{};
    first.wYear = static_cast<WORD>(data[0] | data[1] << 8);
    const bool keepsAll = (data[2] & 1) != 0;
    const bool isTraced = (data[2] & 2) != 0;
    const std::size_t zoneSize = std::min<std::size_t>(data[3], size - kHeadBytes);
    const std::uint64_t from = NumberAt(data + 4);
    const std::uint64_t to = from + NumberAt(data + 8);
    const std::uint8_t* const zone = data + kHeadBytes;
    const std::uint8_t* const blob = zone + zoneSize;
    const std::size_t blobSize = size - kHeadBytes - zoneSize;

    const CAnySite site;
    CNowhere nowhere;
    SetTraceRoute(isTraced ? &nowhere : nullptr);
    CRecurrentRule rule(keepsAll ? &site : nullptr);
    rule.SetInfo(NumberAt(data + 12),
                 static_cast<std::uint32_t>(blobSize),
                 blob,
                 static_cast<std::uint32_t>(zoneSize),
                 zone,
                 first,
                 dates::FileTimeOf(from * calendar::kTicksPerMinute),
                 dates::FileTimeOf(to * calendar::kTicksPerMinute),
                 WTEXT("Standup"),
                 WTEXT("Room"));
    std::uint32_t count = 7;
    InstanceList instances(3);
    const bool result = rule.ParseRule(count, instances);
    SetTraceRoute(nullptr);

    constexpr std::size_t kMostRounds = 1001;
    Require(count == instances.size());
    Require(result == (count > 0));
    Require(count <= kMostRounds + blobSize / 18);
    for (const RecurInstance& instance : instances)
    {
        Require(instance.start.wMonth <= 12 && instance.start.wDayOfWeek < 7);
        Require((instance.start.wMonth == 0) == (instance.start.wDay == 0));
    }
    return 0;
}
