#include "output/byte_writer.h"

#include <unistd.h>

#include <algorithm>
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

void out_bytes(ByteWriter& writer, Bytes bytes) {
  while (!bytes.empty()) {
    if (writer.length == kOutputBufferBytes) {
      flush_output(writer);
    }
    const std::size_t portion = std::min(bytes.size(), kOutputBufferBytes - writer.length);
    std::memcpy(writer.bytes.data() + writer.length, bytes.data(), portion);
    writer.length += portion;
    bytes = bytes.subspan(portion);
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
