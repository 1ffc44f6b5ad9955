#pragma once

#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/byte_writer.h"
#include "output/sent_copies.h"

namespace rlx {

/// What stands in front of a page, and what the printer was sent of it last.
struct JobHeader {
  ByteWriter& writer;
  const CommandLine& command_line;
  JobState& job;
  PrintConditions& conditions;
  SentCopies sent;

  JobHeader(ByteWriter& output, const CommandLine& options, JobState& state, PrintConditions& given)
      : writer(output), command_line(options), job(state), conditions(given) {}

  // True for a value that must be sent: it is given, and not the one sent last. The
  // orientation, the paper size, the form length and the tray are asked for twice: their copies are
  // only updated with the page format, after the parameter text.

  bool orientation_changed() const {
    return text_changed(conditions.orientation, sent.conditions.orientation);
  }
  bool paper_size_changed() const {
    return text_changed(conditions.paper_size, sent.conditions.paper_size);
  }
  bool tray_changed() const { return text_changed(conditions.tray, sent.conditions.tray); }
  bool form_length_changed() const {
    return job.form_length_tenths != 0 && job.form_length_tenths != sent.form_length_tenths;
  }
  /// Duplex is given, and it or one of the binding values that go with it changed.
  bool duplex_changed() const {
    const PrintConditions& copy = sent.conditions;
    return conditions.duplex[0] != '\0' &&
           (conditions.duplex != copy.duplex || conditions.binding_margin != copy.binding_margin ||
            conditions.binding_edge != copy.binding_edge ||
            conditions.binding_mode != copy.binding_mode);
  }
};

/// Modes of dtout_pji.
inline constexpr int kWholeHeader = 0;
inline constexpr int kParameterTextOnly = 1;

/// dtout_pji: writes what stands in front of a page ("data out, printer job information"): the job
/// parameter text, the job start block (once per job), and the blocks that set character density,
/// page format, unit, duplex and offsets. Of most values it sends only what differs from the copy
/// last sent. The copies live for the whole run.
/// @param mode  kWholeHeader, or kParameterTextOnly at the end of a job behind whose last page
///              nothing but settings came.
void dtout_pji(JobHeader& header, int mode);

}  // namespace rlx
