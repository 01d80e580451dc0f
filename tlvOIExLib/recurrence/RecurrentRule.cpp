#include "RecurrentRule.h"

#include <exception>

#include "BlobCursor.h"
#include "HexText.h"
#include "NarrowText.h"
#include "Trace.h"
#include "ZoneTime.h"

namespace
{

constexpr std::uint32_t kFrequencyOffset = 4;
constexpr std::uint32_t kShortestHead = 34; // with no pattern-specific field

/// One zone, as old calendars stored it, claims a daylight time that it never had.
void MendOldZone(const SYSTEMTIME& firstTime, TIME_ZONE_INFORMATION& zone) noexcept
{
    constexpr WORD kFirstGoodYear = 2020;
    if (firstTime.wYear < kFirstGoodYear && zone.Bias == 180 && zone.StandardDate.wMonth == 2)
    {
        zone.StandardDate = SYSTEMTIME{};
        zone.DaylightDate = SYSTEMTIME{};
    }
}

RuleKind KindOfFrequency(std::uint8_t frequency) noexcept
{
    switch (frequency)
    {
    case 10:
        return RuleKind::Daily;
    case 11:
        return RuleKind::Weekly;
    case 12:
        return RuleKind::Monthly;
    case 13:
        return RuleKind::Yearly;
    default:
        return RuleKind::Unknown;
    }
}

} // namespace

void CRecurrentRule::SetInfo(std::uint32_t /*recurrentType*/,
                             std::uint32_t blobSize,
                             const std::uint8_t* blob,
                             std::uint32_t zoneSize,
                             const std::uint8_t* zoneBlob,
                             const SYSTEMTIME& firstTime,
                             const FILETIME& windowStart,
                             const FILETIME& windowEnd,
                             WStringView subject,
                             WStringView location)
{
    m_firstTime = firstTime;
    m_windowStart = windowStart;
    m_windowEnd = windowEnd;
    m_subject = subject;
    m_location = location;
    if (blob == nullptr || blobSize == 0)
    {
        return;
    }
    m_blob.assign(blob, blob + blobSize);
    if (ConvertBinToTimezoneInfo(zoneSize, zoneBlob, &m_zInfo))
    {
        MendOldZone(m_firstTime, m_zInfo);
    }
    SEND_TRACE(3,
               "CRecurrentRule::SetInfo",
               "CRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=%d "
               "m_zInfo.DaylightDate.wMonth=%d",
               int{m_zInfo.StandardDate.wMonth},
               int{m_zInfo.DaylightDate.wMonth});
    m_ruleKind = KindOfFrequency(static_cast<std::uint8_t>(HeadU16(kFrequencyOffset)));
}

bool CRecurrentRule::ParseRule(std::uint32_t& outCount, InstanceList& instances)
{
    outCount = 0;
    instances.clear();
    if (m_blob.empty() || !HasHead(0, "CRecurrentRule::ParseRule"))
    {
        return false;
    }
    switch (m_ruleKind)
    {
    case RuleKind::Daily:
        return ParseDaily(outCount, instances);
    case RuleKind::Weekly:
        return ParseWeekly(outCount, instances);
    case RuleKind::Monthly:
        return ParseMonthly(outCount, instances);
    case RuleKind::Yearly:
        return ParseYearly(outCount, instances);
    case RuleKind::Unknown:
        break;
    }
    return false;
}

bool CRecurrentRule::HasHead(std::uint32_t patternBytes, const char* function) const
{
    if (m_blob.size() >= kShortestHead + patternBytes)
    {
        return true;
    }
    SEND_TRACE(1, function, "%s-pattern too short, size[%zu]", function, m_blob.size());
    return false;
}

std::uint32_t CRecurrentRule::HeadU32(std::uint32_t offset) const noexcept
{
    return CBlobCursor(m_blob, offset).ReadU32();
}

std::uint16_t CRecurrentRule::HeadU16(std::uint32_t offset) const noexcept
{
    return CBlobCursor(m_blob, offset).ReadU16();
}

void CRecurrentRule::TakeEnd(std::uint32_t offset, std::uint32_t bytes) noexcept
{
    m_uRecurrentType.value = bytes == 2 ? HeadU16(offset) : HeadU32(offset);
    m_occurrenceCount = bytes == 2 ? HeadU16(offset + 4) : HeadU32(offset + 4);
}

bool CRecurrentRule::GetResExceptionInfo(std::uint32_t tailArgument, ExceptionMap& exceptions)
{
    constexpr std::uint32_t kFirstDayOfWeekBytes = 4;
    try
    {
        const CPatternTailReader reader(m_blob, m_subject, m_location);
        const TailResult result =
            reader.Read(tailArgument + kFirstDayOfWeekBytes, m_tail, exceptions);
        if (result.warning != TailWarning::None)
        {
            TraceTailWarning(result);
        }
        return result.isComplete;
    }
    catch (const std::exception&)
    {
        SEND_TRACE(1, "CRecurrentRule::GetResExceptionInfo", "Rec rule parse warning");
        TraceBlob();
        return false;
    }
}

void CRecurrentRule::TraceTailWarning(const TailResult& result) const
{
    if (!IsTraceOpen())
    {
        return;
    }
    SEND_TRACE(1,
               "CRecurrentRule::GetResExceptionInfo",
               "Rec rule parse warning, Appt Name[%s], pos[%d], posEx[%d]",
               NarrowText(m_subject).c_str(),
               static_cast<int>(static_cast<std::uint32_t>(result.position - 4)),
               static_cast<int>(result.warning));
    TraceBlob();
}

void CRecurrentRule::TraceBlob() const
{
    if (!IsTraceOpen())
    {
        return;
    }
    SEND_TRACE(1,
               "CRecurrentRule::GetResExceptionInfo",
               "Size[%d] Info[%s]",
               static_cast<int>(m_blob.size()),
               NarrowText(HexTextOf(m_blob)).c_str());
}
