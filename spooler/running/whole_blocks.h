#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "running/job_source.h"

namespace rlx::spooler {

/// Follows a job in the printer's language from block to block (docs/rlx.md), to know what it lacks
/// when it ends anywhere.
class BlockFollower {
 public:
  /// Looks at the next bytes of the job.
  void take(std::span<const std::uint8_t> bytes);

  /// So many bytes at least are missing to the end of the open block, or of the page header that it
  /// belongs to; 0 where a job can be ended.
  std::uint64_t missing() const;
  /// What ends the job where nothing is missing; empty when it is not begun, or ended already, and
  /// when it is no job that can be followed.
  std::string ending() const;

 private:
  void take_header(std::uint8_t byte);
  void end_block();

  std::string header_;         ///< of the open block, as far as it came
  std::uint64_t payload_ = 0;  ///< bytes of it that are still to come
  std::string front_;          ///< the first bytes of it
  std::uint8_t last_ = 0;      ///< the last byte that came
  bool lost_ = false;          ///< this is no block
  bool in_job_ = false;        ///< behind a job start
  bool in_page_header_ = false;
  bool fed_ = true;  ///< the last page has ended
};

/// A job in the printer's language. When it is cancelled the rest of the block that is open still
/// comes, and behind it the end of the job, so that the printer does not wait for bytes and take
/// those of the next job for them.
class WholeBlocks : public JobSource {
 public:
  /// As DescriptorSource.
  WholeBlocks(int descriptor, const Cancellation& cancellation)
      : descriptor_(descriptor), cancellation_(cancellation), bytes_(descriptor, cancellation) {}

  std::size_t read(std::span<std::uint8_t> room) override;

 private:
  std::size_t read_ending(std::span<std::uint8_t> room);

  int descriptor_;
  const Cancellation& cancellation_;
  DescriptorSource bytes_;
  BlockFollower follower_;
  std::string ending_;  ///< what is still to come of it
  bool ends_ = false;
};

}  // namespace rlx::spooler
