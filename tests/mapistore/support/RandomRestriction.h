#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "StoreFixture.h"

namespace mapitest
{

using Rng = std::mt19937;

/// What a message of the random store has; an empty member is a property that it lacks.
struct Sample
{
    std::optional<int> importance; // PR_IMPORTANCE
    std::optional<int> flags;      // 0x66100003
    std::optional<std::wstring> subject;
    std::optional<std::wstring> comment;
    std::optional<bool> truth;        // 0x6611000B
    std::optional<std::int64_t> time; // PR_CLIENT_SUBMIT_TIME, in seconds of 2026
    std::optional<std::string> bytes; // 0x66120102
    std::vector<int> recipientTypes;
};

Sample MakeSample(Rng& rng);
/// The message as a store's document has it, in the inbox.
std::string MessageJson(int id, const Sample& sample);

/// A restriction with everything that it points to, and the plain meaning of it.
struct Made
{
    SRestriction res{};
    std::function<bool(const Sample&)> means;
    std::vector<SRestriction> children;
    std::vector<std::shared_ptr<Made>> owned;
    SPropValue value{};
    std::wstring text;
    std::string bytes;
};

/// A random restriction of any kind; `depth` is 0 for the outermost.
std::shared_ptr<Made> MakeRestriction(Rng& rng, int depth);

} // namespace mapitest
