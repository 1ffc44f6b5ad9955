#include "driver/main_loop.h"

#include "driver/fast_road/text_run.h"
#include "driver/loop/routing.h"

namespace rlx {

namespace {

/// Reads the next command into the loop's record. @return false at the end of the input, or when it
/// cannot be read.
bool read_record(LoopState& loop) {
  if (loop.end_marker == ST_EOF) {
    return false;
  }
  const Status status = zqclass(loop.classifier, &loop.record);
  loop.record_cut = status == ST_CUT;
  if (status != ST_OK && status != ST_CUT) {
    loop.status = status == ST_EOF ? loop.status : status;
    return false;
  }
  return true;
}

JobEnd end_of(const LoopState& loop) {
  if (!loop.passed_through) {
    return JobEnd::flush;
  }
  return loop.copy_failed ? JobEnd::copy_failed : JobEnd::passed_through;
}

}  // namespace

JobEnd run_main_loop(LoopState& loop) {
  for (;;) {
    write_text_run(loop);
    if (!read_record(loop)) {
      return JobEnd::flush;
    }
    if (!route_record(loop)) {
      return end_of(loop);
    }
  }
}

}  // namespace rlx
