#include "output/byte_writer.h"

#include <unistd.h>

#include <cstring>
#include <span>

#include "support/descriptor_io.h"
#include "support/process_end.h"

namespace rlx {

void flush_output(ByteWriter& writer) {
  const std::span gathered(writer.bytes.data(), writer.length);
  writer.length = 0;
  writer.page_ended = false;
  if (write_whole(STDOUT_FILENO, gathered) != ST_OK) {
    end_with_write_error();
  }
}

void out_bytes(ByteWriter& writer, std::int32_t count, const std::uint8_t* bytes) {
  if (bytes == nullptr || count < 1) {
    return;
  }
  auto left = static_cast<std::size_t>(count);
  for (;;) {
    const std::size_t room = kOutputBufferBytes - writer.length;
    const std::size_t portion = left < room ? left : room;
    std::memcpy(writer.bytes.data() + writer.length, bytes, portion);
    writer.length += portion;
    left -= portion;
    if (left == 0) {
      return;
    }
    bytes += portion;
    flush_output(writer);
  }
}

void note_page_end(ByteWriter& writer) {
  writer.page_ended = true;
}

void flush_finished_pages(ByteWriter& writer) {
  if (writer.page_ended) {
    flush_output(writer);
  }
}

}  // namespace rlx
