// Text conversions, Base64 and hex against reference work in the same run: iconv for the
// UTF-8 and CP1252 conversions (to and from WCHAR_T), memcpy of the same bytes for Base64 and hex.
// Sizes: 64 B, 4 KiB and 1 MiB of input; throughput is reported as bytes/s of input.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "DEString.h"

namespace {

// Mixed text: ASCII with Latin-1, CJK and astral characters, cut on a character boundary.
std::string Utf8Text(std::size_t size) {
  const std::string piece =
      "Config value, na\xC3\xAFve caf\xC3\xA9 \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80 ok; ";
  std::string out;
  while (out.size() < size) out += piece;
  std::size_t cut = size;
  while (cut > 0 && (static_cast<unsigned char>(out[cut]) & 0xC0) == 0x80) --cut;
  out.resize(cut);
  return out;
}

// CP1252 text: mostly ASCII with accented letters and the page's typographic quotes.
std::string Cp1252Text(std::size_t size) {
  const std::string piece = "Caf\xE9 na\xEFve \x93quoted\x94 \x80 5 \xC5ngstr\xF6m, ";
  std::string out;
  while (out.size() < size) out += piece;
  out.resize(size);
  return out;
}

std::string Bytes(std::size_t size) {
  std::string out(size, '\0');
  unsigned state = 12345;
  for (char& c : out) {
    state = state * 1103515245u + 12345u;
    c = static_cast<char>(state >> 24);
  }
  return out;
}

// iconv into a result string of the same kind the library returns, sized for the worst case.
template <typename Out>
Out IconvConvert(iconv_t cd, const char* in, std::size_t inBytes, std::size_t maxOutUnits) {
  Out out(maxOutUnits, typename Out::value_type());
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* src = const_cast<char*>(in);
  char* dst = reinterpret_cast<char*>(&out[0]);
  std::size_t dstBytes = maxOutUnits * sizeof(typename Out::value_type);
  iconv(cd, &src, &inBytes, &dst, &dstBytes);
  out.resize(maxOutUnits - dstBytes / sizeof(typename Out::value_type));
  return out;
}

class Iconv {
 public:
  Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
  ~Iconv() {
    if (cd_ != reinterpret_cast<iconv_t>(-1)) iconv_close(cd_);
  }
  iconv_t get() const { return cd_; }

 private:
  iconv_t cd_;
};

void Report(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

// One encoding under test: its sample text, the library's conversions both ways, iconv's name
// for it and the most bytes a character takes in it.
struct Encoding {
  std::string (*text)(std::size_t);
  std::wstring (*toWide)(const std::string&);
  std::string (*fromWide)(const std::wstring&);
  const char* iconvName;
  std::size_t maxBytesPerChar;
};

const Encoding kUtf8{Utf8Text, &DE::StringProc::StringToWStringByUTF8, &DE::StringProc::WStringToStringByUTF8,
                     "UTF-8", 4};
const Encoding kCp1252{Cp1252Text, &DE::StringProc::StringToWString, &DE::StringProc::WStringToString,
                       "CP1252", 1};

std::string SampleText(benchmark::State& state, const Encoding& e) {
  return e.text(static_cast<std::size_t>(state.range(0)));
}

void ToWide_Library(benchmark::State& state, const Encoding& e) {
  const std::string text = SampleText(state, e);
  for (auto _ : state) benchmark::DoNotOptimize(e.toWide(text));
  Report(state, text.size());
}

void ToWide_Iconv(benchmark::State& state, const Encoding& e) {
  const std::string text = SampleText(state, e);
  Iconv cd("WCHAR_T", e.iconvName);
  for (auto _ : state) {
    benchmark::DoNotOptimize(IconvConvert<std::wstring>(cd.get(), text.data(), text.size(), text.size()));
  }
  Report(state, text.size());
}

// Wide text back to narrow; throughput still counts the narrow bytes.
void FromWide_Library(benchmark::State& state, const Encoding& e) {
  const std::string text = SampleText(state, e);
  const std::wstring wide = e.toWide(text);
  for (auto _ : state) benchmark::DoNotOptimize(e.fromWide(wide));
  Report(state, text.size());
}

void FromWide_Iconv(benchmark::State& state, const Encoding& e) {
  const std::string text = SampleText(state, e);
  const std::wstring wide = e.toWide(text);
  Iconv cd(e.iconvName, "WCHAR_T");
  for (auto _ : state) {
    benchmark::DoNotOptimize(IconvConvert<std::string>(cd.get(), reinterpret_cast<const char*>(wide.data()),
                                                       wide.size() * sizeof(wchar_t),
                                                       wide.size() * e.maxBytesPerChar));
  }
  Report(state, text.size());
}

// The memcpy references copy the same input into a result string of the encoded size.
void MemcpyInto(benchmark::State& state, const std::string& in, std::size_t outSize) {
  for (auto _ : state) {
    std::string out(outSize, '\0');
    std::memcpy(&out[0], in.data(), in.size() < outSize ? in.size() : outSize);
    benchmark::DoNotOptimize(out);
  }
  Report(state, in.size());
}

void Base64Encode_Library(benchmark::State& state) {
  std::string bytes = Bytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(DE::Base64Encode(reinterpret_cast<unsigned char*>(&bytes[0]),
                                              static_cast<unsigned int>(bytes.size())));
  }
  Report(state, bytes.size());
}

void Base64Encode_Memcpy(benchmark::State& state) {
  const std::string bytes = Bytes(static_cast<std::size_t>(state.range(0)));
  MemcpyInto(state, bytes, (bytes.size() + 2) / 3 * 4);
}

std::string Base64Of(const std::string& bytes) {
  std::string copy = bytes;
  return DE::Base64Encode(reinterpret_cast<unsigned char*>(&copy[0]), static_cast<unsigned int>(copy.size()));
}

void Base64Decode_Library(benchmark::State& state) {
  const std::string text = Base64Of(Bytes(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(DE::Base64Decode(text));
  Report(state, text.size());
}

void Base64Decode_Memcpy(benchmark::State& state) {
  const std::string text = Base64Of(Bytes(static_cast<std::size_t>(state.range(0))));
  MemcpyInto(state, text, text.size() / 4 * 3);
}

void BytesToHex_Library(benchmark::State& state) {
  const std::string bytes = Bytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(DE::BytesToHexString(bytes));
  Report(state, bytes.size());
}

void BytesToHex_Memcpy(benchmark::State& state) {
  const std::string bytes = Bytes(static_cast<std::size_t>(state.range(0)));
  MemcpyInto(state, bytes, bytes.size() * 2);
}

void HexToBytes_Library(benchmark::State& state) {
  const std::string hex = DE::BytesToHexString(Bytes(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    std::string out;
    benchmark::DoNotOptimize(DE::HexStringToBytesString(hex, out));
    benchmark::DoNotOptimize(out);
  }
  Report(state, hex.size());
}

void HexToBytes_Memcpy(benchmark::State& state) {
  const std::string hex = DE::BytesToHexString(Bytes(static_cast<std::size_t>(state.range(0))));
  MemcpyInto(state, hex, hex.size() / 2);
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(64)->Arg(4 << 10)->Arg(1 << 20); }

BENCHMARK_CAPTURE(ToWide_Library, Utf8, kUtf8)->Apply(Sizes);
BENCHMARK_CAPTURE(ToWide_Iconv, Utf8, kUtf8)->Apply(Sizes);
BENCHMARK_CAPTURE(FromWide_Library, Utf8, kUtf8)->Apply(Sizes);
BENCHMARK_CAPTURE(FromWide_Iconv, Utf8, kUtf8)->Apply(Sizes);
BENCHMARK_CAPTURE(ToWide_Library, Cp1252, kCp1252)->Apply(Sizes);
BENCHMARK_CAPTURE(ToWide_Iconv, Cp1252, kCp1252)->Apply(Sizes);
BENCHMARK_CAPTURE(FromWide_Library, Cp1252, kCp1252)->Apply(Sizes);
BENCHMARK_CAPTURE(FromWide_Iconv, Cp1252, kCp1252)->Apply(Sizes);
BENCHMARK(Base64Encode_Library)->Apply(Sizes);
BENCHMARK(Base64Encode_Memcpy)->Apply(Sizes);
BENCHMARK(Base64Decode_Library)->Apply(Sizes);
BENCHMARK(Base64Decode_Memcpy)->Apply(Sizes);
BENCHMARK(BytesToHex_Library)->Apply(Sizes);
BENCHMARK(BytesToHex_Memcpy)->Apply(Sizes);
BENCHMARK(HexToBytes_Library)->Apply(Sizes);
BENCHMARK(HexToBytes_Memcpy)->Apply(Sizes);

}  // namespace

int main(int argc, char** argv) {
  // The ANSI page is read once, on first use: CP1252 for the iconv comparison.
  setenv("UTIL_ANSI_CODEPAGE", "CP1252", 1);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
