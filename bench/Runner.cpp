#include "Runner.h"

#include "support/Failure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace bench
{

namespace
{

constexpr double NANOSECONDS = 1e9;
constexpr double TOLERANCE = 1e-9;

double runOnce(const Variant& variant)
{
    if (variant.prepare)
        variant.prepare();
    return variant.run();
}

void checkAgreement(const std::string& name, const std::vector<Variant>& variants)
{
    double expected = 0.0;
    for (std::size_t i = 0; i < variants.size(); ++i)
    {
        const double result = runOnce(variants[i]);
        runOnce(variants[i]);
        if (i == 0)
            expected = result;
        if (std::isnan(result) || std::abs(result - expected) > TOLERANCE * std::abs(expected))
            fail(name + ": the variants differ in what they do");
    }
}

double medianOf(std::vector<double> values)
{
    if (values.empty())
        fail("nothing was measured");
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

// Collects the times of the variants, which are registered by their numbers.
class Collector : public benchmark::BenchmarkReporter
{
public:
    Collector(const std::vector<std::size_t>& operations, std::vector<Timing>& timings)
        : m_operations(operations)
        , m_timings(timings)
    {
    }

    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
        {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const auto variant = std::stoul(run.run_name.function_name);
            const auto timed =
                static_cast<double>(run.iterations) * static_cast<double>(m_operations[variant]);
            m_timings[variant].repetitions.push_back(
                run.cpu_accumulated_time * NANOSECONDS / timed);
        }
    }

private:
    const std::vector<std::size_t>& m_operations;
    std::vector<Timing>& m_timings;
};

void timeVariant(benchmark::State& state, const Variant& variant)
{
    if (variant.prepare)
        variant.prepare();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(variant.run());
}

} // namespace

void initialiseMeasuring()
{
    // Repetitions of the registered variants are shuffled: what disturbs the machine for a while
    // disturbs all of them alike.
    std::array<std::string, 2> arguments{"bench", "--benchmark_enable_random_interleaving=true"};
    std::array<char*, 3> pointers{arguments[0].data(), arguments[1].data(), nullptr};
    int count = 2;
    benchmark::Initialize(&count, pointers.data());
}

std::vector<Timing> measure(
    const std::string& name,
    const std::vector<Variant>& variants,
    const std::vector<std::size_t>& operations,
    int repetitions)
{
    checkAgreement(name, variants);
    benchmark::ClearRegisteredBenchmarks();
    for (std::size_t i = 0; i < variants.size(); ++i)
    {
        benchmark::RegisterBenchmark(
            std::to_string(i).c_str(),
            [&variant = variants[i]](benchmark::State& state) { timeVariant(state, variant); })
            ->Iterations(1)
            ->Repetitions(repetitions);
    }

    std::vector<Timing> timings(variants.size());
    Collector collector(operations, timings);
    benchmark::RunSpecifiedBenchmarks(&collector, ".*");
    for (Timing& timing : timings)
        timing.median = medianOf(timing.repetitions);
    return timings;
}

} // namespace bench
