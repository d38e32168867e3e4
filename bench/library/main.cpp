// Runs the rows of the comparison. For each row the variants' outputs are compared, then all are
// timed side by side: their repetitions are interleaved at random. The raw times go to a JSON file
// of Google Benchmark's form, of which report.py makes ratios.
//
//   library_bench --out=FILE [--rows=REGEX] [--list] [--benchmark_repetitions=N] ...
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>

#include "rows.h"
#include "signals.h"
#include "simd/level.h"

using sorvo::audio::simd_level_name;
using sorvo::audio::SimdLevel;

namespace {

using namespace sorvo::bench;

/// Keeps all results of many short runs, to be written as one file.
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run>& report) override {
        runs_.insert(runs_.end(), report.begin(), report.end());
    }

    bool write(const std::string& path) {
        std::ofstream file(path);
        benchmark::JSONReporter json;
        json.SetOutputStream(&file);
        json.SetErrorStream(&std::cerr);
        json.ReportContext(Context());
        json.ReportRuns(runs_);
        json.Finalize();
        return file.good();
    }

  private:
    std::vector<Run> runs_;
};

double relative_difference(const float* a, const float* reference, std::size_t n) {
    double difference = 0.0;
    double energy = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double r = static_cast<double>(reference[i]);
        const double d = static_cast<double>(a[i]) - r;
        difference += d * d;
        energy += r * r;
    }
    return std::sqrt(difference / energy);
}

/// All variants of a row, those of the library first, the highest level before the others.
std::vector<Variant> all_variants(const Row& row) {
    std::vector<Variant> variants;
    for (const SimdLevel level : sorvo::audio::all_simd_levels()) {
        if (row.ours && sorvo::audio::is_supported(level)) {
            variants.insert(variants.begin(),
                            {std::string("ours:") + simd_level_name(level),
                             [&row, level](float* dst) { row.ours(dst, level); }});
        }
    }
    variants.insert(variants.end(), row.others.begin(), row.others.end());
    return variants;
}

/// Every variant does the same task, or the figures mean nothing.
bool outputs_agree(const Row& row, const std::vector<Variant>& variants, float* dst) {
    if (row.tolerance == 0.0) return true;
    std::vector<float> reference;
    bool agree = true;
    for (const Variant& variant : variants) {
        std::fill(dst, dst + row.output_n, NAN);
        variant.run(dst);
        if (reference.empty()) {
            reference.assign(dst, dst + row.output_n);
        }
        const double difference = relative_difference(dst, reference.data(), row.output_n);
        if (!(difference <= row.tolerance)) {
            std::fprintf(stderr, "  %s differs by %.2g\n", variant.name.c_str(), difference);
            agree = false;
        }
    }
    return agree;
}

bool run_row(const RowMaker& maker, Collector& collector) {
    const Row row = maker.make();
    const AlignedFloats output = aligned_floats(row.output_n);
    float* const dst = output.get();
    const std::vector<Variant> variants = all_variants(row);
    if (!outputs_agree(row, variants, dst)) return false;

    for (const Variant& variant : variants) {
        const std::string name = maker.name + "/" + variant.name;
        benchmark::RegisterBenchmark(name.c_str(), [&variant, dst](benchmark::State& state) {
            variant.run(dst);  // tables are built, caches warm
            for (auto _ : state) {
                variant.run(dst);
                benchmark::ClobberMemory();
            }
        });
    }
    benchmark::RunSpecifiedBenchmarks(&collector, "all");
    benchmark::ClearRegisteredBenchmarks();
    return true;
}

/// The value of an argument "--name=value", which is then taken out of the list.
std::string take_option(int& argc, char** argv, const std::string& name,
                        const std::string& fallback) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == name || argument.rfind(name + "=", 0) == 0) {
            std::copy(argv + i + 1, argv + argc, argv + i);
            --argc;
            return argument == name ? "yes" : argument.substr(name.size() + 1);
        }
    }
    return fallback;
}

/// Google Benchmark's options, the defaults of this program before those of the caller.
bool initialise_benchmark(int argc, char** argv) {
    std::vector<std::string> defaults = {"--benchmark_enable_random_interleaving=true",
                                         "--benchmark_report_aggregates_only=true",
                                         "--benchmark_repetitions=15", "--benchmark_min_time=0.03"};
    std::vector<char*> arguments = {argv[0]};
    for (std::string& option : defaults) arguments.push_back(option.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int argument_n = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&argument_n, arguments.data());
    return !benchmark::ReportUnrecognizedArguments(argument_n, arguments.data());
}

std::string processor_name() {
    std::ifstream info("/proc/cpuinfo");
    std::string line;
    while (std::getline(info, line)) {
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    }
    return "unknown";
}

}  // namespace

int main(int argc, char** argv) {
    const std::string out = take_option(argc, argv, "--out", "library_bench.json");
    const std::regex wanted(take_option(argc, argv, "--rows", ""));
    const bool list_only = !take_option(argc, argv, "--list", "").empty();
    if (!initialise_benchmark(argc, argv)) return 2;
    benchmark::AddCustomContext("processor", processor_name());
    benchmark::AddCustomContext("level", simd_level_name(sorvo::audio::simd_level()));
    benchmark::AddCustomContext("compiler", SORVO_BENCH_COMPILER);
    benchmark::AddCustomContext("peers", SORVO_BENCH_VERSIONS);

    Collector collector;
    bool ok = true;
    for (const auto& rows :
         {fft_rows(), spectrogram_rows(), mel_rows(), log_mel_rows(), inverse_rows(),
          resample_rows(), filter_rows(), elementwise_rows(), growth_rows()}) {
        for (const RowMaker& maker : rows) {
            if (!std::regex_search(maker.name, wanted)) continue;
            std::fprintf(list_only ? stdout : stderr, "%s\n", maker.name.c_str());
            ok = (list_only || run_row(maker, collector)) && ok;
        }
    }
    if (!list_only) ok = collector.write(out) && ok;
    return ok ? 0 : 1;
}
