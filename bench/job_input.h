#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string_view>

#include "input/classifier.h"
#include "input/raw_input.h"
#include "input/tokenizer.h"

namespace rlx::bench {

/// Lets the filter find `job` in its input buffer, and the end of the input behind it. The job must
/// stay.
inline void put_in_buffer(std::string_view job) {
  reset_raw_input();
  reset_tokenizer();
  reset_classifier();
  raw_window.next = reinterpret_cast<const std::uint8_t*>(job.data());
  raw_window.end = raw_window.next + job.size();
}

/// Says how many bytes an iteration took.
inline void count_bytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

}  // namespace rlx::bench
