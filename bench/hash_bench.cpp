// File digest throughput: DE::GetFileSha256 on a 64 MiB file beside two references over the same
// file in the same run: OpenSSL's raw EVP loop (read 64 KiB, EVP_DigestUpdate) and the sha256sum
// tool (one process per iteration, timed by hand). The file is made once in the temporary folder,
// so every reader finds it in the page cache; throughput is bytes/s of file.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "DEHash.h"

namespace {

constexpr std::size_t kFileSize = 64u << 20;

// The benchmark file; removed when the program ends.
class BenchFile {
 public:
  BenchFile() {
    path_ =
        std::filesystem::temp_directory_path() / ("util-hash-bench-" + std::to_string(::getpid()) + ".bin");
    std::string chunk(1u << 20, '\0');
    unsigned state = 2463534242u;
    std::ofstream out(path_, std::ios::binary | std::ios::trunc);
    for (std::size_t written = 0; written < kFileSize; written += chunk.size()) {
      for (char& c : chunk) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        c = static_cast<char>(state);
      }
      out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    }
  }
  ~BenchFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

const BenchFile& File() {
  static const BenchFile file;
  return file;
}

void BM_GetFileSha256(benchmark::State& state) {
  const std::string path = File().Path().string();
  for (auto _ : state) {
    std::string digest = DE::GetFileSha256(path);
    if (digest.size() != 32) state.SkipWithError("GetFileSha256 failed");
    benchmark::DoNotOptimize(digest);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kFileSize));
}
BENCHMARK(BM_GetFileSha256)->UseRealTime()->Unit(benchmark::kMillisecond);

// The reference: what OpenSSL alone does with the file.
void BM_OpenSslEvpLoop(benchmark::State& state) {
  const std::string path = File().Path().string();
  std::vector<unsigned char> buffer(64 * 1024);
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  for (auto _ : state) {
    std::FILE* in = std::fopen(path.c_str(), "rb");
    if (in == nullptr) {
      state.SkipWithError("cannot open the file");
      break;
    }
    std::setvbuf(in, nullptr, _IONBF, 0);
    EVP_DigestInit_ex(context, EVP_sha256(), nullptr);
    std::size_t n;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), in)) > 0)
      EVP_DigestUpdate(context, buffer.data(), n);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(context, digest, &length);
    std::fclose(in);
    benchmark::DoNotOptimize(digest);
  }
  EVP_MD_CTX_free(context);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kFileSize));
}
BENCHMARK(BM_OpenSslEvpLoop)->UseRealTime()->Unit(benchmark::kMillisecond);

// The command-line tool, process start included.
void BM_Sha256sumTool(benchmark::State& state) {
  const std::string command = "sha256sum '" + File().Path().string() + "' >/dev/null";
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const int status = std::system(command.c_str());
    const auto end = std::chrono::steady_clock::now();
    if (status != 0) {
      state.SkipWithError("sha256sum failed");
      break;
    }
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kFileSize));
}
BENCHMARK(BM_Sha256sumTool)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
