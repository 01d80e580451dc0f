#include "DateTexts.h"
#include "Engines.h"
#include "PlatformDates.h"
#include "RecurrentRule.h"
#include "ZoneSamples.h"

namespace
{

FILETIME FileTimeOfText(const std::string& text)
{
    FILETIME fileTime{};
    static_cast<void>(dates::SystemTimeToFileTime(TimeOf(text), fileTime));
    return fileTime;
}

} // namespace

COurEngine::COurEngine(pattern::Bytes blob, const std::string& from, const std::string& to)
    : m_blob(std::move(blob)), m_zone(pattern::Zone(zones::UsEastern())),
      m_from(FileTimeOfText(from)), m_to(FileTimeOfText(to))
{
}

const InstanceList& COurEngine::Expand()
{
    CRecurrentRule rule(nullptr);
    std::uint32_t count = 0;
    rule.SetInfo(1,
                 static_cast<std::uint32_t>(m_blob.size()),
                 m_blob.data(),
                 static_cast<std::uint32_t>(m_zone.size()),
                 m_zone.data(),
                 TimeOf("2024-01-01T09:00:00"),
                 m_from,
                 m_to,
                 m_subject,
                 m_location);
    rule.ParseRule(count, m_instances);
    return m_instances;
}

std::int64_t StampOf(const SYSTEMTIME& time)
{
    return (((std::int64_t{time.wYear} * 100 + time.wMonth) * 100 + time.wDay) * 100 + time.wHour) *
               100 +
           time.wMinute;
}
