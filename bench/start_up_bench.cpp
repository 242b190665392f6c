// How long a run takes before it tests anything: the whole program with every test disabled, and
// the loading of a large configuration. Both have a bound of 20 ms.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "config/configuration.h"
#include "table.h"

namespace {

/// Enters a fresh directory for the life of the program.
const std::filesystem::path& workingDirectory() {
    static const std::filesystem::path path = [] {
        std::filesystem::path fresh =
            std::filesystem::temp_directory_path() / "vorn-start-up-bench";
        std::filesystem::create_directories(fresh);
        std::filesystem::current_path(fresh);
        return fresh;
    }();
    return path;
}

void startAndEnd(benchmark::State& state) {
    workingDirectory();
    std::ofstream(vorn::configurationFileName) << "<VORN IMCTest='DISABLE' SkipConfig='YES'/>";
    for (auto _ : state) {
        if (std::system(VORN_PROGRAM " >/dev/null 2>&1") != 0) {
            state.SkipWithError("the program failed");
        }
    }
}

/// One megabyte of processor entries, none of which is this processor's; and of one attribute.
std::string largeConfiguration(bool manyEntries) {
    constexpr std::size_t size = 1U << 20U;
    std::string text = "<VORN>";
    if (!manyEntries) {
        return "<VORN Site='" + std::string(size, 'x') + "'/>";
    }
    for (int number = 0; text.size() < size; ++number) {
        text += "<Processor CPUName='Ovrin(R) Core(TM) i7-" + std::to_string(number) +
                " CPU @ 3.40GHz' L2Cache='1MB' L3Cache='8MB' BUSSpeed='1333'/>\n";
    }
    return text + "</VORN>";
}

void loadOneMegabyte(benchmark::State& state) {
    workingDirectory();
    std::ofstream(vorn::configurationFileName) << largeConfiguration(state.range(0) != 0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(vorn::loadConfiguration());
    }
}

BENCHMARK(startAndEnd)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(loadOneMegabyte)->ArgName("entries")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// The usual report, and a row of the table for each run.
class TableReporter : public benchmark::ConsoleReporter {
public:
    TableReporter() : ConsoleReporter(OO_None) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            constexpr double bound = 20;
            char figure[32];
            std::snprintf(figure, sizeof figure, "%.2f ms", run.GetAdjustedRealTime());
            printTableRow(run.benchmark_name().c_str(), figure, "bound 20 ms",
                          run.GetAdjustedRealTime() / bound, "at most 1");
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
