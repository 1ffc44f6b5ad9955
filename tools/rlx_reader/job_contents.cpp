#include "rlx_reader/job_contents.h"

#include "rlx_reader/frame_reader.h"
#include "rlx_reader/job_reader.h"

namespace rlx::reader {

namespace {

constexpr std::uint8_t kFormFeed = 0x0c;

bool is_page_data(BlockUse use) {
  return use == BlockUse::first_data || use == BlockUse::further_data ||
         use == BlockUse::final_form_feed;
}

/// Nothing in front of such a block goes on behind it: it is no data of a sequence that is still
/// open.
bool ends_page_data(BlockUse use) {
  return use == BlockUse::job_start || use == BlockUse::final_form_feed || use == BlockUse::job_end;
}

/// A reader that ends data of its own behind each block.
bool stands_alone(BlockUse use) {
  return !is_page_data(use) && use != BlockUse::job_parameters;
}

}  // namespace

std::string title_of(const Section& section) {
  switch (section.kind) {
    case Section::Kind::job:
      return "job";
    case Section::Kind::page:
      return "page " + std::to_string(section.page);
    case Section::Kind::end_of_job:
      return "end of the job";
    default:
      return "behind the job end";
  }
}

JobContents::JobContents(ContentVisitor& visitor) : visitor_(visitor) {}

void JobContents::pass_on(const Token& token, Place place) {
  if (framed_) {
    begin_frame_section();
  }
  visitor_.token(place, token);
  if (framed_ && token.kind == TokenKind::control && token.bytes[0] == kFormFeed) {
    page_has_data_ = true;
  }
}

void JobContents::begin_section(Section::Kind kind, std::uint64_t page) {
  section_ = {kind, page};
  has_section_ = true;
  visitor_.section(section_);
}

/// A page is due when there is none yet, or the last one has had its data.
void JobContents::begin_page_section() {
  if (!has_section_ || section_.kind != Section::Kind::page || page_has_data_) {
    page_has_data_ = false;
    begin_section(Section::Kind::page, pages_ + 1);
  }
}

/// In a framed stream `page_has_data_` says that the page was fed.
void JobContents::begin_frame_section() {
  if (!has_section_ || section_.kind != Section::Kind::page || page_has_data_) {
    page_has_data_ = false;
    begin_section(Section::Kind::page, ++pages_);
    visitor_.begin_page();
  }
}

void JobContents::require_section() {
  if (!has_section_) {
    begin_section(Section::Kind::job, 0);
  }
}

void JobContents::begin_section_of(const Block& block) {
  switch (block.use) {
    case BlockUse::job_parameters:
    case BlockUse::job_start: {
      const auto kind = job_ended_ ? Section::Kind::behind : Section::Kind::job;
      if (job_started_) {
        begin_page_section();
      } else if (!has_section_ || section_.kind != kind) {
        begin_section(kind, 0);
      }
      job_started_ = job_started_ || block.use == BlockUse::job_start;
      break;
    }
    case BlockUse::first_data:
      begin_page_section();
      page_has_data_ = true;
      ++pages_;
      visitor_.begin_page();
      break;
    case BlockUse::density:
    case BlockUse::page_format:
    case BlockUse::page_setup:
      begin_page_section();
      break;
    case BlockUse::job_end:
      begin_section(Section::Kind::end_of_job, 0);
      job_started_ = false;
      job_ended_ = true;
      break;
    default:
      require_section();
      break;
  }
}

void JobContents::begin_block(const Block& block) {
  if (ends_page_data(block.use)) {
    data_.finish();
  }
  framed_ = false;
  begin_section_of(block);
  const bool carried = block.use == BlockUse::carried_settings;
  other_tokens_.place = carried ? Place::carried : Place::header;
  at_ = block.offset + kHeaderBytes;
  line_at_ = at_;
  visitor_.begin_block(block);
}

void JobContents::payload(const Block& block, Bytes part) {
  visitor_.bytes(at_, part);
  if (block.use == BlockUse::job_parameters) {
    read_parameters(part);
  } else if (is_page_data(block.use)) {
    data_.feed(part, at_);
  } else {
    other_.feed(part, at_);
  }
  at_ += part.size();
}

void JobContents::read_parameters(Bytes part) {
  for (const std::uint8_t byte : part) {
    line_ += static_cast<char>(byte);
    if (byte == '\n' || line_.size() == kMostLine) {
      out_line();
    }
  }
}

void JobContents::out_line() {
  if (!line_.empty()) {
    visitor_.job_parameter(line_at_,
                           {reinterpret_cast<const std::uint8_t*>(line_.data()), line_.size()});
    line_at_ += line_.size();
    line_.clear();
  }
}

void JobContents::end_block(const Block& block) {
  out_line();
  if (stands_alone(block.use)) {
    other_.finish();
  }
  visitor_.end_block(block);
}

void JobContents::begin_frame(const Frame& frame) {
  framed_ = true;
  if (frame.count == 0) {
    require_section();
  } else {
    begin_frame_section();
  }
  at_ = frame.offset + kFrameHeaderBytes;
  visitor_.frame(frame);
}

void JobContents::frame_data(const Frame& /*frame*/, Bytes part) {
  visitor_.bytes(at_, part);
  data_.feed(part, at_);
  at_ += part.size();
}

void JobContents::pass_through(std::uint64_t offset, Bytes sequence) {
  data_.finish();
  framed_ = false;
  require_section();
  visitor_.pass_through(offset, sequence);
  job_started_ = false;
}

void JobContents::outside(std::uint64_t offset, Bytes part) {
  require_section();
  visitor_.outside(offset, part);
}

void JobContents::finish() {
  data_.finish();
}

void read_contents(ByteInput& input, ContentVisitor& visitor) {
  JobContents contents(visitor);
  read_jobs(input, contents);
  contents.finish();
}

}  // namespace rlx::reader
