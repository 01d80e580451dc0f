#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "PatternBlob.h"
#include "RecurInstance.h"
#include "SeriesCases.h"

/// Our engine on one stored pattern, from the bytes to the list.
class COurEngine
{
public:
    COurEngine(pattern::Bytes blob, const std::string& from, const std::string& to);

    const InstanceList& Expand();

private:
    pattern::Bytes m_blob;
    pattern::Bytes m_zone;
    FILETIME m_from{};
    FILETIME m_to{};
    WString m_subject = WTEXT("Status of the project");
    WString m_location = WTEXT("Room 12.4");
    InstanceList m_instances;
};

/// libical on the same series: its iterator, and both ends of each instance to UTC.
class CLibicalEngine
{
public:
    explicit CLibicalEngine(const SeriesCase& series);

    /// Start and end of each instance as YYYYMMDDHHMM in UTC.
    struct Instance
    {
        std::int64_t start;
        std::int64_t end;
    };
    const std::vector<Instance>& Expand();

private:
    std::string m_rule;
    std::string m_firstDay;
    std::int64_t m_to;
    std::vector<Instance> m_instances;
};

/// YYYYMMDDHHMM.
std::int64_t StampOf(const SYSTEMTIME& time);
