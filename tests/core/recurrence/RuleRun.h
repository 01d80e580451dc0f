#pragma once

#include <string>
#include <vector>

#include "PatternBlob.h"
#include "PlatformTypes.h"
#include "RecurInstance.h"
#include "RecurrenceSettings.h"

/// Settings as plain values; counts how often the site was asked for.
class CPlainSettings final : public IRecurrenceSettings
{
public:
    WString SiteName() const override
    {
        ++reads;
        return site;
    }
    WString KeepAllSiteName() const override { return keepAll; }

    WString site;
    WString keepAll;
    mutable int reads = 0;
};

/// One expansion: what goes in, with defaults that a test changes where it matters.
struct RuleRun
{
    pattern::Bytes blob;
    pattern::Bytes zone; ///< empty: local time is UTC
    std::string firstTime = "2024-01-01T09:00:00";
    std::string from = "2024-01-01T00:00:00"; ///< UTC
    std::string to = "2024-12-31T23:59:00";   ///< UTC
    WString subject = WTEXT("Standup");
    WString location = WTEXT("Room 1");
    const IRecurrenceSettings* settings = nullptr;

    // What comes out.
    bool result = false;
    std::uint32_t count = 0;
    InstanceList instances;

    RuleRun& Expand();

    /// Start of each instance, "YYYY-MM-DDTHH:MM:SS".
    std::vector<std::string> Starts() const;
    /// The date of each start alone.
    std::vector<std::string> Dates() const;
};

/// A run over a window of whole UTC minutes.
RuleRun ExpandRule(const pattern::Pattern& pattern, const std::string& from, const std::string& to);
RuleRun ExpandRule(const pattern::Bytes& blob, const std::string& from, const std::string& to);

/// The dates of Run, for the many tests that ask for nothing else.
std::vector<std::string> DatesOf(const pattern::Pattern& pattern,
                                 const std::string& from,
                                 const std::string& to);

using Dates = std::vector<std::string>;
