#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string_view>

#include "input/classifier.h"
#include "input/raw_input.h"
#include "input/tokenizer.h"
#include "support/the_filter.h"

namespace rlx::bench {

using testing::renew_filter;
using testing::restart_page;
using testing::restart_raw_input;
using testing::the_filter;

/// Lets the filter find `job` in its input buffer, and the end of the input behind it. The job must
/// stay.
inline void put_in_buffer(std::string_view job) {
  restart_raw_input();
  the_filter().tokenizer.sticky_eof = false;
  the_filter().classifier.class_eof = false;
  the_filter().source.raw.window.next = reinterpret_cast<const std::uint8_t*>(job.data());
  the_filter().source.raw.window.end = the_filter().source.raw.window.next + job.size();
}

/// Says how many bytes an iteration took.
inline void count_bytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

}  // namespace rlx::bench
