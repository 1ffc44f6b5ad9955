#include "output/byte_writer.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "job/status.h"

namespace rlx {

namespace {

struct ByteWriter {
  std::size_t length = 0;
  bool page_ended = false;
  std::array<std::uint8_t, kOutputBufferBytes> bytes;
};

ByteWriter writer;

[[noreturn]] void end_with_write_error() {
  std::fputs("write error", stderr);
  std::exit(kExitFailure);
}

}  // namespace

int write_fully(const std::uint8_t* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(STDOUT_FILENO, bytes, count);
    if (written > 0) {
      bytes += written;
      count -= static_cast<std::size_t>(written);
    } else if (written < 0 && errno != EINTR) {
      return -1;
    }
  }
  return 0;
}

int try_flush_output() {
  const std::size_t gathered = writer.length;
  writer.length = 0;
  writer.page_ended = false;
  return write_fully(writer.bytes.data(), gathered);
}

int flush_output() {
  if (try_flush_output() != 0) {
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
