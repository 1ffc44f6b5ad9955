#pragma once

#include <cstdint>
#include <string>

#include "rlx_reader/job_visitor.h"
#include "rlx_reader/page_data.h"

namespace rlx::reader {

/// A part of a stream, as people look at it.
struct Section {
  enum class Kind : std::uint8_t {
    job,         ///< what stands in front of the first page of a job
    page,        ///< a page: its header, its data, its carried settings
    end_of_job,  ///< the job end
    behind,      ///< what stands behind it: job parameters, perhaps another job
  };
  Kind kind = Kind::job;
  std::uint64_t page = 0;  ///< the number of a page, from 1
};

/// "job", "page 3", "end of the job", "behind the job end".
std::string title_of(const Section& section);

/// Where a token stands.
enum class Place : std::uint8_t {
  page_data,  ///< data blocks, the final form feed, frames
  header,     ///< blocks in front of a page, job start and job end
  carried,    ///< carried settings
};

/// What a job holds, down to its tokens, in the order of the stream. Portions stay for the call
/// only. Two things that a block cuts come later than they begin: a token of the page data when the
/// next data is there, and a line of the job parameters when its end is.
class ContentVisitor {
 public:
  virtual ~ContentVisitor() = default;

  /// What follows belongs to a new section.
  virtual void section(const Section& /*section*/) {}
  /// The page that the section is has data. Without that it is a page header alone.
  virtual void begin_page() {}

  virtual void begin_block(const Block& /*block*/) {}
  virtual void end_block(const Block& /*block*/) {}
  virtual void frame(const Frame& /*frame*/) {}
  /// A portion of a payload or of the data of a frame, in front of what it holds.
  virtual void bytes(std::uint64_t /*offset*/, Bytes /*part*/) {}
  virtual void pass_through(std::uint64_t /*offset*/, Bytes /*sequence*/) {}
  virtual void outside(std::uint64_t /*offset*/, Bytes /*part*/) {}

  /// @param line  with its LF, if it has one. Of a line without end each kMostLine bytes are a
  /// line.
  virtual void job_parameter(std::uint64_t /*offset*/, Bytes /*line*/) {}
  virtual void token(Place /*place*/, const Token& /*token*/) {}

  virtual void fault(const Fault& /*fault*/) {}
};

/// Takes apart what a JobReader finds. In a framed stream a form feed ends a page, and the next
/// frame with data begins one.
class JobContents : public JobVisitor {
 public:
  static constexpr std::size_t kMostLine = 4096;

  explicit JobContents(ContentVisitor& visitor);

  /// Tells what still waits. To be called when the stream has ended.
  void finish();

  void begin_block(const Block& block) override;
  void payload(const Block& block, Bytes part) override;
  void end_block(const Block& block) override;
  void begin_frame(const Frame& frame) override;
  void frame_data(const Frame& frame, Bytes part) override;
  void pass_through(std::uint64_t offset, Bytes sequence) override;
  void outside(std::uint64_t offset, Bytes part) override;
  void fault(const Fault& fault) override { visitor_.fault(fault); }

 private:
  /// Tokens of one of the places.
  class Tokens : public TokenVisitor {
   public:
    explicit Tokens(JobContents& contents) : contents_(contents) {}
    void token(const Token& token) override { contents_.pass_on(token, place); }

    Place place = Place::page_data;

   private:
    JobContents& contents_;
  };

  void pass_on(const Token& token, Place place);
  void begin_section(Section::Kind kind, std::uint64_t page);
  void begin_section_of(const Block& block);
  void begin_page_section();
  void begin_frame_section();
  void require_section();
  void read_parameters(Bytes part);
  void out_line();

  ContentVisitor& visitor_;
  Tokens data_tokens_{*this};
  Tokens other_tokens_{*this};
  PageDataReader data_{data_tokens_};
  PageDataReader other_{other_tokens_};

  Section section_;
  bool has_section_ = false;
  bool job_started_ = false;
  bool job_ended_ = false;
  bool page_has_data_ = false;
  std::uint64_t pages_ = 0;
  bool framed_ = false;

  std::uint64_t at_ = 0;  ///< where the next byte of a payload or frame stands
  std::string line_;
  std::uint64_t line_at_ = 0;
};

/// Reads a whole stream.
/// @throws std::system_error when the input cannot be read.
void read_contents(ByteInput& input, ContentVisitor& visitor);

}  // namespace rlx::reader
