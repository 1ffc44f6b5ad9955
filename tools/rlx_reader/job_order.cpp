#include "rlx_reader/job_order.h"

#include <utility>

namespace rlx::reader {

namespace {

constexpr int kFormFeed = 0x0c;

constexpr int kJobParametersPlace = 1;
constexpr int kJobStartPlace = 2;
constexpr int kPageSetupPlace = 5;

/// Where in a page header a block stands; 0 for those that are not in one.
int place_in_header(BlockUse use) {
  switch (use) {
    case BlockUse::job_parameters:
      return kJobParametersPlace;
    case BlockUse::job_start:
      return kJobStartPlace;
    case BlockUse::density:
      return 3;
    case BlockUse::page_format:
      return 4;
    case BlockUse::page_setup:
      return kPageSetupPlace;
    default:
      return 0;
  }
}

bool is_page_data(BlockUse use) {
  return use == BlockUse::first_data || use == BlockUse::further_data ||
         use == BlockUse::final_form_feed;
}

std::string named(const Block& block) {
  return std::string(name_of(block.use));
}

}  // namespace

void JobOrder::fault(const Block& block, std::string what) {
  if (!forgiving_) {
    visitor_.fault({block.offset, std::move(what)});
  }
}

void JobOrder::begin(const Block& block) {
  if (place_in_header(block.use) != 0) {
    begin_header_block(block);
  } else if (block.use == BlockUse::first_data) {
    begin_page(block);
  } else {
    begin_further_block(block);
  }
}

/// In front of a page header nothing is wanted but the end of the page before it.
void JobOrder::begin_header_block(const Block& block) {
  const int place = place_in_header(block.use);
  if (page_open_) {
    fault(block, "page not ended in front of " + named(block));
    page_open_ = false;
  }
  if (block.use == BlockUse::job_start && started_) {
    fault(block, "job started twice");
  } else {
    check_place_in_header(block, place);
  }
  started_ = started_ || block.use == BlockUse::job_start;
  header_place_ = place;
}

/// The job parameters may come again when no job has started: those before stood behind a job, or
/// were all of one.
void JobOrder::check_place_in_header(const Block& block, int place) {
  if (place > header_place_ || (place == kJobParametersPlace && header_place_ == 1 && !started_)) {
    return;
  }
  if (header_place_ == kPageSetupPlace && place != kPageSetupPlace) {
    fault(block, "page header without a page in front of " + named(block));
    return;
  }
  fault(block, named(block) + (place == header_place_ ? " twice" : " out of order"));
}

void JobOrder::check_page_header(const Block& block) {
  if (page_open_) {
    fault(block, "page begins inside a page");
  } else if (header_place_ == 0) {
    fault(block, "page without header");
  } else if (header_place_ != kPageSetupPlace) {
    fault(block, "page without header: the page setup is missing");
  } else if (!started_) {
    fault(block, "page before the job start");
  }
}

void JobOrder::begin_page(const Block& block) {
  check_page_header(block);
  forgiving_ = false;
  started_ = true;
  page_open_ = true;
  header_place_ = 0;
  visitor_.begin_page(++pages_, block);
}

/// Blocks that are neither of a page header nor begin a page.
void JobOrder::begin_further_block(const Block& block) {
  if (block.use == BlockUse::unknown) {
    fault(block, "unknown kind of block");
  } else if (header_place_ != 0 && (started_ || block.use != BlockUse::job_end)) {
    fault(block, "page header without a page in front of " + named(block));
  } else if (block.use == BlockUse::carried_settings && !behind_data_) {
    fault(block, "carried settings that are not behind data");
  } else if (block.use == BlockUse::job_end && !started_) {
    fault(block, "job ended without a start");
  } else if (is_page_data(block.use) && !page_open_) {
    fault(block, named(block) + " without a page");
  }
  header_place_ = 0;
}

void JobOrder::end_page() {
  if (page_open_) {
    page_open_ = false;
    visitor_.end_page(pages_);
  }
}

void JobOrder::end(const Block& block, int last_byte) {
  behind_data_ = block.use == BlockUse::first_data || block.use == BlockUse::further_data;
  if (is_page_data(block.use) && last_byte == kFormFeed) {
    end_page();
  }
  if (block.use == BlockUse::job_end) {
    end_page();
    started_ = false;
    forgiving_ = false;
  }
}

void JobOrder::pass_through() {
  started_ = false;
  page_open_ = false;
  behind_data_ = false;
  forgiving_ = false;
  header_place_ = 0;
}

void JobOrder::end_of_stream(std::uint64_t offset) {
  if (started_ && !forgiving_) {
    visitor_.fault({offset, "job not ended"});
  }
}

}  // namespace rlx::reader
