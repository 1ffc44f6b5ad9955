#pragma once

#include <cstdint>
#include <span>

namespace rlx::spooler {

/// Looks through a line-printer job for what would take the place of a print-condition command in
/// front of it: such a command of the job's own (ESC Q ... SP n), or the head of a job in the
/// printer's language (ESC Q ... / and a grave accent), which goes out as it is. The copies of a
/// job with either are made by sending it so many times.
///
/// It looks for the sequences wherever they stand, inside other sequences' data too, where they
/// mean nothing. So it finds each one that there is, and sometimes one that there is not; then the
/// printer still prints as many copies as it should.
class OwnConditionsScan {
 public:
  /// Looks at the next bytes of the job.
  void take(std::span<const std::uint8_t> bytes);
  bool found() const { return found_; }

 private:
  enum class State : std::uint8_t { text, escape, first_parameter, parameters };

  void take(std::uint8_t byte);
  void end_sequence(std::uint8_t final);

  State state_ = State::text;
  std::uint8_t first_ = 0;
  std::uint8_t before_ = 0;
  bool found_ = false;
};

}  // namespace rlx::spooler
