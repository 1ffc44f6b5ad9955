#include "output/page_writer.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "job/control_bytes.h"
#include "job/status.h"
#include "output/block.h"

namespace rlx {

namespace {

constexpr std::array<std::uint8_t, 1> kFinalFormFeed{kFormFeed};
/// ESC c, ESC DEL 00 00 01 00.
constexpr std::array<std::uint8_t, 8> kJobEnd{kEsc, 'c', kEsc, kDel, 0x00, 0x00, 0x01, 0x00};

/// Writes the header of a data block; the job header first when it is the page's first block.
void begin_data_block(PageWriter& page, std::int32_t payload) {
  if (page.continued) {
    out_block_header(page.writer, BlockKind::data, payload);
  } else {
    dtout_pji(page.header, kWholeHeader);
    out_block_header(page.writer, BlockKind::first_data, payload);
  }
}

/// Writes what is gathered and `count` bytes behind it as one data block.
void out_data_block(PageWriter& page, std::int32_t count, const std::uint8_t* bytes) {
  begin_data_block(page, page.buffer->length + count);
  out_bytes(page.writer, page.buffer->length, page.buffer->bytes.data());
  out_bytes(page.writer, count, bytes);
}

void begin_page(PageWriter& page) {
  page.buffer->length = 0;
  page.continued = false;
  page.job.page_has_content = 0;
}

/// Writes the last block of a page, whose end the piece is.
void end_page(PageWriter& page, std::int32_t count, const std::uint8_t* bytes) {
  out_data_block(page, count, bytes);
  out_kept_settings(page.carried);
  begin_page(page);
  note_page_end(page.writer);
}

/// Writes what is gathered as a block; the page goes on.
void cut_block(PageWriter& page) {
  out_data_block(page, 0, nullptr);
  out_kept_settings(page.carried);
  page.buffer->length = 0;
  page.continued = true;
}

void append_piece(PageWriter& page, std::int32_t count, const std::uint8_t* bytes) {
  if (count > page.buffer->room()) {
    cut_block(page);
  }
  std::memcpy(page.buffer->bytes.data() + page.buffer->length, bytes,
              static_cast<std::size_t>(count));
  page.buffer->length += count;
}

void out_final_form_feed(PageWriter& page) {
  out_block(page.writer, BlockKind::data, kFinalFormFeed.size(), kFinalFormFeed.data());
}

void out_job_end(PageWriter& page) {
  out_block(page.writer, BlockKind::data, kJobEnd.size(), kJobEnd.data());
  page.job.job_started = 0;
}

/// End of a job whose last page has content in the buffer. The carried settings are not written
/// here, deliberately: no block follows that would need them.
void end_job_with_content(PageWriter& page) {
  out_data_block(page, 0, nullptr);
  out_final_form_feed(page);
  out_job_end(page);
}

/// End of a job with nothing but settings since the last page: they are dropped.
void end_job_without_content(PageWriter& page) {
  if (page.job.job_started != 0) {
    out_job_end(page);
  }
  if (!page.continued) {
    dtout_pji(page.header, kParameterTextOnly);
  }
}

/// End of a job with nothing gathered.
void end_job_with_empty_buffer(PageWriter& page) {
  if (page.job.job_started == 0) {
    return;
  }
  if (page.job.page_has_content != 0) {
    out_final_form_feed(page);
  }
  out_job_end(page);
}

void end_job(PageWriter& page) {
  if (page.buffer->length == 0) {
    end_job_with_empty_buffer(page);
  } else if (page.job.page_has_content != 0) {
    end_job_with_content(page);
  } else {
    end_job_without_content(page);
  }
  begin_page(page);
}

/// A piece larger than the buffer, which no command makes: it is divided, so that it is not lost.
void append_oversized_piece(PageWriter& page, std::int32_t count, const std::uint8_t* bytes) {
  while (count > 0) {
    const std::int32_t portion = std::min(count, kPageBufferBytes);
    append_piece(page, portion, bytes);
    bytes += portion;
    count -= portion;
  }
}

}  // namespace

Status allocate_page_buffers(PageWriter& page) {
  free_page_buffers(page);
  if (allocate_carried_settings(page.carried) != ST_OK) {
    return ST_FAILED;
  }
  page.buffer = allocate_output_buffer();
  return page.buffer == nullptr ? ST_FAILED : ST_OK;
}

void free_page_buffers(PageWriter& page) {
  free_output_buffer(page.buffer);
  page.buffer = nullptr;
  free_carried_settings(page.carried);
}

void out_page_data(PageWriter& page, std::int32_t count, const std::uint8_t* bytes) {
  if (bytes == nullptr) {
    if (count == 0) {
      end_job(page);
    }
  } else if (count < 1) {
    return;
  } else if (bytes[count - 1] == kFormFeed) {
    end_page(page, count, bytes);
  } else if (count > kPageBufferBytes) {
    append_oversized_piece(page, count, bytes);
  } else {
    append_piece(page, count, bytes);
  }
}

PieceSink page_sink(PageWriter& page) {
  return {page.buffer->bytes.data(), &page.buffer->length, kPageBufferBytes,
          [](void* owner) { cut_block(*static_cast<PageWriter*>(owner)); }, &page};
}

}  // namespace rlx
