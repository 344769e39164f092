// Prints one line a variant: nanoseconds per sample (median of the repetitions, with its variation) and the
// ratio to the plain biquad of the same run, which is what compares across machines.

#include <benchmark/benchmark.h>
#include <fmt/core.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

class RatioReporter final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override {
    fmt::print("{:32} {:>12} {:>10} {:>10}\n", "variant", "ns/sample", "variation", "biquads");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Aggregate) continue;
      const double rate = run.counters.at("items_per_second");
      if (run.aggregate_name == "median") median = 1e9 / rate;
      if (run.aggregate_name == "cv") print(run.run_name.function_name, rate);
    }
  }

 private:
  void print(const std::string& name, double variation) {
    if (unit == 0.0) unit = median;
    fmt::print("{:32} {:12.2f} {:9.1f}% {:10.2f}\n", name, median, variation * 100.0, median / unit);
    std::fflush(stdout);
  }

  double unit = 0.0, median = 0.0;  // ns per sample
};

}  // namespace

int main(int argc, char** argv) {
  std::string repetitions = "--benchmark_repetitions=5", time = "--benchmark_min_time=0.1";
  std::vector<char*> arguments{argv[0], repetitions.data(), time.data()};
  arguments.insert(arguments.end(), argv + 1, argv + argc);  // what is typed comes last and wins
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
}
