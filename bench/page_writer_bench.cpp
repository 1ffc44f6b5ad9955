// Gathering pieces into blocks and pages.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

#include "job/control_bytes.h"
#include "job_input.h"
#include "output/carried_settings.h"
#include "output/page_writer.h"
#include "support/the_filter.h"

namespace rlx::bench {
namespace {

constexpr std::size_t kPageBytes = 65536;

/// Pages in pieces of so many bytes, and the settings that each block repeats.
void BM_PageWriter(benchmark::State& state) {
  constexpr std::array<std::uint8_t, 3> kSetting{0x1b, '(', 'H'};
  constexpr std::uint8_t kPageEnd = kFormFeed;
  const std::array<std::uint8_t, 4096> zeros{};
  const Bytes piece = Bytes(zeros).first(static_cast<std::size_t>(state.range(0)));
  renew_filter();
  for (auto _ : state) {
    keep_setting(the_filter().carried, CMD_ESC_PAREN_H, kSetting);
    for (std::size_t written = 0; written < kPageBytes; written += piece.size()) {
      out_page_data(the_filter().page, piece);
    }
    out_page_data(the_filter().page, Bytes(&kPageEnd, 1));
  }
  count_bytes(state, kPageBytes);
}
BENCHMARK(BM_PageWriter)->Arg(1)->Arg(16)->Arg(128)->Arg(4096);

}  // namespace
}  // namespace rlx::bench
