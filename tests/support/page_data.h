#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "output/carried_settings.h"
#include "output/page_writer.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {

/// Puts one piece on the page.
inline void put(std::string_view piece) {
  out_page_data(the_filter().page, bytes_of(piece));
}

/// Keeps a sequence in the carried settings.
inline void keep(std::uint32_t command, std::string_view sequence) {
  keep_setting(the_filter().carried, command, bytes_of(sequence));
}

inline void end_job() {
  end_page_data(the_filter().page);
}

/// Bytes without FF that show where they stand.
inline std::string pattern(std::size_t count) {
  std::string text(count, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    text[i] = static_cast<char>(' ' + i % 89);
  }
  return text;
}

/// The payloads of all data blocks of an output that consists of whole blocks, and their kinds.
struct DataBlocks {
  std::string kinds;
  std::string data;
};

inline DataBlocks data_blocks(std::string_view output) {
  DataBlocks blocks;
  while (output.size() >= 16) {
    const bool counts_its_header = output.substr(14, 2) == "/a";
    const std::size_t count = std::stoul(std::string(output.substr(4, 10)));
    const std::size_t payload = counts_its_header ? count - 12 : count;
    if (counts_its_header && (output[2] == '0' || output[2] == '2')) {
      blocks.kinds += output[2];
      blocks.data += output.substr(16, payload);
    }
    output.remove_prefix(std::min(output.size(), 16 + payload));
  }
  EXPECT_EQ(output, "");
  return blocks;
}

}  // namespace rlx::testing
