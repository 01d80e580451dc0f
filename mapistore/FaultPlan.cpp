#include "FaultPlan.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "Mapi64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr std::uint64_t kForever = ~std::uint64_t{0};

bool ParseNumber(const std::string& text, std::uint64_t& number)
{
    char* end = nullptr;
    number = std::strtoull(text.c_str(), &end, 0);
    return !text.empty() && text[0] != '-' && *end == '\0';
}

/// "IMAPIProp::GetProps" stands for every interface that inherits it.
bool BaseMatches(std::string_view base, std::string_view operation)
{
    const size_t split = operation.find("::");
    if (split == std::string_view::npos)
    {
        return false;
    }
    const std::string_view interfaceName = operation.substr(0, split);
    const std::string_view method = operation.substr(split + 2);
    static constexpr std::string_view kProp[] = {"GetLastError",
                                                 "SaveChanges",
                                                 "GetProps",
                                                 "GetPropList",
                                                 "OpenProperty",
                                                 "SetProps",
                                                 "DeleteProps",
                                                 "CopyTo",
                                                 "CopyProps",
                                                 "GetNamesFromIDs",
                                                 "GetIDsFromNames"};
    static constexpr std::string_view kContainer[] = {"GetContentsTable",
                                                      "GetHierarchyTable",
                                                      "OpenEntry",
                                                      "SetSearchCriteria",
                                                      "GetSearchCriteria"};
    const auto within = [&](const auto& list) {
        return std::find(std::begin(list), std::end(list), method) != std::end(list);
    };
    if (base == "IMAPIProp")
    {
        return within(kProp) && interfaceName != "IMAPITable" && interfaceName != "IMAPISession" &&
               interfaceName != "IProfAdmin";
    }
    const bool isContainer = interfaceName == "IMAPIFolder" || interfaceName == "IABContainer" ||
                             interfaceName == "IDistList";
    return base == "IMAPIContainer" && isContainer && (within(kContainer) || within(kProp));
}

std::vector<bool> MatchOperations(std::string_view name)
{
    std::vector<bool> matches(kOperationCount, false);
    const size_t split = name.find("::");
    for (Operation i = 0; i < kOperationCount; ++i)
    {
        matches[i] = kOperationNames[i] == name;
        if (!matches[i] && split != std::string_view::npos)
        {
            const std::string_view method = name.substr(split + 2);
            const std::string_view own = kOperationNames[i];
            const size_t ownSplit = own.find("::");
            matches[i] = ownSplit != std::string_view::npos && own.substr(ownSplit + 2) == method &&
                         BaseMatches(name.substr(0, split), own);
        }
    }
    return matches;
}

std::vector<std::string> Words(std::string_view text)
{
    std::istringstream stream{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
    {
        words.push_back(word);
    }
    return words;
}

/// The next number of a fixed sequence, so that a seed gives the same calls on every machine.
std::uint64_t NextRandom(std::uint64_t& state)
{
    state += 0x9E3779B97F4A7C15ULL;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ULL;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
    return mixed ^ (mixed >> 31);
}

void Hang(const std::string& name)
{
    const std::wstring release = FromUtf8("MapiStore." + name);
    const std::wstring reached = FromUtf8("MapiStore." + name + ".reached");
    HANDLE releaseEvent = CreateEventW(nullptr, TRUE, FALSE, release.c_str());
    HANDLE reachedEvent = CreateEventW(nullptr, TRUE, FALSE, reached.c_str());
    if (reachedEvent != nullptr)
    {
        SetEvent(reachedEvent);
        CloseHandle(reachedEvent);
    }
    if (releaseEvent != nullptr)
    {
        WaitForSingleObject(releaseEvent, INFINITE);
        CloseHandle(releaseEvent);
    }
}

void Crash()
{
    // The compiler knows what a null pointer is, but not what this holds.
    volatile std::uintptr_t nowhere = 0;
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

} // namespace

bool CFaultPlan::ParseWhen(const std::vector<std::string>& words, size_t& next, Rule& rule)
{
    if (next >= words.size())
    {
        return false;
    }
    const std::string& word = words[next++];
    if (word == "every")
    {
        rule.when = When::Every;
        return true;
    }
    if (next >= words.size())
    {
        return false;
    }
    const std::string& value = words[next++];
    if (word == "share")
    {
        rule.when = When::Share;
        char* end = nullptr;
        rule.share = std::strtod(value.c_str(), &end) / 100.0;
        const bool isPercent = end != value.c_str() && std::string_view(end) == "%";
        const bool inRange = rule.share >= 0.0 && rule.share <= 1.0; // which no NaN is
        return isPercent && inRange && next + 1 < words.size() && words[next] == "seed" &&
               ParseNumber(words[next + 1], rule.random) && (next += 2) != 0;
    }
    rule.when = When::Range;
    if (word == "call")
    {
        const bool good = ParseNumber(value, rule.first) && rule.first != 0;
        rule.last = rule.first;
        return good;
    }
    if (word == "from")
    {
        rule.last = kForever;
        return ParseNumber(value, rule.first) && rule.first != 0;
    }
    const size_t dash = value.find('-');
    return word == "calls" && dash != std::string::npos &&
           ParseNumber(value.substr(0, dash), rule.first) && rule.first != 0 &&
           ParseNumber(value.substr(dash + 1), rule.last) && rule.last >= rule.first;
}

bool CFaultPlan::ParseWhat(const std::vector<std::string>& words, size_t& next, Rule& rule)
{
    if (next >= words.size())
    {
        return false;
    }
    const std::string& word = words[next++];
    if (word == "crash")
    {
        rule.what = What::Crash;
        return true;
    }
    if (next >= words.size())
    {
        return false;
    }
    const std::string& value = words[next++];
    if (word == "fail" || word == "give")
    {
        rule.what = word == "fail" ? What::Fail : What::Give;
        return ParseStatus(value, rule.status);
    }
    if (word == "hang")
    {
        rule.what = What::Hang;
        rule.event = value;
        return true;
    }
    if (word == "error")
    {
        std::uint64_t tag = 0;
        rule.what = What::Error;
        const bool good = ParseNumber(value, tag) && next < words.size() &&
                          ParseStatus(words[next++], rule.status);
        rule.tag = static_cast<ULONG>(tag);
        return good;
    }
    rule.what = word == "rows" ? What::Rows : (word == "bytes" ? What::Bytes : What::Wait);
    return (word == "rows" || word == "bytes" || word == "wait") && ParseNumber(value, rule.number);
}

bool CFaultPlan::ParseRule(std::string_view text, Rule& rule, std::string& problem)
{
    const std::vector<std::string> words = Words(text);
    rule.text.clear();
    for (const std::string& word : words)
    {
        rule.text += rule.text.empty() ? word : " " + word;
    }
    std::string name = words.front();
    const size_t open = name.find('(');
    if (open != std::string::npos && name.back() == ')')
    {
        rule.subject = name.substr(open + 1, name.size() - open - 2);
        name.resize(open);
    }
    rule.operations = MatchOperations(name);
    if (std::find(rule.operations.begin(), rule.operations.end(), true) == rule.operations.end())
    {
        problem = "unknown operation " + name;
        return false;
    }
    size_t next = 1;
    if (!ParseWhen(words, next, rule))
    {
        problem = "expected: every, call N, calls N-M, from N, or share P% seed S";
        return false;
    }
    if (!ParseWhat(words, next, rule))
    {
        problem = "expected: fail STATUS, give STATUS, rows N, bytes N, error TAG STATUS, wait MS, "
                  "hang NAME, or crash";
        return false;
    }
    if (next != words.size())
    {
        problem = "unexpected " + words[next];
        return false;
    }
    return true;
}

bool CFaultPlan::Parse(std::string_view text, std::string& problem)
{
    std::vector<Rule> rules;
    int line = 1;
    bool good = true;
    while (!text.empty() && good)
    {
        const size_t end = text.find_first_of(";\n");
        std::string_view statement = text.substr(0, end);
        const bool lineEnds = end != std::string_view::npos && text[end] == '\n';
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        const size_t hash = statement.find('#');
        statement = statement.substr(0, hash);
        if (statement.find_first_not_of(" \t\r") != std::string_view::npos)
        {
            Rule rule;
            good = ParseRule(statement, rule, problem);
            rules.push_back(std::move(rule));
        }
        if (!good)
        {
            problem.insert(0, "fault plan, line " + std::to_string(line) + ": ");
        }
        line += lineEnds ? 1 : 0;
    }
    if (!good)
    {
        rules.clear();
    }
    const std::scoped_lock hold(m_lock);
    m_rules = std::move(rules);
    return good;
}

bool CFaultPlan::Applies(Rule& rule)
{
    ++rule.calls;
    bool applies = true;
    if (rule.when == When::Range)
    {
        applies = rule.calls >= rule.first && rule.calls <= rule.last;
    }
    else if (rule.when == When::Share)
    {
        const double drawn = static_cast<double>(NextRandom(rule.random) >> 11) * 0x1.0p-53;
        applies = drawn < rule.share;
    }
    rule.applied += applies ? 1 : 0;
    return applies;
}

bool CFaultPlan::Concerns(Operation operation) const
{
    const std::scoped_lock hold(m_lock);
    for (const Rule& rule : m_rules)
    {
        if (rule.operations[operation])
        {
            return true;
        }
    }
    return false;
}

FaultOutcome CFaultPlan::Enter(Operation operation, const std::vector<std::string>& subjects)
{
    FaultOutcome outcome;
    std::uint64_t waitMs = 0;
    std::vector<std::string> hangs;
    bool crash = false;
    {
        const std::scoped_lock hold(m_lock);
        for (Rule& rule : m_rules)
        {
            const bool about =
                rule.subject.empty() ||
                std::find(subjects.begin(), subjects.end(), rule.subject) != subjects.end();
            if (!rule.operations[operation] || !about || !Applies(rule))
            {
                continue;
            }
            switch (rule.what)
            {
            case What::Fail:
                outcome.fails = true;
                outcome.status = rule.status;
                break;
            case What::Give:
                outcome.gives = true;
                outcome.status = rule.status;
                break;
            case What::Rows:
                outcome.rows = static_cast<std::int64_t>(rule.number);
                break;
            case What::Bytes:
                outcome.bytes = static_cast<std::int64_t>(rule.number);
                break;
            case What::Error:
                outcome.errors.emplace_back(rule.tag, rule.status);
                break;
            case What::Wait:
                waitMs += rule.number;
                break;
            case What::Hang:
                hangs.push_back(rule.event);
                break;
            case What::Crash:
                crash = true;
                break;
            }
        }
    }
    if (waitMs != 0)
    {
        // Never the value that means for ever; that is what `hang` is for.
        Sleep(static_cast<DWORD>(std::min<std::uint64_t>(waitMs, INFINITE - 1)));
    }
    for (const std::string& name : hangs)
    {
        Hang(name);
    }
    if (crash)
    {
        Crash();
    }
    return outcome;
}

std::vector<std::string> CFaultPlan::Report() const
{
    const std::scoped_lock hold(m_lock);
    std::vector<std::string> lines;
    for (const Rule& rule : m_rules)
    {
        lines.push_back("fault applied " + std::to_string(rule.applied) + " of " +
                        std::to_string(rule.calls) + " calls: " + rule.text);
    }
    return lines;
}

} // namespace mapistore
