#pragma once

#include <string>

namespace rlx::printer_app {

/// What a proof is of, as the query "of" names it: "2-15" is job 15 of printer 2, "t" with 32
/// hexadecimal digits a trial.
struct ProofName {
  unsigned printer_id = 0;  ///< 0 for a trial
  unsigned job_id = 0;
  std::string trial;  ///< empty for a job

  /// @return false for what is no such name.
  bool read(const std::string& text);
};

/// A name of a trial that nobody guesses.
std::string new_trial_name();

}  // namespace rlx::printer_app
