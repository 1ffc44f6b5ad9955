#include "driver/loop/pass_through.h"

#include <unistd.h>

#include "support/descriptor_io.h"

namespace rlx {

namespace {

/// @return ST_EOF when all was copied, otherwise errno is set.
Status copy_rest_of_input(RawInput& input) {
  Status status = raw_refill(input);
  while (status == ST_OK) {
    if (write_whole(STDOUT_FILENO, {input.window.next, input.window.size()}) != ST_OK) {
      return ST_IOERR;
    }
    input.window.next = input.window.end;
    status = raw_refill(input);
  }
  return status;
}

}  // namespace

void pass_through(LoopState& loop) {
  out_bytes(loop.writer, loop.record.content());
  flush_output(loop.writer);
  if (copy_rest_of_input(loop.source.raw) != ST_EOF) {
    report_system_error(loop.messages);
    loop.copy_failed = true;
  }
}

}  // namespace rlx
