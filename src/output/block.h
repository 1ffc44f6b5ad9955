#pragma once

#include <cstdint>

namespace rlx {

// All output after the job start is a series of blocks: a 16-byte header, then the payload it
// counts. The header is ESC "Q", the block kind (one digit), ";", a count of ten digits, "/a".

/// Block kinds of the printer language.
enum class BlockKind : char {
  data = '0',         ///< a further data block of a page; also the job end
  first_data = '2',   ///< the first data block of a page
  carried = '6',      ///< settings repeated after a data block
  page_format = '7',  ///< paper, tray, orientation, form length
  density = '8',      ///< character pattern density
  page_setup = '9',   ///< unit, duplex, offsets; also the job start
};

/// Writes the header of a block with `payload` bytes. The count in it is payload + 12: its own ten
/// digits and the final "/a" are counted.
/// @return the status of out_bytes.
int out_block_header(BlockKind kind, std::int32_t payload);

/// Writes a whole block.
/// @return the first non-zero status of out_bytes.
int out_block(BlockKind kind, std::int32_t count, const std::uint8_t* payload);

/// Writes the job parameter block: its header ends in "/" and a grave accent, and its count is the
/// length of the text alone. The asymmetry is deliberate; the printer counts so.
/// @return the first non-zero status of out_bytes.
int out_job_parameter_block(std::int32_t count, const std::uint8_t* text);

}  // namespace rlx
