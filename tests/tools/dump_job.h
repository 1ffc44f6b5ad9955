#pragma once

#include <string>
#include <string_view>

namespace rlx::testing {

/// What rlxdump writes about a stream.
std::string text_dump(std::string_view stream);
/// The same with --json.
std::string json_dump(std::string_view stream);
/// The same with --pages.
std::string page_list(std::string_view stream);

/// The stream that a JSON dump tells of.
std::string rebuilt_from_json(std::string_view dump);

}  // namespace rlx::testing
