#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "driver/job_end.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "fresh_filter.h"
#include "printer_output.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {

// A job from its command line to its last byte, along either road.

struct Job {
  std::vector<std::string> words{"filter"};
  std::string bytes;
  std::size_t cut = 0;  ///< bytes that stand ready for the fast road before the first read
  bool framed = false;
};

struct Result {
  Status status = ST_OK;
  bool passed_through = false;
  std::string output;
  std::string messages;
};

/// True for a choice that puts an empty END frame behind data.
inline bool ends_in_empty_frame(std::uint8_t choice) {
  return (choice & 0x80) != 0;
}

/// Cuts data into frames, some of them empty, the last one an END frame.
inline std::string in_frames(std::string_view data, std::uint8_t choice) {
  const std::size_t length = choice % 32 == 0 ? 9999 : choice % 32 * 7U;
  const bool with_empty = (choice & 0x40) != 0;
  const bool empty_end = ends_in_empty_frame(choice);
  std::string frames;
  while (data.size() > length || (empty_end && !data.empty())) {
    frames += frame_bytes(data.substr(0, length), false);
    frames += with_empty ? frame_bytes("", false) : "";
    data.remove_prefix(std::min(length, data.size()));
  }
  return frames + frame_bytes(data, true);
}

inline Status convert(Job& job) {
  std::vector<char*> argv;
  for (std::string& word : job.words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const Status status = start_up(the_filter(), static_cast<int>(job.words.size()), argv.data());
  if (status != 0) {
    return status;
  }
  const JobEnd end = run_main_loop(the_filter().loop);
  return end_job(the_filter(), end, the_filter().loop.status);
}

/// @param fast  by the fast road where it can; else record by record.
inline Result run(Job job, bool fast) {
  reset_filter();
  standard_output().set("");
  const JobInput input(job.bytes, fast ? job.cut : job.bytes.size());
  the_filter().loop.fast_road = fast;
  const Messages messages;
  Result result;
  result.status = convert(job);
  result.passed_through = the_filter().loop.passed_through;
  result.output = standard_output().content();
  result.messages = messages.text();
  restart_settings();
  return result;
}

}  // namespace rlx::fuzzing
