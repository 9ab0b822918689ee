// The library beside libxml2 alone, in one run: `kestrelink-bench [--json]`. Times are medians of
// interleaved batches; what counts is their ratio. A request is also compared with other libraries,
// where they are installed.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <thread>
#include <vector>

#include "bench/Peers.h"
#include "bench/Work.h"

namespace {

struct Size {
  const char* name;
  int attributes;  // of three values each, besides the sample's own
};
constexpr Size kSizes[] = {{"sample", 0}, {"100", 100}, {"2000", 2000}, {"20000", 20000}};

struct Goals {
  const char* work;
  double ratios[std::size(kSizes)];  // 0: none
};
constexpr Goals kGoals[] = {
    {"read", {0.82, 0.87, 1.00, 1.08}},
    {"read-compact", {1.00, 1.03, 1.10, 0}},
    {"read-no-schema", {1.35, 1.15, 1.10, 1.10}},
    {"cold-read", {0.98, 0.97, 1.05, 1.15}},
    {"memory", {1.30, 1.30, 1.35, 1.40}},
    {"request", {1.25}},
    {"request beside libxml++", {1.00}},
    {"request beside Lasso", {1.00}},
    {"two-threads", {0, 1.8}},
};

double goalOf(const std::string& work, const std::string& size) {
  for (const auto& [name, ratios] : kGoals) {
    if (work != name) continue;
    for (std::size_t n = 0; n < std::size(kSizes); ++n) {
      if (size == kSizes[n].name) return ratios[n];
    }
  }
  return 0;
}

struct Peer {
  const char* name;
  std::string (*request)(const std::string& issuer);
};
const std::vector<Peer> kPeers = {
#ifdef WITH_LIBXMLPP
    {"libxml++", &bench::libxmlppRequest},
#endif
#ifdef WITH_LASSO
    {"Lasso", &bench::lassoRequest},
#endif
};

bool json = false;

// One line of the report. For two threads the ratio is the gain, and more is better.
void report(const std::string& work, const std::string& size, const char* unit, double library,
            double raw, double ratio) {
  if (json) {
    std::printf(
        "{\"work\":\"%s\",\"size\":\"%s\",\"library_%s\":%.1f,\"raw_%s\":%.1f,"
        "\"ratio\":%.3f}\n",
        work.c_str(), size.c_str(), unit, library, unit, raw, ratio);
    return;
  }
  std::printf("%-24s %-8s %12.1f %12.1f  %-12s %6.2f", work.c_str(), size.c_str(), library, raw,
              unit, ratio);
  if (const double goal = goalOf(work, size); goal > 0) {
    const bool met = work == "two-threads" ? ratio >= goal : ratio <= goal;
    std::printf("  goal %.2f%s", goal, met ? "" : "  missed");
  }
  std::printf("\n");
}

// Runs a program to its end; its peak of memory in kB.
long run(const std::string& program, const std::string& work, const std::string& file) {
  std::FILE* const pipe = popen(("'" + program + "' " + work + " '" + file + "'").c_str(), "r");
  long result = 0, peak = 0;
  const bool understood = pipe != nullptr && std::fscanf(pipe, "%ld %ld", &result, &peak) == 2;
  if (pipe == nullptr || pclose(pipe) != 0 || !understood) {
    std::fprintf(stderr, "%s %s failed\n", program.c_str(), work.c_str());
    std::exit(1);
  }
  return peak;
}

// The median of nine: what of the shared libraries' files is counted varies from run to run.
double peakMemoryOf(const std::string& program, const std::string& work, const std::string& file) {
  std::vector<long> peaks(9);
  for (long& peak : peaks) peak = run(program, work, file);
  std::sort(peaks.begin(), peaks.end());
  return static_cast<double>(peaks[peaks.size() / 2]);
}

// Gathers the time of every repetition by name.
class Gatherer : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& each : runs) {
      if (each.run_type == Run::RT_Iteration) {
        times[each.run_name.function_name].push_back(each.GetAdjustedRealTime());
      }
    }
  }
  double median(const std::string& name) {
    std::vector<double>& all = times[name];
    std::sort(all.begin(), all.end());
    return all.empty() ? 0 : all[all.size() / 2];
  }
  std::map<std::string, std::vector<double>> times;
};

void measure(const std::string& name, const std::function<void()>& work) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [work](benchmark::State& state) {
                                 for ([[maybe_unused]] auto iteration : state) work();
                               })
      ->Unit(benchmark::kMicrosecond)
      ->UseRealTime()
      ->MinTime(0.1)
      ->Repetitions(9);
}

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void reportTwoThreads(const std::string& message) {
  const auto reads = [&message] {
    for (int n = 0; n < 100; ++n) benchmark::DoNotOptimize(bench::libraryWork("read", message));
  };
  std::vector<double> gains;
  double one = 0, two = 0;
  for (int round = 0; round < 7; ++round) {
    one = secondsOf(reads);
    two = secondsOf([&reads] {
      std::thread other(reads);
      reads();
      other.join();
    });
    gains.push_back(2 * one / two);
  }
  std::sort(gains.begin(), gains.end());
  report("two-threads", "100", "us", two * 1e6 / 100, one * 1e6 / 100, gains[gains.size() / 2]);
}

}  // namespace

namespace bench {

std::string responseWith(int attributes) {
  std::ifstream file(SAMPLE);
  std::string response{std::istreambuf_iterator<char>(file), {}};
  std::string added;
  for (int n = 0; n < attributes; ++n) {
    added += "<saml:Attribute Name=\"urn:example:attribute:" + std::to_string(n) + "\">";
    for (const char* value : {"one", "two", "three"}) {
      added += "<saml:AttributeValue>" + std::string(value) + " of " + std::to_string(n) +
               "</saml:AttributeValue>";
    }
    added += "</saml:Attribute>\n";
  }
  return response.insert(response.find("</saml:AttributeStatement>"), added);
}

}  // namespace bench

int main(int argc, char** argv) {
  json = argc > 1 && std::strcmp(argv[1], "--json") == 0;
  std::map<std::string, std::string> messages, files;
  for (const auto& [size, attributes] : kSizes) {
    messages[size] = bench::responseWith(attributes);
    files[size] = std::string(argv[0]) + "-" + size + ".xml";
    std::ofstream(files[size]) << messages[size];
  }

  std::vector<std::pair<std::string, std::string>> works = {{"request", "sample"}};
  for (const auto& [size, attributes] : kSizes) {
    for (const char* work : {"read", "read-compact", "read-no-schema", "cold-read"}) {
      works.emplace_back(work, size);
    }
  }
  for (const auto& [work, size] : works) {
    const std::string name = work + "/" + size;
    const std::string& message = messages[size];
    if (work == "cold-read") {
      const std::string& file = files[size];
      measure(name + "/library", [&file] { run(COLD_LIBRARY, "read", file); });
      measure(name + "/raw", [&file] { run(COLD_RAW, "read", file); });
    } else {
      measure(name + "/library", [&work = work, &message] {
        benchmark::DoNotOptimize(bench::libraryWork(work, message));
      });
      measure(name + "/raw", [&work = work, &message] {
        benchmark::DoNotOptimize(bench::rawWork(work, message));
      });
    }
  }
  for (const auto& [peer, request] : kPeers) {
    measure(peer, [request = request] {
      benchmark::DoNotOptimize(request("https://signin.harbour-tv.example"));
    });
  }
  std::vector<std::string> options = {argv[0], "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> pointers;
  for (std::string& option : options) pointers.push_back(option.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  Gatherer gatherer;
  benchmark::RunSpecifiedBenchmarks(&gatherer);

  if (!json) {
    std::printf("%-24s %-8s %12s %12s  %-12s %6s\n", "work", "size", "library", "raw", "unit",
                "ratio");
  }
  for (const auto& [work, size] : works) {
    const double library = gatherer.median(work + "/" + size + "/library");
    const double raw = gatherer.median(work + "/" + size + "/raw");
    report(work, size, "us", library, raw, library / raw);
  }
  for (const auto& [peer, request] : kPeers) {
    const double library = gatherer.median("request/sample/library");
    const double other = gatherer.median(peer);
    report(std::string("request beside ") + peer, "sample", "us", library, other, library / other);
  }
  const double empty = peakMemoryOf(COLD_RAW, "nothing", files["sample"]);
  for (const auto& [size, attributes] : kSizes) {
    const double library = peakMemoryOf(COLD_LIBRARY, "read", files[size]);
    const double raw = peakMemoryOf(COLD_RAW, "read", files[size]);
    report("memory", size, "peak_rss_kb", library, raw, (library - empty) / (raw - empty));
  }
  reportTwoThreads(messages["100"]);
  return 0;
}
