#include "driver/output_steps.h"

#include <algorithm>
#include <cstring>

#include "driver/driver_output.h"
#include "fonts/gaiji.h"
#include "input/byte_source.h"
#include "job/control_bytes.h"
#include "job/settings.h"
#include "output/carried_settings.h"
#include "output/out_piece.h"
#include "output/text_out.h"

namespace rlx {

namespace {

constexpr std::uint32_t kDownloadUnit = 64;
constexpr std::uint32_t kDownloadTail = 4;

/// Command 492 makes a printer of class 0x200000 print undefined characters as spaces, whatever the
/// command line says.
UndefinedGaijiRule undefined_rule(const LoopState& loop) {
  const bool second_variant =
      job_settings.printer_class == kPrinterClassF1 && loop.command_492_state == 1;
  return !second_variant && job_settings.undefined_gaiji_pattern == 1 ? UndefinedGaijiRule::ubar
                                                                      : UndefinedGaijiRule::space;
}

/// Copies one byte of the input as a piece.
/// @return as zqgetc and write_piece; the end of the input is ST_EOF.
int copy_raw_byte(std::uint8_t& byte) {
  const int status = zqgetc(0, &byte);
  return status != ST_OK ? status : write_piece(1, &byte);
}

/// Copies what stands ready of `count` bytes, up to a FF, which ends the page, and in a frame up to
/// its last byte, which makes the output frame leave. `count` becomes what is left.
int copy_ready_bytes(std::uint32_t& count) {
  ByteWindow& window = job_window();
  std::size_t ready = window.size();
  if (job_settings.framed_output != 0 && ready > 0) {
    --ready;
  }
  ready = std::min<std::size_t>(ready, count);
  const std::uint8_t* const end = std::find(window.next, window.next + ready, kFormFeed);
  const auto portion = static_cast<std::size_t>(end - window.next);
  const std::uint8_t* const bytes = window.next;
  window.next = end;
  count -= static_cast<std::uint32_t>(portion);
  return piece_sink().append_bytes(bytes, portion);
}

/// Copies `count` bytes of the input, each a piece of its own. @return as copy_raw_byte.
int copy_raw_bytes(std::uint32_t count) {
  while (count > 0) {
    int status = copy_ready_bytes(count);
    if (status == ST_OK && count > 0) {
      std::uint8_t byte = 0;
      status = copy_raw_byte(byte);
      --count;
    }
    if (status != ST_OK) {
      return status;
    }
  }
  return ST_OK;
}

/// The end of the input inside raw data ends the job as it stands, with success.
Next end_unless_copied(LoopState& loop, int status) {
  if (status == ST_EOF) {
    loop.status = ST_OK;
    return Next::end;
  }
  return go_on_if_ok(loop, status);
}

}  // namespace

Next convert_text(LoopState& loop) {
  text_out(loop.record, loop.text, loop.character_set);
  return Next::step;
}

Next convert_gaiji(LoopState& loop) {
  loop.text.length = 0;
  return go_on_if_ok(loop,
                     gaiji_put(loop.record, undefined_rule(loop), loop.character_set, loop.text));
}

Next forget_held_command(LoopState& loop) {
  loop.held_command.length = 0;
  return Next::step;
}

Next write_held_command(LoopState& loop) {
  const std::int32_t count = loop.held_command.length;
  if (count == 0) {
    return Next::step;
  }
  loop.held_command.length = 0;
  return go_on_if_ok(loop, write_piece(count, loop.held_command.bytes.data()));
}

Next write_text(LoopState& loop) {
  const Next next = go_on_if_ok(loop, write_piece(loop.text.length, loop.text.bytes.data()));
  return next == Next::step ? Next::record : next;
}

Next hold_command(LoopState& loop) {
  if (job_settings.printer_class != kPrinterClassF1) {
    return Next::step;
  }
  loop.held_command.length = loop.record.length;
  std::copy_n(loop.record.bytes.begin(), loop.record.length, loop.held_command.bytes.begin());
  return Next::record;
}

Next leave_double_byte_set(LoopState& loop) {
  if (loop.character_set.set != CharacterSetState::kDoubleByte) {
    return Next::step;
  }
  loop.character_set.select_single_byte();
  return go_on_if_ok(
      loop, write_piece(kSetSequenceBytes, kToSingleByte.bytes.data() + kSizeSequenceBytes));
}

Next write_command(LoopState& loop) {
  const CommandRecord& record = loop.record;
  const int status = write_piece(record.length, record.bytes.data());
  if (status == ST_OK && job_settings.framed_output == 0) {
    keep_setting(record.code, record.length, record.bytes.data());
  }
  return go_on_if_ok(loop, status);
}

Next copy_pending_data(LoopState& loop) {
  return end_unless_copied(loop, copy_raw_bytes(loop.record.pending));
}

Next copy_download_data(LoopState& loop) {
  for (;;) {
    std::uint8_t units = 0;
    int status = copy_raw_byte(units);
    if (status == ST_OK && units == 0) {
      return Next::step;
    }
    if (status == ST_OK) {
      status = copy_raw_bytes(units * kDownloadUnit + kDownloadTail);
    }
    if (status != ST_OK) {
      return end_unless_copied(loop, status);
    }
  }
}

}  // namespace rlx
