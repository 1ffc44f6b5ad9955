#pragma once

#include "job/status.h"

namespace rlx {

/// What the process ends with: the low eight bits of a status, as the system takes them.
///
///     0    ST_OK             the job was converted
///     1    ST_FAILED         options, a form or the G1 range file; a print-condition
///                            command without a length, or with a form that cannot be used;
///                            a frame that cannot be written; no memory
///     127  ST_FONT_ERROR     the font library failed
///     129  ST_IOERR          standard input cannot be read
///     255  ST_NO_FONT_CLASS  the fonts do not go with the resolution
///
/// What ends the process from deep inside says its exit status itself (support/process_end.h): 1
/// for standard output that cannot be written and for malformed frames, 0 for a missing END frame.
constexpr int exit_status_of(Status status) {
  return static_cast<int>(status) & 0xff;
}

static_assert(exit_status_of(ST_OK) == 0);
static_assert(exit_status_of(ST_FAILED) == 1);
static_assert(exit_status_of(ST_FONT_ERROR) == 127);
static_assert(exit_status_of(ST_IOERR) == 129);
static_assert(exit_status_of(ST_NO_FONT_CLASS) == 255);

}  // namespace rlx
