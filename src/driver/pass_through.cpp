#include "driver/pass_through.h"

#include <unistd.h>

#include "input/raw_input.h"
#include "job/status.h"
#include "output/byte_writer.h"
#include "support/descriptor_io.h"
#include "support/messages.h"

namespace rlx {

namespace {

/// @return ST_EOF when all was copied, otherwise errno is set.
int copy_rest_of_input() {
  int status = raw_refill();
  while (status == ST_OK) {
    if (write_whole(STDOUT_FILENO, {raw_window.next, raw_window.size()}) != 0) {
      return ST_IOERR;
    }
    raw_window.next = raw_window.end;
    status = raw_refill();
  }
  return status;
}

}  // namespace

int pass_through(const CommandRecord& record, bool& copy_failed) {
  const int status = out_bytes(record.length, record.bytes.data());
  flush_output();
  if (status == ST_OK && copy_rest_of_input() != ST_EOF) {
    report_system_error();
    copy_failed = true;
  }
  return status;
}

}  // namespace rlx
