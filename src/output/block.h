#pragma once

#include <cstdint>

#include "job/bytes.h"
#include "output/byte_writer.h"

namespace rlx {

// All output, unless it is framed, is a series of blocks: a 16-byte header, then the payload that
// it counts. The header is ESC "Q", the block kind (one digit), ";", a count of ten digits, "/a";
// only that of the job parameter block ends otherwise.

/// Block kinds of the printer language.
enum class BlockKind : char {
  data = '0',         ///< a further data block of a page; final form feed; job end
  first_data = '2',   ///< the first data block of a page
  carried = '6',      ///< settings repeated after a data block
  page_format = '7',  ///< paper, tray, orientation, form length
  density = '8',      ///< character pattern density
  page_setup = '9',   ///< unit, duplex, offsets; also the job start
};

/// Writes the header of a block with `payload` bytes. The count in it is payload + 12: its own ten
/// digits and the final "/a" are counted.
void out_block_header(ByteWriter& writer, BlockKind kind, std::int32_t payload);

/// Writes a whole block.
void out_block(ByteWriter& writer, BlockKind kind, Bytes payload);

/// Writes the job parameter block: its header ends in "/" and a grave accent, and its count is the
/// length of the text alone. The asymmetry is deliberate; the printer counts so.
void out_job_parameter_block(ByteWriter& writer, Bytes text);

}  // namespace rlx
