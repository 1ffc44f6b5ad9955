#include "support/columns.h"

#include <algorithm>
#include <string_view>

#include "support/number.h"

namespace rlx {

std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width) {
  const std::string_view text(reinterpret_cast<const char*>(record.bytes.data()),
                              static_cast<std::size_t>(record.length));
  return decimal_value(text.substr(std::min(position, text.size()), width));
}

}  // namespace rlx
