#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::testing {

/// What a printer finds in the bytes of a connection.
struct ReceivedJob {
  std::uint64_t bytes = 0;
  std::uint64_t pages = 0;
  std::uint64_t impressions = 0;    ///< each page as often as the copies that are then in force
  bool ended = false;               ///< a job end is the last block
  std::vector<std::string> faults;  ///< of the reader: "OFFSET: what"

  /// True for a job that is all there: nothing is wrong with any block, and the job ends.
  bool is_whole() const { return ended && faults.empty(); }
};

/// Checks every block of a job: its count, its place, the job's start and end.
ReceivedJob read_received_job(std::string_view bytes);

}  // namespace rlx::testing
