#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "Engines.h"

// Nanoseconds an instance, ours and libical's, on the same series in the same zone.

namespace
{

void RunOurs(benchmark::State& state, const SeriesCase& series)
{
    COurEngine engine(series.pattern.Write(), series.from, series.to);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(engine.Expand().size());
    }
    state.counters["ns/instance"] = benchmark::Counter(
        1e-9 * static_cast<double>(series.instances),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void RunLibical(benchmark::State& state, const SeriesCase& series)
{
    CLibicalEngine engine(series);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(engine.Expand().size());
    }
    state.counters["ns/instance"] = benchmark::Counter(
        1e-9 * static_cast<double>(series.instances),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Figures of two engines that do not agree would mean nothing.
void RequireAgreement(const SeriesCase& series)
{
    COurEngine ours(series.pattern.Write(), series.from, series.to);
    CLibicalEngine theirs(series);
    const InstanceList& a = ours.Expand();
    const std::vector<CLibicalEngine::Instance>& b = theirs.Expand();
    bool isSame = a.size() == series.instances && b.size() == series.instances;
    std::size_t i = 0;
    for (const RecurInstance& instance : a)
    {
        isSame =
            isSame && StampOf(instance.start) == b[i].start && StampOf(instance.end) == b[i].end;
        ++i;
    }
    if (!isSame)
    {
        std::fprintf(stderr,
                     "%s: the engines do not agree (%zu and %zu of %zu instances)\n",
                     series.name,
                     a.size(),
                     b.size(),
                     series.instances);
        std::exit(1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    static const std::vector<SeriesCase> cases = SeriesCases();
    for (const SeriesCase& series : cases)
    {
        RequireAgreement(series);
        const std::string name = series.name;
        benchmark::RegisterBenchmark((name + "/ours").c_str(), RunOurs, series);
        benchmark::RegisterBenchmark((name + "/libical").c_str(), RunLibical, series);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
