#include "rlx_reader/job_order.h"

namespace rlx::reader {

namespace {

constexpr int kFormFeed = 0x0c;

}  // namespace

void JobOrder::fault(std::uint64_t offset, const char* what) {
  visitor_.fault({offset, what});
}

void JobOrder::begin_page(const Block& block) {
  if (page_open_) {
    fault(block.offset, "page begins inside a page");
  }
  if (!setup_seen_) {
    fault(block.offset, "page without header");
  } else if (!started_) {
    fault(block.offset, "page before the job start");
    started_ = true;  // once is enough
  }
  page_open_ = true;
  setup_seen_ = false;
  visitor_.begin_page(++pages_, block);
}

void JobOrder::end_page() {
  if (page_open_) {
    page_open_ = false;
    visitor_.end_page(pages_);
  }
}

void JobOrder::begin(const Block& block) {
  switch (block.use) {
    case BlockUse::job_start:
      if (started_) {
        fault(block.offset, "job started twice");
      }
      started_ = true;
      break;
    case BlockUse::page_setup:
      setup_seen_ = true;
      break;
    case BlockUse::first_data:
      begin_page(block);
      break;
    case BlockUse::further_data:
      if (!page_open_) {
        fault(block.offset, "further data without a page");
      }
      break;
    case BlockUse::final_form_feed:
      if (!page_open_) {
        fault(block.offset, "form feed without a page");
      }
      break;
    case BlockUse::carried_settings:
      if (pages_ == 0) {
        fault(block.offset, "carried settings without a page");
      }
      break;
    case BlockUse::job_end:
      if (!started_) {
        fault(block.offset, "job ended without a start");
      }
      break;
    case BlockUse::unknown:
      fault(block.offset, "unknown kind of block");
      break;
    default:
      break;
  }
}

void JobOrder::end(const Block& block, int last_byte) {
  const bool data = block.use == BlockUse::first_data || block.use == BlockUse::further_data ||
                    block.use == BlockUse::final_form_feed;
  if (data && last_byte == kFormFeed) {
    end_page();
  }
  if (block.use == BlockUse::job_end) {
    end_page();
    started_ = false;
    setup_seen_ = false;
  }
}

void JobOrder::pass_through() {
  started_ = false;
  page_open_ = false;
  setup_seen_ = false;
}

void JobOrder::end_of_stream(std::uint64_t offset) {
  if (started_) {
    fault(offset, "job not ended");
  }
}

}  // namespace rlx::reader
