#include "driver/loop/output_steps.h"

#include <algorithm>
#include <cstring>

#include "driver/loop/driver_output.h"
#include "job/control_bytes.h"
#include "output/text_out.h"

namespace rlx {

namespace {

constexpr std::uint32_t kDownloadUnit = 64;
constexpr std::uint32_t kDownloadTail = 4;

/// Command 492 makes a printer of class f1 print undefined characters as spaces, whatever the
/// command line says.
UndefinedGaijiRule undefined_rule(const LoopState& loop) {
  const bool second_variant =
      loop.command_line.printer_class == kPrinterClassF1 && loop.command_492_state == 1;
  return !second_variant && loop.command_line.undefined_gaiji_pattern == 1
             ? UndefinedGaijiRule::ubar
             : UndefinedGaijiRule::space;
}

/// Copies one byte of the input as a piece. @return as zqgetc; the end of the input is ST_EOF.
Status copy_raw_byte(LoopState& loop, std::uint8_t& byte) {
  const Status status = zqgetc(loop.source, 0, &byte);
  if (status == ST_OK) {
    write_piece(loop, Bytes(&byte, 1));
  }
  return status;
}

/// Copies what stands ready of `count` bytes, up to a FF, which ends the page, and in a frame up to
/// its last byte, which makes the output frame leave. `count` becomes what is left.
void copy_ready_bytes(LoopState& loop, std::uint32_t& count) {
  ByteWindow& window = job_window(loop.source);
  std::size_t ready = window.size();
  if (loop.command_line.framed_output != 0 && ready > 0) {
    --ready;
  }
  ready = std::min<std::size_t>(ready, count);
  const std::uint8_t* const end = std::find(window.next, window.next + ready, kFormFeed);
  const Bytes pieces(window.next, end);
  window.next = end;
  count -= static_cast<std::uint32_t>(pieces.size());
  piece_sink(loop.output).append_bytes(pieces);
}

/// Copies `count` bytes of the input, each a piece of its own. @return as copy_raw_byte.
Status copy_raw_bytes(LoopState& loop, std::uint32_t count) {
  for (;;) {
    copy_ready_bytes(loop, count);
    if (count == 0) {
      return ST_OK;
    }
    std::uint8_t byte = 0;
    const Status status = copy_raw_byte(loop, byte);
    if (status != ST_OK) {
      return status;
    }
    --count;
  }
}

/// The end of the input inside raw data ends the job as it stands, with success.
Next end_unless_copied(LoopState& loop, Status status) {
  if (status == ST_EOF) {
    loop.status = ST_OK;
    return Next::end;
  }
  return go_on_if_ok(loop, status);
}

}  // namespace

Next convert_text(LoopState& loop) {
  text_out(loop.carried, loop.record, loop.text, loop.character_set);
  return Next::step;
}

Next convert_gaiji(LoopState& loop) {
  loop.text.length = 0;
  return go_on_if_ok(loop, gaiji_put(loop.gaiji, loop.record, undefined_rule(loop),
                                     loop.character_set, loop.text));
}

Next forget_held_command(LoopState& loop) {
  loop.held_command.length = 0;
  return Next::step;
}

Next write_held_command(LoopState& loop) {
  const Bytes held = loop.held_command.gathered();
  if (held.empty()) {
    return Next::step;
  }
  loop.held_command.length = 0;
  write_piece(loop, held);
  return Next::step;
}

Next write_text(LoopState& loop) {
  write_piece(loop, loop.text.gathered());
  return Next::record;
}

Next hold_command(LoopState& loop) {
  if (loop.command_line.printer_class != kPrinterClassF1) {
    return Next::step;
  }
  static_assert(kRecordCapacity <= kPageBufferBytes, "a command always fits");
  loop.held_command.length = 0;
  loop.held_command.append_fitting(loop.record.content());
  return Next::record;
}

Next leave_double_byte_set(LoopState& loop) {
  if (loop.character_set.set != CharacterSetState::kDoubleByte) {
    return Next::step;
  }
  loop.character_set.select_single_byte();
  write_piece(loop, kToSingleByte.set_sequence());
  return Next::step;
}

Next write_command(LoopState& loop) {
  const CommandRecord& record = loop.record;
  write_piece(loop, record.content());
  if (loop.command_line.framed_output == 0) {
    keep_setting(loop.carried, record.code, record.content());
  }
  return Next::step;
}

Next copy_pending_data(LoopState& loop) {
  return end_unless_copied(loop, copy_raw_bytes(loop, loop.record.pending));
}

Next copy_download_data(LoopState& loop) {
  for (;;) {
    std::uint8_t units = 0;
    Status status = copy_raw_byte(loop, units);
    if (status == ST_OK && units == 0) {
      return Next::step;
    }
    if (status == ST_OK) {
      status = copy_raw_bytes(loop, units * kDownloadUnit + kDownloadTail);
    }
    if (status != ST_OK) {
      return end_unless_copied(loop, status);
    }
  }
}

}  // namespace rlx
