#pragma once

#include "output/job_header.h"
#include "support/byte_builder.h"

namespace rlx {

/// Room for all sequences of one page format or page setup block; the longest is below 80 bytes.
inline constexpr std::size_t kPageSequencesBytes = 128;
using PageSequences = ByteBuilder<kPageSequencesBytes>;

/// Builds the page format sequences, and updates the copies of what they send:
///   ESC Q 100;100 !I                 when the orientation changed,
///   ESC Q p;s;t;o !@  or  p;s;o !F   when the tray, the orientation or the paper size changed,
///   ESC Q 10;;nnnnn;! backslash      when the form length changed (tenths of an inch),
///   ESC Q 66;66!I  or  66;80!I       when the orientation changed to a reduced one.
/// Empty when nothing changed. A tray that is not P1 to P4 is deliberately never noted as sent: its
/// !F sequence comes again on every page.
PageSequences build_page_format(JobHeader& header);

/// Builds the page setup sequences, never empty, and updates the copies of what they send:
///   ESC Q 1;7200!C                   unit of 1/7200 inch,
///   ESC Q d;e;mmmmm;00000!W  or  ESC Q 0;;;!W   when duplex or binding changed,
///   ESC Q first;second;;!H           when an offset differs from its copy.
PageSequences build_page_setup(JobHeader& header);

}  // namespace rlx
