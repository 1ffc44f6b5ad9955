#pragma once

#include <cstdint>

#include "driver/loop/command_parameters.h"
#include "fonts/font_sets.h"
#include "fonts/gaiji.h"
#include "forms/fcb.h"
#include "input/classifier.h"
#include "job/character_set.h"
#include "job/command_record.h"
#include "job/output_buffer.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/line_spacing.h"
#include "output/out_piece.h"
#include "output/print_conditions_out.h"
#include "support/messages.h"

namespace rlx {

/// What the main loop works with: every module that a step hands something to.
struct LoopParts {
  const CommandLine& command_line;
  const Messages& messages;
  /// The settings that the print conditions send; command 500 changes them.
  SettingsRecord& settings;
  JobState& job;
  PrintConditions& conditions;
  ByteSource& source;
  Classifier& classifier;
  ByteWriter& writer;
  CarriedSettings& carried;
  PieceOutput& output;
  LineSpacing& spacing;
  ConditionsOutput& conditions_output;
  const FormReading& forms;
  const ResourceDirectories& directories;
  FontSets& fonts;
  Gaiji& gaiji;
};

/// All that the main loop keeps from one record to the next. What other subsystems look at too is
/// in JobState.
struct LoopState : LoopParts {
  /// The command that is being routed.
  CommandRecord record;
  /// The END frame ended inside the command.
  bool record_cut = false;
  /// The rest of the job has gone out as it stood.
  bool passed_through = false;
  /// That failed, and has been reported.
  bool copy_failed = false;
  /// How the job has gone so far.
  Status status = ST_OK;

  /// Printable content was handled since the last print-condition command.
  bool content_since_conditions = false;
  /// The current print conditions still have to be sent.
  bool conditions_pending = true;
  /// Code of the last command that changed print conditions; 0 before the first.
  std::uint32_t last_condition_code = CMD_NONE;
  /// Whether command 479 resets the line unit.
  bool spacing_reset = false;

  /// On/off state of command 492, and its last result: 1 changed, 0 unchanged, -1 bad parameter.
  int command_492_state = 0;
  int command_492_result = 0;

  /// What the last form name command gave. Nothing reads it, because what the name is for is not
  /// known; it is kept for whoever learns it.
  FormName form_name;

  /// Forms: the one of -n, and the one a print-condition command names.
  FcbTable initial_store;
  FcbTable second_store;
  FcbTable* current_store = &initial_store;
  bool initial_fcb_exists = false;
  /// A form is in force.
  bool fcb_active = false;
  /// Vertical movements that the form produced and that wait for the next text.
  OutputBuffer pending_vertical_bytes;
  /// LFs since the last page break, for page-length emulation. A negative -L is never reached, so
  /// the counter has room for the LFs of any job.
  std::int64_t line_counter = 0;
  /// ST_EOF once a look behind a LF has found the end of the input.
  Status end_marker = ST_OK;

  /// A command 488 that waits for the next command; its length is 0 when there is none.
  OutputBuffer held_command;
  /// What text and user-defined characters become.
  OutputBuffer text;
  CharacterSetState character_set;

  /// Runs of ordinary text are written as runs. Switched off only to compare with the reference,
  /// the record-by-record road.
  bool fast_road = true;

  explicit LoopState(const LoopParts& parts) : LoopParts(parts) {}
  // It points into itself.
  LoopState(const LoopState&) = delete;
  LoopState& operator=(const LoopState&) = delete;
};

/// True when the print conditions are to be sent before the next output.
inline bool conditions_due(const LoopState& loop) {
  return loop.conditions_pending && loop.command_line.print_conditions_enabled != 0;
}

/// True while a form in force moves the paper (framed jobs carry no form).
inline bool form_moves_paper(const LoopState& loop) {
  return loop.fcb_active && loop.command_line.framed_output == 0;
}

}  // namespace rlx
