#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "driver/loop/loop_state.h"

namespace rlx {

/// What is put out where a byte stands: these bytes, and then what stands `skip` bytes behind it.
struct Insertion {
  /// Copied in whole; only the first `length` count.
  std::array<std::uint8_t, 16> bytes;
  std::size_t length;
  std::size_t skip;
};

/// What becomes of a LF on the fast road: a byte like others, or with a form or option -L a LF and
/// the pitch of the next line, one piece.
class LineFeeds {
 public:
  explicit LineFeeds(LoopState& loop);

  /// A LF is a byte like others.
  bool are_plain() const { return plain_; }

  /// Prepares to take LFs. All of them get the same pitch.
  /// @return how many may be taken before the next call, 0 when the next one leaves the form or
  /// completes the page.
  std::size_t prepare() {
    if (prepared_ == 0) {
      find_lines();
    }
    return prepared_;
  }

  /// Notes that so many were taken.
  void take(std::size_t count);

  /// LF and pitch, in place of the LF.
  const Insertion& insertion() const { return insertion_; }

 private:
  void set_pitch(const PitchCommand& pitch);
  void find_lines();
  void find_form_lines();
  void find_counted_lines();

  LoopState& loop_;
  bool plain_;
  /// LFs that may be taken.
  std::size_t prepared_ = 0;
  Insertion insertion_;
};

}  // namespace rlx
