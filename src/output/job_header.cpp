#include "output/job_header.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "job/control_bytes.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/block.h"
#include "output/byte_writer.h"
#include "output/page_format.h"
#include "output/parameter_text.h"
#include "output/sent_copies.h"
#include "support/byte_builder.h"
#include "support/error_log.h"

namespace rlx {

namespace {

/// The job start block: ESC DEL 00 00 01 06.
constexpr std::array<std::uint8_t, 6> kJobStart{kEsc, kDel, 0x00, 0x00, 0x01, 0x06};

int out_job_start() {
  if (job_settings.job_started != 0) {
    return ST_OK;
  }
  const int status = out_block(BlockKind::page_setup, kJobStart.size(), kJobStart.data());
  if (status == ST_OK) {
    job_settings.job_started = 1;
  }
  return status;
}

/// ESC Q density !A, when the density changed.
int out_density() {
  if (job_settings.resolution == sent_copies.resolution) {
    return ST_OK;
  }
  ByteBuilder<24> digits;
  digits.append_decimal(job_settings.resolution);
  const std::int32_t length =
      narrow_ulong_to_int(digits.size(), "rlxinout_ctl", "dtout_pji", kKeepTruncated);
  ByteBuilder<32> sequence;
  sequence.append("\x1bQ");
  sequence.append(digits.text().substr(0, static_cast<std::size_t>(length)));
  sequence.append("!A");
  sent_copies.resolution = job_settings.resolution;
  return out_block(BlockKind::density, sequence.count(), sequence.data());
}

int out_parameter_text() {
  const ParameterText text = build_parameter_text();
  return has_parameter_lines(text) ? out_job_parameter_block(text.count(), text.data()) : ST_OK;
}

int out_page_format() {
  const PageSequences sequences = build_page_format();
  return sequences.empty() ? ST_OK
                           : out_block(BlockKind::page_format, sequences.count(), sequences.data());
}

int out_page_setup() {
  const PageSequences sequences = build_page_setup();
  return out_block(BlockKind::page_setup, sequences.count(), sequences.data());
}

}  // namespace

int dtout_pji(int mode) {
  int status = out_parameter_text();
  if (status != ST_OK || mode == kParameterTextOnly) {
    return status;
  }
  for (const auto step : {out_job_start, out_density, out_page_format, out_page_setup}) {
    status = step();
    if (status != ST_OK) {
      return status;
    }
  }
  return ST_OK;
}

void reset_job_header() {
  sent_copies = SentCopies{};
}

}  // namespace rlx
