#include "rlxproof/layout.h"

#include <algorithm>

namespace rlx::proof {

namespace {

using reader::Block;
using reader::BlockUse;
using reader::Bytes;

/// What is kept of a job parameter text; those of the language are far shorter.
constexpr std::size_t kMostParameters = 65536;

}  // namespace

Layout::Layout(SheetVisitor& visitor)
    : visitor_(visitor), setting_tokens_(*this), settings_(setting_tokens_) {
  begin_job();
}

/// All is as at the start of a job, but the numbers of pages.
void Layout::begin_job() {
  const auto numbers = writer_ ? writer_->numbers() : SheetWriter::Numbers();
  page_ = PageSettings();
  writer_.emplace(page_, visitor_, numbers);
  data_.emplace(*writer_);
  has_started_ = false;
}

void Layout::end_job() {
  data_->finish();
  writer_->end_sheet();
  if (is_framed_) {
    framed_pages_ = writer_->numbers().page - 1;
    is_framed_ = false;
  }
  begin_job();
}

void Layout::finish() {
  end_job();
}

/// A job that is passed through in frames follows without them.
void Layout::begin_block(const Block& /*block*/) {
  if (is_framed_) {
    end_job();
  }
}

void Layout::payload(const Block& block, Bytes part) {
  switch (block.use) {
    case BlockUse::job_parameters:
      parameters_.append(
          reinterpret_cast<const char*>(part.data()),
          std::min(part.size(), kMostParameters - std::min(kMostParameters, parameters_.size())));
      break;
    case BlockUse::page_format:
    case BlockUse::page_setup:
    case BlockUse::carried_settings:
      settings_.feed(part, 0);
      break;
    case BlockUse::first_data:
    case BlockUse::further_data:
      data_->feed(part, 0);
      break;
    default:
      break;
  }
}

void Layout::end_block(const Block& block) {
  switch (block.use) {
    case BlockUse::job_parameters:
      apply_parameters(parameters_, page_);
      last_parameters_ = std::exchange(parameters_, {});
      break;
    case BlockUse::job_start:
      start_job();
      break;
    case BlockUse::page_format:
    case BlockUse::page_setup:
    case BlockUse::carried_settings:
      settings_.finish();
      break;
    case BlockUse::first_data:
    case BlockUse::further_data:
      writer_->forget();
      break;
    case BlockUse::final_form_feed:
      data_->finish();
      writer_->feed_sheet();
      break;
    case BlockUse::job_end:
      end_job();
      break;
    default:
      break;
  }
}

/// A job may begin where another one has not ended. Its first parameters stand before the start.
void Layout::start_job() {
  if (has_started_) {
    end_job();
    apply_parameters(last_parameters_, page_);
  }
  has_started_ = true;
}

void Layout::begin_page(std::uint64_t number, const Block& /*block*/) {
  writer_->begin_page(framed_pages_ + number);
}

void Layout::frame_data(const reader::Frame& /*frame*/, Bytes part) {
  if (!is_framed_) {
    is_framed_ = true;
    writer_->begin_page(1);
    writer_->take_sheets_as_pages();
  }
  data_->feed(part, 0);
}

void Layout::pass_through(std::uint64_t /*offset*/, Bytes /*sequence*/) {
  end_job();
}

void Layout::SettingTokens::token(const reader::Token& token) {
  const bool is_sequence = token.kind == reader::TokenKind::sequence;
  if (is_sequence && !apply_page_sequence(token.bytes, layout_.page_)) {
    layout_.writer_->set_lasting(token.bytes);
  }
}

}  // namespace rlx::proof
