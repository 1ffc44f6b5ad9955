// Looking for what is no ordinary text: the wide scan, and a byte at a time.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "driver/fast_road/byte_kinds.h"
#include "input/ready_sequence.h"
#include "input/wide_scan.h"
#include "job_input.h"
#include "sample_jobs.h"

namespace rlx::bench {
namespace {

constexpr std::size_t kTextBytes = 65536;

const std::uint8_t* bytes_of(const std::string& text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

void BM_SingleBytesWide(benchmark::State& state) {
  const std::string text(kTextBytes + kScanBytes, 'x');
  for (auto _ : state) {
    std::size_t at = 0;
    while (at < kTextBytes) {
      at += single_bytes_at_front(bytes_of(text) + at, kLineFeed);
    }
    benchmark::DoNotOptimize(at);
  }
  count_bytes(state, kTextBytes);
}
BENCHMARK(BM_SingleBytesWide);

void BM_SingleBytesOneByOne(benchmark::State& state) {
  const std::string text(kTextBytes, 'x');
  for (auto _ : state) {
    std::size_t at = 0;
    while (at < kTextBytes && is_single(kind_of(bytes_of(text)[at]).byte_class)) {
      ++at;
    }
    benchmark::DoNotOptimize(at);
  }
  count_bytes(state, kTextBytes);
}
BENCHMARK(BM_SingleBytesOneByOne);

void BM_ThreeByteCharactersWide(benchmark::State& state) {
  std::string text;
  while (text.size() < kTextBytes + kScanBytes) {
    text += "\xe3\x81\x82";
  }
  for (auto _ : state) {
    std::size_t at = 0;
    while (at < kTextBytes) {
      at += three_byte_characters_at_front(bytes_of(text) + at);
    }
    benchmark::DoNotOptimize(at);
  }
  count_bytes(state, kTextBytes);
}
BENCHMARK(BM_ThreeByteCharactersWide);

/// One sequence, in memory; the argument chooses it.
void BM_ReadySequence(benchmark::State& state) {
  constexpr const char* kSequences[] = {"\x1b$@", "\x1cJ", "\x1c%!12p", "\x1b[120a", "\x1bQ12!f"};
  std::string text = kSequences[state.range(0)];
  const std::size_t length = text.size();
  text.resize(kReadyBytes, 'x');
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    benchmark::DoNotOptimize(ready_sequence(bytes_of(text)));
  }
  count_bytes(state, length);
}
BENCHMARK(BM_ReadySequence)->DenseRange(0, 4);

}  // namespace
}  // namespace rlx::bench
