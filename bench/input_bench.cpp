// Cutting a job into commands: the tokenizer, and the classifier on top of it.

#include <benchmark/benchmark.h>

#include <string>

#include "job/command_record.h"
#include "job/status.h"
#include "job_input.h"
#include "sample_jobs.h"
#include "support/the_filter.h"

namespace rlx::bench {
namespace {

constexpr std::size_t kJobBytes = 262144;

template <typename Read>
void read_job(benchmark::State& state, const char* kind, Read read) {
  const std::string job = sample_job(kind, kJobBytes);
  static CommandRecord record;
  for (auto _ : state) {
    put_in_buffer(job);
    while (read(record) == ST_OK) {
    }
  }
  count_bytes(state, job.size());
}

void BM_Tokenizer(benchmark::State& state, const char* kind) {
  read_job(state, kind,
           [](CommandRecord& record) { return zqtoken(the_filter().tokenizer, 0, &record); });
}
BENCHMARK_CAPTURE(BM_Tokenizer, plain, "plain");
BENCHMARK_CAPTURE(BM_Tokenizer, sequences, "sequences");

void BM_Classifier(benchmark::State& state, const char* kind) {
  read_job(state, kind,
           [](CommandRecord& record) { return zqclass(the_filter().classifier, &record); });
}
BENCHMARK_CAPTURE(BM_Classifier, plain, "plain");
BENCHMARK_CAPTURE(BM_Classifier, mixed, "mixed");
BENCHMARK_CAPTURE(BM_Classifier, sequences, "sequences");
BENCHMARK_CAPTURE(BM_Classifier, invalid, "invalid");

}  // namespace
}  // namespace rlx::bench
