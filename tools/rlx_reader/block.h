#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rlx_reader/byte_input.h"

namespace rlx::reader {

/// Bytes of a block's header.
inline constexpr std::size_t kHeaderBytes = 16;
/// Bytes of the payload of a job start.
inline constexpr std::size_t kJobStartBytes = 6;

/// How a header ends. It says what the count counts, too.
enum class Ending : std::uint8_t {
  data,        ///< "/a": the count is the payload's length and 12
  parameters,  ///< "/" and a grave accent: the count is the payload's length
};

/// A block's header: ESC "Q", the kind, ";", a count of ten digits, the ending (docs/rlx.md). It is
/// all in here, so that header_bytes gives back what parse_header took.
struct BlockHeader {
  char kind = '0';  ///< a digit
  std::uint64_t count = 0;
  Ending ending = Ending::data;

  /// The payload's length; nothing when the count is smaller than what it always counts.
  std::optional<std::uint64_t> payload() const;
};

/// The count that a payload needs.
std::uint64_t count_for(Ending ending, std::uint64_t payload);

/// Reads a header. @return nothing unless `bytes` begins with a whole one.
std::optional<BlockHeader> parse_header(Bytes bytes);

/// The bytes of a header, in a text. @param header  with a count of at most ten digits.
std::string header_bytes(const BlockHeader& header);

/// What a block is for. Kinds 0 and 9 have several uses.
enum class BlockUse : std::uint8_t {
  job_parameters,
  job_start,
  density,
  page_format,
  page_setup,
  first_data,
  further_data,
  carried_settings,
  final_form_feed,
  job_end,
  unknown,  ///< a kind that the language does not have
};

/// "job parameters" and so on, for people.
std::string_view name_of(BlockUse use);

/// What a block is for.
/// @param front  the beginning of its payload, all of it when it has at most 16 bytes.
BlockUse use_of(const BlockHeader& header, Bytes front);

/// A block of the job.
struct Block {
  std::uint64_t offset = 0;  ///< of its header
  BlockHeader header;
  BlockUse use = BlockUse::unknown;
  /// Bytes that are there, whatever the count says. Of a block too long to be looked at as a whole
  /// that is known at its end only; before, it is what the count says.
  std::uint64_t payload = 0;
  bool count_is_right = true;
};

}  // namespace rlx::reader
