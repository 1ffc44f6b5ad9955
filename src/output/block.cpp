#include "output/block.h"

#include <array>
#include <cstddef>

#include "job/control_bytes.h"
#include "output/byte_writer.h"

namespace rlx {

namespace {

constexpr std::size_t kCountEnd = 14;
constexpr std::int32_t kCountedHeaderBytes = 12;

using Header = std::array<std::uint8_t, 16>;

/// ESC Q kind ; count / final.
void out_header(ByteWriter& writer, char kind, std::int32_t count, char final) {
  Header header{
      kEsc, 'Q', static_cast<std::uint8_t>(kind), ';', '0', '0', '0', '0', '0', '0', '0', '0', '0',
      '0',  '/', static_cast<std::uint8_t>(final)};
  for (std::size_t at = kCountEnd; count != 0; count /= 10) {
    header[--at] = static_cast<std::uint8_t>('0' + count % 10);
  }
  out_bytes(writer, header);
}

}  // namespace

void out_block_header(ByteWriter& writer, BlockKind kind, std::int32_t payload) {
  out_header(writer, static_cast<char>(kind), payload + kCountedHeaderBytes, 'a');
}

void out_block(ByteWriter& writer, BlockKind kind, Bytes payload) {
  out_block_header(writer, kind, static_cast<std::int32_t>(payload.size()));
  out_bytes(writer, payload);
}

void out_job_parameter_block(ByteWriter& writer, Bytes text) {
  out_header(writer, '0', static_cast<std::int32_t>(text.size()), '`');
  out_bytes(writer, text);
}

}  // namespace rlx
