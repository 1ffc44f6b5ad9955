#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "rlx_reader/job_contents.h"
#include "rlx_reader/job_reader.h"

namespace rlx::dump {

/// A piece of a section: what makes it what it is, and how it is shown.
struct Piece {
  std::uint64_t offset = 0;
  std::string identity;  ///< equal for equal pieces: its bytes, and what it is
  std::string shown;
};

/// A section of a job, or a portion of a very long one.
struct SectionPieces {
  reader::Section section;
  std::uint64_t first_piece = 1;  ///< number of the first piece here
  std::vector<Piece> pieces;
};

/// Takes a job apart, one section after the other. Two jobs are the same, byte for byte, when all
/// their sections have the same pieces.
class JobSections : private reader::ContentVisitor {
 public:
  /// Pieces, and bytes in them, of which a portion has at most one more.
  static constexpr std::size_t kMostPieces = 20000;
  static constexpr std::size_t kMostBytes = std::size_t{4} << 20;

  explicit JobSections(reader::ByteInput& input) : reader_(input, contents_) {}

  /// @return nothing behind the last section.
  /// @throws std::system_error when the input cannot be read.
  std::optional<SectionPieces> next();

 private:
  void section(const reader::Section& section) override;
  void begin_block(const reader::Block& block) override;
  void frame(const reader::Frame& frame) override;
  void pass_through(std::uint64_t offset, reader::Bytes sequence) override;
  void outside(std::uint64_t offset, reader::Bytes part) override;
  void job_parameter(std::uint64_t offset, reader::Bytes line) override;
  void token(reader::Place place, const reader::Token& token) override;

  void add(std::uint64_t offset, std::string what, reader::Bytes bytes, std::string shown);
  void close();

  reader::JobContents contents_{*this};
  reader::JobReader reader_;
  std::deque<SectionPieces> ready_;
  SectionPieces current_;
  std::size_t current_bytes_ = 0;
  bool ended_ = false;
};

}  // namespace rlx::dump
