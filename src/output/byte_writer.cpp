#include "output/byte_writer.h"

#include <unistd.h>

#include <array>
#include <cstring>
#include <span>

#include "job/status.h"
#include "support/descriptor_io.h"
#include "support/process_end.h"

namespace rlx {

namespace {

struct ByteWriter {
  std::size_t length = 0;
  bool page_ended = false;
  std::array<std::uint8_t, kOutputBufferBytes> bytes;
};

ByteWriter writer;

}  // namespace

int flush_output() {
  const std::span gathered(writer.bytes.data(), writer.length);
  writer.length = 0;
  writer.page_ended = false;
  if (write_whole(STDOUT_FILENO, gathered) != 0) {
    end_with_write_error();
  }
  return ST_OK;
}

int out_bytes(std::int32_t count, const std::uint8_t* bytes) {
  if (bytes == nullptr || count < 1) {
    return ST_OK;
  }
  auto left = static_cast<std::size_t>(count);
  for (;;) {
    const std::size_t room = kOutputBufferBytes - writer.length;
    const std::size_t portion = left < room ? left : room;
    std::memcpy(writer.bytes.data() + writer.length, bytes, portion);
    writer.length += portion;
    left -= portion;
    if (left == 0) {
      return ST_OK;
    }
    bytes += portion;
    flush_output();
  }
}

void note_page_end() {
  writer.page_ended = true;
}

void flush_finished_pages() {
  if (writer.page_ended) {
    flush_output();
  }
}

void reset_byte_writer() {
  writer.length = 0;
  writer.page_ended = false;
}

}  // namespace rlx
