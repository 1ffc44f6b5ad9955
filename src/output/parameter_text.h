#pragma once

#include "output/job_header.h"
#include "support/byte_builder.h"

namespace rlx {

/// Room for the longest job parameter text; every line with its widest value stays well below it.
inline constexpr std::size_t kParameterTextBytes = 1024;
using ParameterText = ByteBuilder<kParameterTextBytes>;

/// Builds the job parameter text: "%%%=Pji,0101,UNIC\n", "EMU=RLX\n", one "KEY=value\n" line for
/// each of DCH, FOV, OVS, CPS, FRM, DUP, ORT, PSZ, FFL and BIN that changed, and "MAK=UNIX\n".
///
/// The copies of FOV, OVS, CPS and FRM are updated here; those of the others wait for the sequences
/// that go with them. A form length that changed makes the paper size of the conditions "LP".
ParameterText build_parameter_text(JobHeader& header);

/// True when a built text has more than the lines that it always has.
bool has_parameter_lines(const ParameterText& text);

}  // namespace rlx
