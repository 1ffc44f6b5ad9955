#include "driver/pass_through.h"

#include "input/raw_input.h"
#include "job/status.h"
#include "output/byte_writer.h"
#include "support/messages.h"

namespace rlx {

namespace {

/// @return ST_EOF when all was copied, otherwise errno is set.
int copy_rest_of_input() {
  if (try_flush_output() != ST_OK) {
    return ST_IOERR;
  }
  int status = raw_refill();
  while (status == ST_OK) {
    if (write_fully(raw_window.next, raw_window.size()) != 0) {
      return ST_IOERR;
    }
    raw_window.next = raw_window.end;
    status = raw_refill();
  }
  return status;
}

}  // namespace

int pass_through(const CommandRecord& record) {
  flush_output();
  const int status = out_bytes(record.length, record.bytes.data());
  if (status == ST_OK && copy_rest_of_input() != ST_EOF) {
    report_system_error();
  }
  return status;
}

}  // namespace rlx
