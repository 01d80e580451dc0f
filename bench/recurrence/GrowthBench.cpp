#include <benchmark/benchmark.h>

#include "CountedHeap.h"
#include "Engines.h"
#include "PatternBlob.h"

// How time and memory grow with what a pattern holds: "heap bytes each" and "time each" of a group stay
// about the same where growth is linear. Each expansion has a fixed part, which shows in the smallest
// of a group. What belongs to the pattern alone is measured with a window of one day.

namespace
{

constexpr const char* kFrom = "2024-01-01T05:00:00";

/// `pieces` is what the figures are divided by.
void Measure(benchmark::State& state,
             const pattern::Pattern& pattern,
             const std::string& to,
             double pieces)
{
    const pattern::Bytes blob = pattern.Write();
    COurEngine engine(blob, kFrom, to);
    const std::size_t before = HeapBytesAsked();
    const std::size_t instances = engine.Expand().size();
    const auto heap = static_cast<double>(HeapBytesAsked() - before);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(engine.Expand().size());
    }
    state.counters["instances"] = static_cast<double>(instances);
    state.counters["blob bytes"] = static_cast<double>(blob.size());
    state.counters["heap bytes each"] = heap / pieces;
    state.counters["time each"] = benchmark::Counter(
        pieces, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

pattern::Modified ChangedDay(std::uint32_t day)
{
    pattern::Modified modified;
    modified.original = pattern::Minutes("2024-01-01") + day * 1440 + 540;
    modified.start = modified.original + 60;
    modified.end = modified.start + 60;
    return modified;
}

void Instances(benchmark::State& state)
{
    const auto count = static_cast<std::uint32_t>(state.range(0));
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.endType = pattern::kEndByDate;
    rule.endDate = rule.startDate + (count - 1) * 1440;
    Measure(state, rule, "2034-01-01T05:00:00", count);
}

void DeletedDates(benchmark::State& state)
{
    const auto count = static_cast<std::uint32_t>(state.range(0));
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    for (std::uint32_t day = 0; day < count; ++day)
    {
        rule.deleted.push_back(rule.startDate + day * 1440);
    }
    Measure(state, rule, "2024-01-02T04:00:00", count);
}

void ModifiedInstances(benchmark::State& state)
{
    const auto count = static_cast<std::uint32_t>(state.range(0));
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.endType = pattern::kEndByDate;
    rule.endDate = rule.startDate + (count - 1) * 1440;
    for (std::uint32_t day = 0; day < count; ++day)
    {
        rule.modified.push_back(ChangedDay(day));
    }
    Measure(state, rule, "2034-01-01T05:00:00", count);
}

/// Texts of 60 characters: what makes a pattern large in a mailbox.
void BlobBytes(benchmark::State& state)
{
    const auto bytes = static_cast<std::size_t>(state.range(0));
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    for (std::uint32_t day = 0; rule.Write().size() + 240 < bytes; ++day)
    {
        pattern::Modified modified = ChangedDay(day);
        modified.subject = std::string(60, 's');
        rule.modified.push_back(modified);
    }
    Measure(state, rule, "2024-01-02T04:00:00", static_cast<double>(bytes));
}

void HundredExceptionsInAWindow(benchmark::State& state)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    for (std::uint32_t day = 0; day < 100; ++day)
    {
        rule.modified.push_back(ChangedDay(day));
    }
    Measure(state, rule, "2024-12-31T05:00:00", 1);
}

/// A yearly rule on a day that does not exist: 1001 rounds and nothing to show.
void TryLimit(benchmark::State& state)
{
    Measure(state, pattern::YearlyDay("2024-04-30", 31, 1), "2034-01-01T05:00:00", 1);
}

} // namespace

BENCHMARK(Instances)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(DeletedDates)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(ModifiedInstances)->RangeMultiplier(10)->Range(10, 1000);
BENCHMARK(BlobBytes)->Arg(1000)->Arg(4000)->Arg(15000)->Arg(60000)->Arg(240000);
BENCHMARK(HundredExceptionsInAWindow);
BENCHMARK(TryLimit);

BENCHMARK_MAIN();
