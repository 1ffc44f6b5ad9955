#include "running/page_counter.h"

#include <algorithm>

#include "mapping/words.h"

namespace rlx::spooler {

namespace {

/// Parameters are some lines of text; a block that is longer than this holds none that count.
constexpr std::size_t kMostParameterBytes = 65536;
constexpr unsigned kMostCopies = 9999;

}  // namespace

void PageCounter::begin_block(const reader::Block& block) {
  parameters_.clear();
  // What ends the last page of a job belongs to it.
  if (block.use == reader::BlockUse::job_parameters || block.use == reader::BlockUse::job_start) {
    finish();
  }
  if (block.use == reader::BlockUse::job_start) {
    copies_ = new_copies_;
  }
}

void PageCounter::payload(const reader::Block& block, reader::Bytes part) {
  if (block.use == reader::BlockUse::job_parameters &&
      parameters_.size() + part.size() <= kMostParameterBytes) {
    parameters_.append(part.begin(), part.end());
  }
}

void PageCounter::end_block(const reader::Block& block) {
  if (block.use != reader::BlockUse::job_parameters) {
    return;
  }
  constexpr std::string_view kCopies = "CPS=";
  new_copies_ = 1;
  for (const std::string& line : divide(parameters_, '\n')) {
    if (line.starts_with(kCopies)) {
      const auto copies = whole_number(std::string_view(line).substr(kCopies.size()), kMostCopies);
      new_copies_ = std::max(copies.value_or(1), 1U);
      copies_ = new_copies_;
    }
  }
}

void PageCounter::begin_page(std::uint64_t /*number*/, const reader::Block& /*block*/) {
  finish();
  in_page_ = true;
  new_copies_ = 1;
}

void PageCounter::end_page(std::uint64_t /*number*/) {
  finish();
}

void PageCounter::finish() {
  if (in_page_) {
    count_page();
  }
}

void PageCounter::count_page() {
  in_page_ = false;
  ++count_.pages;
  count_.impressions += copies_;
  listener_(count_.pages, copies_);
}

}  // namespace rlx::spooler
