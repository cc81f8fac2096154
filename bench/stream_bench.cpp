// Memory streams and the record format against plain references in the same run:
// - MemoryrStream Write / Append of 1 MiB in 16-byte and 64 KiB chunks into a new stream (its
//   8192-step growth included) beside memcpy of the same chunks into a preallocated buffer;
// - SerializeStringMap / UnSerializeStringMap of a 10,000-entry map beside a memcpy-based
//   encoder and decoder of the same bytes (the decoder builds the same std::map).
// After the runs, each library benchmark's time is printed as a ratio to its reference (the
// medians with --benchmark_repetitions=N).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "DESerialize.h"
#include "DEStream.h"

namespace {

constexpr std::size_t kTotal = 1 << 20;
using StringMap = std::map<std::string, std::string>;

std::string Chunk(std::size_t size) { return std::string(size, 'c'); }

void Report(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

void StreamWrite_Library(benchmark::State& state) {
  const std::string chunk = Chunk(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    DE::MemoryrStream stream;
    for (std::size_t done = 0; done < kTotal; done += chunk.size()) {
      stream.Write(chunk.data(), static_cast<unsigned int>(chunk.size()));
    }
    benchmark::DoNotOptimize(stream.Memory());
  }
  Report(state, kTotal);
}

void StreamAppend_Library(benchmark::State& state) {
  const std::string chunk = Chunk(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    DE::MemoryrStream stream;
    for (std::size_t done = 0; done < kTotal; done += chunk.size()) {
      stream.Append(chunk.data(), static_cast<int>(chunk.size()));
    }
    benchmark::DoNotOptimize(stream.Memory());
  }
  Report(state, kTotal);
}

void StreamWrite_Memcpy(benchmark::State& state) {
  const std::string chunk = Chunk(static_cast<std::size_t>(state.range(0)));
  std::vector<char> buffer(kTotal);
  for (auto _ : state) {
    char* out = buffer.data();
    for (std::size_t done = 0; done < kTotal; done += chunk.size()) {
      std::memcpy(out + done, chunk.data(), chunk.size());
      benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(out);
  }
  Report(state, kTotal);
}

StringMap SampleMap() {
  StringMap map;
  unsigned state = 2024;
  for (int i = 0; i < 10000; ++i) {
    char key[16];
    std::snprintf(key, sizeof key, "key%05d", i);
    state = state * 1103515245u + 12345u;
    map[key] = std::string(10 + (state >> 16) % 31, static_cast<char>('a' + i % 26));
  }
  return map;
}

// The reference encoder: the same wire bytes, sized once and filled with memcpy.
void PutCount(char*& out, std::uint32_t n) {
  const unsigned char bytes[4] = {static_cast<unsigned char>(n >> 24), static_cast<unsigned char>(n >> 16),
                                  static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)};
  std::memcpy(out, bytes, 4);
  out += 4;
}

std::string ReferenceEncode(const StringMap& map) {
  std::size_t size = 4;
  for (const auto& entry : map) size += 8 + entry.first.size() + entry.second.size();
  std::string bytes(size, '\0');
  char* out = &bytes[0];
  PutCount(out, static_cast<std::uint32_t>(map.size()));
  for (const auto& entry : map) {
    PutCount(out, static_cast<std::uint32_t>(entry.first.size()));
    std::memcpy(out, entry.first.data(), entry.first.size());
    out += entry.first.size();
    PutCount(out, static_cast<std::uint32_t>(entry.second.size()));
    std::memcpy(out, entry.second.data(), entry.second.size());
    out += entry.second.size();
  }
  return bytes;
}

std::uint32_t GetCount(const char*& in) {
  unsigned char b[4];
  std::memcpy(b, in, 4);
  in += 4;
  return static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
         static_cast<std::uint32_t>(b[2]) << 8 | b[3];
}

// The reference decoder for well-formed input: the same map, built from the bytes in place.
StringMap ReferenceDecode(const std::string& bytes) {
  StringMap map;
  const char* in = bytes.data();
  for (std::uint32_t n = GetCount(in); n > 0; --n) {
    const std::uint32_t keyLength = GetCount(in);
    std::string key(in, keyLength);
    in += keyLength;
    const std::uint32_t valueLength = GetCount(in);
    map.emplace_hint(map.end(), std::move(key), std::string(in, valueLength));
    in += valueLength;
  }
  return map;
}

void MapEncode_Library(benchmark::State& state) {
  const StringMap map = SampleMap();
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string encoded = DE::SerializeStringMap(map);
    bytes = encoded.size();
    benchmark::DoNotOptimize(encoded.data());
  }
  Report(state, bytes);
}

void MapEncode_Reference(benchmark::State& state) {
  const StringMap map = SampleMap();
  if (ReferenceEncode(map) != DE::SerializeStringMap(map)) state.SkipWithError("reference bytes differ");
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string encoded = ReferenceEncode(map);
    bytes = encoded.size();
    benchmark::DoNotOptimize(encoded.data());
  }
  Report(state, bytes);
}

void MapDecode_Library(benchmark::State& state) {
  const std::string encoded = DE::SerializeStringMap(SampleMap());
  for (auto _ : state) {
    StringMap map = DE::UnSerializeStringMap(encoded);
    benchmark::DoNotOptimize(map.size());
  }
  Report(state, encoded.size());
}

void MapDecode_Reference(benchmark::State& state) {
  const std::string encoded = DE::SerializeStringMap(SampleMap());
  if (ReferenceDecode(encoded) != DE::UnSerializeStringMap(encoded))
    state.SkipWithError("reference map differs");
  for (auto _ : state) {
    StringMap map = ReferenceDecode(encoded);
    benchmark::DoNotOptimize(map.size());
  }
  Report(state, encoded.size());
}

void Chunks(benchmark::internal::Benchmark* b) { b->Arg(16)->Arg(64 << 10); }

BENCHMARK(StreamWrite_Library)->Apply(Chunks);
BENCHMARK(StreamAppend_Library)->Apply(Chunks);
BENCHMARK(StreamWrite_Memcpy)->Apply(Chunks);
BENCHMARK(MapEncode_Library);
BENCHMARK(MapEncode_Reference);
BENCHMARK(MapDecode_Library);
BENCHMARK(MapDecode_Reference);

// Prints, after the usual table, each library run's time over its reference's.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    // With --benchmark_repetitions the median stands for the benchmark; otherwise its one run.
    for (const Run& run : runs) {
      const std::string name = run.run_name.str();
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
        times_[name] = run.GetAdjustedRealTime();
        medians_.insert(name);
      } else if (run.run_type == Run::RT_Iteration && medians_.count(name) == 0) {
        times_[name] = run.GetAdjustedRealTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nratio to the reference (1.00 = as fast as the reference):\n");
    for (const auto& entry : times_) {
      const std::string& name = entry.first;
      const std::size_t library = name.find("_Library");
      if (library == std::string::npos) continue;
      const std::string suffix = name.substr(library + 8);
      const std::string stem = name.substr(0, library);
      const std::string referenceName =
          (stem == "StreamWrite" || stem == "StreamAppend" ? "StreamWrite_Memcpy" : stem + "_Reference") +
          suffix;
      const auto reference = times_.find(referenceName);
      if (reference == times_.end() || reference->second <= 0) continue;
      std::printf("  %-34s %6.2f\n", name.c_str(), entry.second / reference->second);
    }
  }

 private:
  std::map<std::string, double> times_;
  std::set<std::string> medians_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
