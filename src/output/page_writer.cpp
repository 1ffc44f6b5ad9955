#include "output/page_writer.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "job/control_bytes.h"
#include "job/output_buffer.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/block.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/job_header.h"

namespace rlx {

namespace {

struct PageWriter {
  OutputBuffer* buffer = nullptr;
  /// A block of the current page has been written already.
  bool continued = false;
};

PageWriter page;

constexpr std::array<std::uint8_t, 1> kFinalFormFeed{kFormFeed};
/// ESC c, ESC DEL 00 00 01 00.
constexpr std::array<std::uint8_t, 8> kJobEnd{kEsc, 'c', kEsc, kDel, 0x00, 0x00, 0x01, 0x00};

/// Writes the header of a data block; the job header first when it is the page's first block.
int begin_data_block(std::int32_t payload) {
  if (page.continued) {
    return out_block_header(BlockKind::data, payload);
  }
  const int status = dtout_pji(kWholeHeader);
  return status != ST_OK ? status : out_block_header(BlockKind::first_data, payload);
}

/// Writes what is gathered and `count` bytes behind it as one data block.
int out_data_block(std::int32_t count, const std::uint8_t* bytes) {
  int status = begin_data_block(page.buffer->length + count);
  if (status == ST_OK) {
    status = out_bytes(page.buffer->length, page.buffer->bytes.data());
  }
  return status != ST_OK ? status : out_bytes(count, bytes);
}

void begin_page() {
  page.buffer->length = 0;
  page.continued = false;
  job_settings.page_has_content = 0;
}

/// Writes the last block of a page, whose end the piece is.
int end_page(std::int32_t count, const std::uint8_t* bytes) {
  const int status = out_data_block(count, bytes);
  if (status != ST_OK) {
    return status;
  }
  // The page is complete whatever becomes of its settings; deliberately no look at the status.
  out_kept_settings();
  begin_page();
  note_page_end();
  return ST_OK;
}

/// Writes what is gathered as a block; the page goes on.
int cut_block() {
  int status = out_data_block(0, nullptr);
  if (status == ST_OK) {
    status = out_kept_settings();
  }
  if (status == ST_OK) {
    page.buffer->length = 0;
    page.continued = true;
  }
  return status;
}

int append_piece(std::int32_t count, const std::uint8_t* bytes) {
  if (count > kPageBufferBytes - page.buffer->length) {
    const int status = cut_block();
    if (status != ST_OK) {
      return status;
    }
  }
  std::memcpy(page.buffer->bytes.data() + page.buffer->length, bytes,
              static_cast<std::size_t>(count));
  page.buffer->length += count;
  return ST_OK;
}

int out_final_form_feed() {
  return out_block(BlockKind::data, kFinalFormFeed.size(), kFinalFormFeed.data());
}

int out_job_end() {
  const int status = out_block(BlockKind::data, kJobEnd.size(), kJobEnd.data());
  if (status == ST_OK) {
    job_settings.job_started = 0;
  }
  return status;
}

/// End of a job whose last page has content in the buffer. The carried settings are not written
/// here, deliberately: no block follows that would need them.
int end_job_with_content() {
  int status = out_data_block(0, nullptr);
  if (status == ST_OK) {
    status = out_final_form_feed();
  }
  return status != ST_OK ? status : out_job_end();
}

/// End of a job with nothing but settings since the last page: they are dropped.
int end_job_without_content() {
  int status = ST_OK;
  if (job_settings.job_started != 0) {
    status = out_job_end();
  }
  if (status == ST_OK && !page.continued) {
    status = dtout_pji(kParameterTextOnly);
  }
  return status;
}

/// End of a job with nothing gathered.
int end_job_with_empty_buffer() {
  if (job_settings.job_started == 0) {
    return ST_OK;
  }
  int status = ST_OK;
  if (job_settings.page_has_content != 0) {
    status = out_final_form_feed();
  }
  return status != ST_OK ? status : out_job_end();
}

int end_job() {
  int status = ST_OK;
  if (page.buffer->length == 0) {
    status = end_job_with_empty_buffer();
  } else if (job_settings.page_has_content != 0) {
    status = end_job_with_content();
  } else {
    status = end_job_without_content();
  }
  if (status == ST_OK) {
    begin_page();
  }
  return status;
}

/// A piece larger than the buffer, which no command makes: it is divided, so that it is not lost.
int append_oversized_piece(std::int32_t count, const std::uint8_t* bytes) {
  int status = ST_OK;
  while (count > 0 && status == ST_OK) {
    const std::int32_t portion = std::min(count, kPageBufferBytes);
    status = append_piece(portion, bytes);
    bytes += portion;
    count -= portion;
  }
  return status;
}

}  // namespace

int allocate_page_buffers() {
  free_page_buffers();
  if (allocate_carried_settings() != ST_OK) {
    return kExitFailure;
  }
  page.buffer = allocate_output_buffer();
  return page.buffer == nullptr ? kExitFailure : ST_OK;
}

void free_page_buffers() {
  free_output_buffer(page.buffer);
  page.buffer = nullptr;
  free_carried_settings();
}

int out_page_data(std::int32_t count, const std::uint8_t* bytes) {
  if (bytes == nullptr) {
    return count == 0 ? end_job() : ST_OK;
  }
  if (count < 1) {
    return ST_OK;
  }
  if (bytes[count - 1] == kFormFeed) {
    return end_page(count, bytes);
  }
  return count > kPageBufferBytes ? append_oversized_piece(count, bytes)
                                  : append_piece(count, bytes);
}

PieceSink page_sink() {
  return {page.buffer->bytes.data(), &page.buffer->length, kPageBufferBytes, cut_block};
}

void reset_page_writer() {
  page.continued = false;
  if (page.buffer != nullptr) {
    page.buffer->length = 0;
  }
}

}  // namespace rlx
