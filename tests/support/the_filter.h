#pragma once

#include <cstdlib>
#include <new>

#include "driver/filter.h"
#include "support/statuses.h"

namespace rlx::testing {

namespace the_filter_detail {

/// A filter in zeroed memory, as the program has it.
inline Filter* new_filter() {
  void* const memory = std::calloc(1, sizeof(Filter));
  if (memory == nullptr) {
    std::abort();
  }
  auto* const filter = new (memory) Filter;
  filter->messages.program_name = "filter";
  if (allocate_page_buffers(filter->page) != ST_OK) {
    std::abort();
  }
  return filter;
}

inline void delete_filter(Filter* filter) {
  fal_unload(filter->library);
  free_page_buffers(filter->page);
  filter->~Filter();
  std::free(filter);
}

inline Filter*& current_filter() {
  static Filter* filter = new_filter();
  return filter;
}

}  // namespace the_filter_detail

/// The filter that the test works with. It has its work buffers, and its program name is "filter".
inline Filter& the_filter() {
  return *the_filter_detail::current_filter();
}

/// Makes the_filter() a fresh one.
inline void renew_filter() {
  the_filter_detail::delete_filter(the_filter_detail::current_filter());
  the_filter_detail::current_filter() = the_filter_detail::new_filter();
}

// Parts of it, put back to their start where a test goes through many cases with the rest as it is.

inline void restart_settings() {
  Filter& filter = the_filter();
  filter.messages = {};
  filter.command_line = {};
  filter.settings = {};
  filter.job = {};
  filter.directories = {};
}

inline void restart_raw_input() {
  RawInput& raw = the_filter().source.raw;
  raw.window = {};
  raw.final_status = ST_OK;
  raw.error_number = 0;
  raw.pipes_widened = false;
  raw.before_waiting = nullptr;
}

inline void restart_frames() {
  FrameReader& frames = the_filter().source.frames;
  frames.frame_kind = kEndFrame;
  frames.last_data_kind = kEndFrame;
  frames.end_frame_read = false;
  frames.output_closed = false;
  frames.window = {};
  the_filter().frame_writer.out_len = 0;
}

/// All readers of the input.
inline void restart_input() {
  restart_raw_input();
  restart_frames();
  the_filter().tokenizer.sticky_eof = false;
  the_filter().classifier.class_eof = false;
}

inline void forget_output() {
  the_filter().writer.length = 0;
  the_filter().writer.page_ended = false;
}

inline void restart_page() {
  the_filter().page.continued = false;
  if (the_filter().page.buffer != nullptr) {
    the_filter().page.buffer->length = 0;
  }
}

inline void restart_gaiji() {
  gaiji_reset_cache(the_filter().gaiji);
  gaiji_reset_size(the_filter().gaiji);
}

/// What parse_options fills.
inline OptionTargets option_targets() {
  Filter& filter = the_filter();
  return {filter.messages, filter.command_line, filter.settings,
          filter.job,      filter.printer,      filter.directories};
}

}  // namespace rlx::testing
