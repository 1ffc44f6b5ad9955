#include "output/job_header.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "job/control_bytes.h"
#include "output/block.h"
#include "output/page_format.h"
#include "output/parameter_text.h"
#include "support/byte_builder.h"
#include "support/narrowing.h"

namespace rlx {

namespace {

/// The job start block: ESC DEL 00 00 01 06.
constexpr std::array<std::uint8_t, 6> kJobStart{kEsc, kDel, 0x00, 0x00, 0x01, 0x06};

void out_job_start(JobHeader& header) {
  if (header.job.job_started == 0) {
    out_block(header.writer, BlockKind::page_setup, kJobStart);
    header.job.job_started = 1;
  }
}

/// ESC Q density !A, when the density changed.
void out_density(JobHeader& header) {
  if (header.command_line.resolution == header.sent.resolution) {
    return;
  }
  ByteBuilder<24> digits;
  digits.append_decimal(header.command_line.resolution);
  const std::int32_t length =
      narrow_ulong_to_int(digits.size(), "rlxinout_ctl", "dtout_pji", kKeepTruncated);
  ByteBuilder<32> sequence;
  sequence.append(kEscQText);
  sequence.append(digits.text().substr(0, static_cast<std::size_t>(length)));
  sequence.append("!A");
  header.sent.resolution = header.command_line.resolution;
  out_block(header.writer, BlockKind::density, sequence.bytes());
}

void out_parameter_text(JobHeader& header) {
  const ParameterText text = build_parameter_text(header);
  if (has_parameter_lines(text)) {
    out_job_parameter_block(header.writer, text.bytes());
  }
}

void out_page_format(JobHeader& header) {
  const PageSequences sequences = build_page_format(header);
  if (!sequences.empty()) {
    out_block(header.writer, BlockKind::page_format, sequences.bytes());
  }
}

void out_page_setup(JobHeader& header) {
  const PageSequences sequences = build_page_setup(header);
  out_block(header.writer, BlockKind::page_setup, sequences.bytes());
}

}  // namespace

void dtout_pji(JobHeader& header, int mode) {
  out_parameter_text(header);
  if (mode == kParameterTextOnly) {
    return;
  }
  out_job_start(header);
  out_density(header);
  out_page_format(header);
  out_page_setup(header);
}

}  // namespace rlx
