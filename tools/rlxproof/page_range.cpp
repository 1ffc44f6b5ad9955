#include "rlxproof/page_range.h"

#include <charconv>

namespace rlx::proof {

namespace {

/// @return nothing unless all of the text is a number from 1 up.
std::optional<std::uint64_t> page_number(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool good = error == std::errc() && end == text.data() + text.size() && number != 0;
  return good ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<PageRange> parse_page_range(std::string_view text) {
  const std::size_t hyphen = text.find('-');
  if (hyphen == std::string_view::npos) {
    const auto page = page_number(text);
    return page ? std::optional(PageRange{*page, *page}) : std::nullopt;
  }
  const std::string_view first_text = text.substr(0, hyphen);
  const std::string_view last_text = text.substr(hyphen + 1);
  PageRange range;
  const auto first = first_text.empty() ? std::optional(range.first) : page_number(first_text);
  const auto last = last_text.empty() ? std::optional(range.last) : page_number(last_text);
  if (text.size() == 1 || !first || !last || *first > *last) {
    return std::nullopt;
  }
  return PageRange{*first, *last};
}

}  // namespace rlx::proof
