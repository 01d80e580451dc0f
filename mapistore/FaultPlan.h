#pragma once

#include <windows.h>

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Operation.h"

namespace mapistore
{

/// What a plan asks of one call. The parts that shape a result are looked at by the operation.
struct FaultOutcome
{
    bool fails = false; // the operation is not performed
    bool gives = false; // performed, and this status in place of its own
    HRESULT status = S_OK;
    std::int64_t rows = -1;                        // QueryRows: at most so many
    std::int64_t bytes = -1;                       // IStream::Read: at most so many
    std::vector<std::pair<ULONG, HRESULT>> errors; // properties that come back as errors
};

/// A fault plan: which calls fail, come back cut, wait, hang or crash. The text is described in
/// docs/mapistore-library.md.
///
/// Thread: any.
class CFaultPlan
{
public:
    /// Replaces the plan. False leaves an empty plan, and `problem` tells what is wrong where.
    bool Parse(std::string_view text, std::string& problem);

    /// Counts a call and does its waiting, hanging and crashing before it returns.
    /// `subjects` says what the call is about: the kind of a table, a property tag.
    FaultOutcome Enter(Operation operation, const std::vector<std::string>& subjects);

    /// True when some rule could concern the operation, so that nobody builds subjects for nothing.
    bool Concerns(Operation operation) const;

    /// One line a rule: how often it applied.
    std::vector<std::string> Report() const;

private:
    enum class When
    {
        Every,
        Range,
        Share
    };
    enum class What
    {
        Fail,
        Give,
        Rows,
        Bytes,
        Error,
        Wait,
        Hang,
        Crash
    };
    struct Rule
    {
        std::string text;
        std::vector<bool> operations;
        std::string subject;
        When when = When::Every;
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        double share = 0;
        std::uint64_t random = 0;
        What what = What::Fail;
        HRESULT status = S_OK;
        std::uint64_t number = 0; // rows, bytes, milliseconds
        ULONG tag = 0;
        std::string event;
        std::uint64_t calls = 0;
        std::uint64_t applied = 0;
    };

    static bool ParseRule(std::string_view text, Rule& rule, std::string& problem);
    static bool ParseWhen(const std::vector<std::string>& words, size_t& next, Rule& rule);
    static bool ParseWhat(const std::vector<std::string>& words, size_t& next, Rule& rule);
    static bool Applies(Rule& rule);

    mutable std::mutex m_lock; // guards the rules with their counters
    std::vector<Rule> m_rules;
};

/// The number or the usual name of a status: "0x80040115", "MAPI_E_NETWORK_ERROR".
bool ParseStatus(std::string_view text, HRESULT& status);

} // namespace mapistore
