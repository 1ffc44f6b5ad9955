// What the fast road looks for in a block of text.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "driver/fast_road/text_masks.h"
#include "input/ready_sequence.h"
#include "job_input.h"
#include "sample_jobs.h"

namespace rlx::bench {
namespace {

constexpr std::size_t kTextBytes = 65536;

const std::uint8_t* bytes_of(const std::string& text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

/// Masks of text as it should be, or of any text, on blocks of a job.
void describe(benchmark::State& state, const std::string& unit, bool any_text) {
  std::string text;
  while (text.size() < kTextBytes + kBlockBytes) {
    text += unit;
  }
  for (auto _ : state) {
    TextMasks masks;
    for (std::size_t at = 0; at < kTextBytes; at += masks.length) {
      const std::uint8_t* const bytes = bytes_of(text) + at;
      if (any_text) {
        masks_of_any_text(bytes, kBlockBytes, kBlockBytes, masks);
      } else {
        masks_of_text(ByteBlock(bytes), masks);
      }
      benchmark::DoNotOptimize(masks);
    }
  }
  count_bytes(state, kTextBytes);
}

void BM_Masks(benchmark::State& state, const char* unit) {
  describe(state, unit, state.range(0) != 0);
}
BENCHMARK_CAPTURE(BM_Masks, single, "x")->ArgName("any_text")->Arg(0)->Arg(1);
BENCHMARK_CAPTURE(BM_Masks, double_byte, "\xe3\x81\x82")->ArgName("any_text")->Arg(0)->Arg(1);
BENCHMARK_CAPTURE(BM_Masks, mixed, "\xe3\x81\x82\xe3\x81\x84 ab1")
    ->ArgName("any_text")
    ->Arg(0)
    ->Arg(1);

/// One sequence, in memory; the argument chooses it.
void BM_ReadySequence(benchmark::State& state) {
  constexpr const char* kSequences[] = {"\x1b$@", "\x1cJ", "\x1c%!12p", "\x1b[120a", "\x1bQ12!f"};
  std::string text = kSequences[state.range(0)];
  const std::size_t length = text.size();
  text.resize(2 * kBlockBytes, 'x');
  const SequenceEnds ends{ByteBlock(bytes_of(text))};
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    benchmark::DoNotOptimize(ready_sequence(bytes_of(text), ends, 0, kBlockBytes));
  }
  count_bytes(state, length);
}
BENCHMARK(BM_ReadySequence)->DenseRange(0, 4);

}  // namespace
}  // namespace rlx::bench
