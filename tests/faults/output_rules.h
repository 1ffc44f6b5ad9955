#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"

namespace rlx::testing {

// The messages of files that cannot be used.
inline constexpr const char* kFormError = "filter: FCB data error\n";
inline constexpr const char* kG1Error = "filter: g1gaiji file error\n";

/// What a disturbed run may have written.
enum class OutputRule : std::uint8_t {
  same,            ///< all, as undisturbed
  nothing,         ///< no byte
  prefix,          ///< exactly what was taken before the fault
  ended,           ///< as undisturbed up to a place, then the proper end of a job
  rounded_up,      ///< as without the environment file
  rounded_either,  ///< as with or without the environment file
};

/// What undisturbed runs write.
struct Reference {
  std::string undisturbed;
  std::string without_environment;
};

/// Runs a job undisturbed, which must work.
Reference make_reference(const Job& job);

/// @return what is wrong with an output; empty when the rule is kept.
std::string broken_rule(OutputRule rule, const Job& job, const Reference& reference,
                        const Outcome& outcome);

/// True when `output` is `whole` up to some place and then ends as a job of the printer's language
/// does: the page that was begun gets its block and its form feed, and the job its end. Blocks tell
/// their length in front, so the last page's is another one. A job that has not started needs no
/// end.
bool is_ended_job(std::string_view whole, std::string_view output);

/// True when `output` is `whole` up to the border of a frame, and then the empty END frame. Nothing
/// at all needs no end.
bool is_ended_frames(std::string_view whole, std::string_view output);

}  // namespace rlx::testing
