#pragma once

#include <cstdint>

#include "job/bytes.h"
#include "job/output_buffer.h"
#include "job/piece_sink.h"
#include "job/settings.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/job_header.h"

namespace rlx {

/// The page that is being gathered.
struct PageWriter {
  ByteWriter& writer;
  CarriedSettings& carried;
  JobHeader& header;
  JobState& job;
  /// Null until it is allocated.
  OutputBuffer* buffer = nullptr;
  /// A block of the current page has been written already.
  bool continued = false;

  PageWriter(ByteWriter& output, CarriedSettings& settings, JobHeader& front, JobState& state)
      : writer(output), carried(settings), header(front), job(state) {}
};

/// Allocates the two work buffers of the output, the carried settings' and the page's, 8192 bytes
/// each. Nothing may be put on the page before that. @return ST_OK, or ST_FAILED when there is no
/// memory.
Status allocate_page_buffers(PageWriter& page);
/// Frees both; harmless when there are none.
void free_page_buffers(PageWriter& page);

/// Writes one piece of page data. An empty one does nothing.
///
/// Pieces are gathered; a block of the printer language holds as many whole pieces as fit in
/// kPageBufferBytes. In front of the first block of a page comes the job header, behind every block
/// come the carried settings. A piece whose last byte is FF (0x0C) ends the page, wherever the
/// FF came from (deliberately also one that is data of a sequence). A piece that is larger than the
/// buffer, and no page end, is divided; no command makes one.
void out_page_data(PageWriter& page, Bytes piece);

/// The end of the page data: what is gathered is written if the page has content, and dropped if
/// not. Behind content comes the final form feed block, and the job end block if the job has been
/// started. When only settings came since the last page, and no block of them has gone
/// out, the parameter text of the job header comes last.
void end_page_data(PageWriter& page);

/// The page buffer, for runs of pieces. No piece of such a run may end in FF, and none may be
/// longer than the buffer.
PieceSink page_sink(PageWriter& page);

}  // namespace rlx
