#pragma once

#include <array>

#include "fonts/fal_library.h"
#include "fonts/gaiji_cache.h"
#include "job/character_set.h"
#include "job/command_record.h"
#include "job/output_buffer.h"
#include "job/settings.h"
#include "job/status.h"

namespace rlx {

// User-defined characters: downloaded into the printer when they are first used, then printed by
// their download code.

/// What is printed in place of a character that has no pattern.
enum class UndefinedGaijiRule {
  space,  ///< two '!' of the download set
  ubar,   ///< "_" of the single-byte set
};

/// `cur_dl_size` when the printer's download size is not known.
inline constexpr int kUnknownSize = -1;

/// What the printer holds, and what downloads are made with.
struct Gaiji {
  FontSets& fonts;
  const CommandLine& command_line;
  const JobState& job;
  /// By size index; the sizes are 1 to 4, entry 0 stays empty.
  std::array<GaijiCache, 5> caches;
  /// The size that FS "0" selected last; kUnknownSize when that is not known.
  int cur_dl_size = kUnknownSize;

  Gaiji(FontSets& sets, const CommandLine& options, const JobState& state)
      : fonts(sets), command_line(options), job(state) {}
};

/// Turns one user-defined character into its output, assembled like a record of text: a switch to
/// the download set (ESC "$D") unless it is selected, the download of its pattern when the printer
/// does not hold it, and its download code.
///
/// Size and typeface are the job's (`gaiji_size_index`, `gaiji_typeface`), and the job's font
/// variant and printer class choose the download form. The fixed form always uses size 3.
/// @param record  c1 c2 for the G1 code set, 0x8F c1 c2 for G3. A record of another shape is no
///                character of either and is printed as an undefined one. So is every character
///                while the job's size is not 1 to 4, except in the fixed form.
/// @param rule    what is printed for a character that has no pattern.
/// @param state   the download set after a character, also after an undefined one with the rule
///                `space`; the single-byte set after an undefined one with the rule `ubar`.
/// @param out     cleared, then filled; holds the longest download. Empty after a failure.
/// @return ST_OK, or the status of a failed read of the pattern (fal_read_glyph), which ends the
/// job; its switch of `state` is not taken back.
Status gaiji_put(Gaiji& gaiji, const CommandRecord& record, UndefinedGaijiRule rule,
                 CharacterSetState& state, OutputBuffer& out);

/// Forgets the selected download size: the printer has been reset. The next download selects it
/// again.
void gaiji_reset_size(Gaiji& gaiji);

/// Forgets all downloaded characters: the fonts are others now.
void gaiji_reset_cache(Gaiji& gaiji);

}  // namespace rlx
