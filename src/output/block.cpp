#include "output/block.h"

#include <array>
#include <cstddef>

#include "job/control_bytes.h"
#include "job/status.h"
#include "output/byte_writer.h"

namespace rlx {

namespace {

constexpr std::size_t kCountDigits = 10;
constexpr std::size_t kCountEnd = 14;
constexpr std::int32_t kCountedHeaderBytes = 12;

using Header = std::array<std::uint8_t, 16>;

/// ESC Q kind ; count / final.
int out_header(char kind, std::int32_t count, char final) {
  Header header{kEsc, 'Q', static_cast<std::uint8_t>(kind), ';'};
  for (std::size_t i = 0; i < kCountDigits; ++i) {
    header[kCountEnd - 1 - i] = static_cast<std::uint8_t>('0' + count % 10);
    count /= 10;
  }
  header[kCountEnd] = '/';
  header[kCountEnd + 1] = static_cast<std::uint8_t>(final);
  return out_bytes(header.size(), header.data());
}

}  // namespace

int out_block_header(BlockKind kind, std::int32_t payload) {
  return out_header(static_cast<char>(kind), payload + kCountedHeaderBytes, 'a');
}

int out_block(BlockKind kind, std::int32_t count, const std::uint8_t* payload) {
  const int status = out_block_header(kind, count);
  return status != ST_OK ? status : out_bytes(count, payload);
}

int out_job_parameter_block(std::int32_t count, const std::uint8_t* text) {
  const int status = out_header('0', count, '`');
  return status != ST_OK ? status : out_bytes(count, text);
}

}  // namespace rlx
