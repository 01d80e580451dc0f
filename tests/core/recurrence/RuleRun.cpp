#include "RuleRun.h"

#include "DateTexts.h"
#include "PlatformDates.h"
#include "RecurrentRule.h"

namespace
{

FILETIME FileTimeOfText(const std::string& text)
{
    FILETIME fileTime{};
    if (!dates::SystemTimeToFileTime(TimeOf(text), fileTime))
    {
        fileTime = dates::FileTimeOf(~0ULL); // not convertible, on purpose
    }
    return fileTime;
}

} // namespace

RuleRun& RuleRun::Expand()
{
    CRecurrentRule rule(settings);
    rule.SetInfo(1,
                 static_cast<std::uint32_t>(blob.size()),
                 blob.data(),
                 static_cast<std::uint32_t>(zone.size()),
                 zone.data(),
                 TimeOf(firstTime),
                 FileTimeOfText(from),
                 FileTimeOfText(to),
                 subject,
                 location);
    result = rule.ParseRule(count, instances);
    return *this;
}

std::vector<std::string> RuleRun::Starts() const
{
    std::vector<std::string> starts;
    for (const RecurInstance& instance : instances)
    {
        starts.push_back(TextOf(instance.start));
    }
    return starts;
}

std::vector<std::string> RuleRun::Dates() const
{
    std::vector<std::string> dates;
    for (const std::string& start : Starts())
    {
        dates.push_back(start.substr(0, 10));
    }
    return dates;
}

RuleRun ExpandRule(const pattern::Bytes& blob, const std::string& from, const std::string& to)
{
    RuleRun run;
    run.blob = blob;
    run.from = from;
    run.to = to;
    run.Expand();
    return run;
}

RuleRun ExpandRule(const pattern::Pattern& pattern, const std::string& from, const std::string& to)
{
    return ExpandRule(pattern.Write(), from, to);
}

std::vector<std::string> DatesOf(const pattern::Pattern& pattern,
                                 const std::string& from,
                                 const std::string& to)
{
    return ExpandRule(pattern, from, to).Dates();
}
