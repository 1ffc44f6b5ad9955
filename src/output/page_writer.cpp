#include "output/page_writer.h"

#include <algorithm>
#include <array>

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

/// Writes what is gathered and a last piece behind it as one data block.
void out_data_block(PageWriter& page, Bytes last) {
  begin_data_block(page, page.buffer->length + static_cast<std::int32_t>(last.size()));
  out_bytes(page.writer, page.buffer->gathered());
  out_bytes(page.writer, last);
}

void begin_page(PageWriter& page) {
  page.buffer->length = 0;
  page.continued = false;
  page.job.page_has_content = 0;
}

/// Writes the last block of a page; `piece` ends it.
void end_page(PageWriter& page, Bytes piece) {
  out_data_block(page, piece);
  out_kept_settings(page.carried);
  begin_page(page);
  note_page_end(page.writer);
}

/// Writes what is gathered as a block; the page goes on.
void cut_block(PageWriter& page) {
  out_data_block(page, {});
  out_kept_settings(page.carried);
  page.buffer->length = 0;
  page.continued = true;
}

/// A piece of kPageBufferBytes at most.
void append_piece(PageWriter& page, Bytes piece) {
  if (!page.buffer->append(piece)) {
    cut_block(page);
    page.buffer->append_fitting(piece);  // always fits, the buffer is empty
  }
}

void out_final_form_feed(PageWriter& page) {
  out_block(page.writer, BlockKind::data, kFinalFormFeed);
}

void out_job_end(PageWriter& page) {
  out_block(page.writer, BlockKind::data, kJobEnd);
  page.job.job_started = 0;
}

/// End of a job whose last page has content in the buffer. The carried settings are not written
/// here, deliberately: no block follows that would need them.
void end_job_with_content(PageWriter& page) {
  out_data_block(page, {});
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

/// A piece larger than the buffer, which no command makes: it is divided, so that it is not lost.
void append_oversized_piece(PageWriter& page, Bytes piece) {
  while (!piece.empty()) {
    const std::size_t portion = std::min<std::size_t>(piece.size(), kPageBufferBytes);
    append_piece(page, piece.first(portion));
    piece = piece.subspan(portion);
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

void out_page_data(PageWriter& page, Bytes piece) {
  if (piece.empty()) {
    return;
  }
  if (piece.back() == kFormFeed) {
    end_page(page, piece);
  } else if (piece.size() > kPageBufferBytes) {
    append_oversized_piece(page, piece);
  } else {
    append_piece(page, piece);
  }
}

void end_page_data(PageWriter& page) {
  if (page.buffer->length == 0) {
    end_job_with_empty_buffer(page);
  } else if (page.job.page_has_content != 0) {
    end_job_with_content(page);
  } else {
    end_job_without_content(page);
  }
  begin_page(page);
}

PieceSink page_sink(PageWriter& page) {
  return {page.buffer->bytes.data(), &page.buffer->length, kPageBufferBytes,
          [](void* owner) { cut_block(*static_cast<PageWriter*>(owner)); }, &page};
}

}  // namespace rlx
