#pragma once

#include <cstdint>
#include <string>

#include "rlx_reader/block.h"
#include "rlx_reader/byte_input.h"

namespace rlx::reader {

/// Where a block ends.
struct BlockEnd {
  std::uint64_t payload = 0;  ///< bytes that are the block's
  bool count_is_right = true;
  bool cut = false;  ///< by the end of the input
  std::string what;  ///< what is wrong, for people; empty when nothing is
};

/// What can be seen behind a block's header.
struct View {
  Bytes bytes;
  bool to_the_end = false;  ///< of the input: nothing comes behind `bytes`
};

/// Where a block ends. The count is believed when a header, a job that is passed through or the end
/// of the input stands where it says, or the front of a header that is cut or has a wrong byte.
/// Else the payload reaches to the next header; unless it is whole, by what it holds, where the
/// count says: then what follows belongs to no block. A data block is whole when it ends with FF,
/// the job parameters behind a line, the others when they are nothing but whole sequences.
///
/// A payload that reaches out of the view is believed, unless there is a header in the view from
/// which on block follows block, each in its right place, as far as can be seen.
BlockEnd find_block_end(const BlockHeader& header, View view);

/// "truncated block: 5 of 20 bytes of payload"
std::string truncated_text(std::uint64_t there, std::uint64_t declared);

/// The position of the first header in some bytes; their number when there is none.
std::size_t find_header(Bytes bytes);

/// True when a block begins that was damaged in at most two bytes of its header.
bool looks_like_header(Bytes bytes);

/// True when the bytes are the front of a header, at least its first byte, and not all of it.
bool is_cut_header(Bytes bytes);

}  // namespace rlx::reader
