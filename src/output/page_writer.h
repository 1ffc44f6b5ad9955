#pragma once

#include <cstdint>

#include "job/piece_sink.h"

namespace rlx {

/// Allocates the two work buffers of the output, the carried settings' and the page's, 8192 bytes
/// each. Nothing of this folder may be written before. @return 0, or 1 when there is no memory.
int allocate_page_buffers();
/// Frees both; harmless when there are none.
void free_page_buffers();

/// Writes one piece of page data, or ends the job.
///
/// Pieces are gathered; a block of the printer language holds as many whole pieces as fit in
/// kPageBufferBytes. In front of the first block of a page the job header is written; behind every
/// block the carried settings are. A piece whose last byte is FF (0x0C) ends the page, wherever the
/// FF came from (deliberately also one that is data of a sequence). A piece that is larger than the
/// buffer, and no page end, is divided; no command makes one.
///
/// @param count  bytes in `bytes`. 0 with bytes that are not null does nothing; 0 with a null
///               `bytes` ends the job: what is gathered is written if the page has content (else it
///               is dropped), then the final form feed block and the job end block.
/// @return 0, or the first non-zero status of out_bytes or dtout_pji.
int out_page_data(std::int32_t count, const std::uint8_t* bytes);

/// The page buffer, for runs of pieces. No piece of such a run may end in FF, and none may be
/// longer than the buffer.
PieceSink page_sink();

/// Forgets the page: nothing gathered, the next block is the first of a page.
void reset_page_writer();

}  // namespace rlx
