// The main loop on whole jobs that stand in memory: along the fast road, and record by record.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

#include "driver/loop/loop_state.h"
#include "driver/main_loop.h"
#include "job/print_conditions.h"
#include "job_input.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/job_header.h"
#include "output/line_spacing.h"
#include "output/page_writer.h"
#include "sample_jobs.h"
#include "support/the_filter.h"

namespace rlx::bench {
namespace {

constexpr std::size_t kJobBytes = 1048576;

/// Six lines per inch all over a form of eleven inches.
void put_form_in_force(LoopState& loop) {
  constexpr std::size_t kFormLines = 66;
  FcbTable& form = loop.initial_store;
  form.top_line = 1;
  std::fill_n(form.lpi.begin(), kFormLines, 6U);
  loop.initial_fcb_exists = true;
  loop.fcb_active = true;
}

void convert(benchmark::State& state, const char* kind, bool with_form) {
  const std::string job = sample_job(kind, kJobBytes);
  for (auto _ : state) {
    state.PauseTiming();
    renew_filter();
    if (with_form) {
      put_form_in_force(the_filter().loop);
    }
    the_filter().loop.fast_road = state.range(0) != 0;
    put_in_buffer(job);
    state.ResumeTiming();
    run_main_loop(the_filter().loop);
    flush_output(the_filter().writer);
  }
  count_bytes(state, job.size());
}

void BM_Road(benchmark::State& state, const char* kind) {
  convert(state, kind, false);
}
void BM_RoadWithForm(benchmark::State& state) {
  convert(state, "plain", true);
}
BENCHMARK_CAPTURE(BM_Road, plain, "plain")->ArgName("fast")->Arg(1)->Arg(0);
BENCHMARK_CAPTURE(BM_Road, mixed, "mixed")->ArgName("fast")->Arg(1)->Arg(0);
BENCHMARK_CAPTURE(BM_Road, sequences, "sequences")->ArgName("fast")->Arg(1)->Arg(0);
BENCHMARK_CAPTURE(BM_Road, invalid, "invalid")->ArgName("fast")->Arg(1)->Arg(0);
BENCHMARK(BM_RoadWithForm)->ArgName("fast")->Arg(1)->Arg(0);

}  // namespace
}  // namespace rlx::bench
