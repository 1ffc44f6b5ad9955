#include "rlx-printer-app/web/paging.h"

#include <algorithm>

#include "rlx-printer-app/web/html.h"

namespace rlx::printer_app {

namespace {

/// So many neighbours on each side have a link.
constexpr std::size_t kNeighbours = 2;

}  // namespace

Portion portion_of(std::size_t entries, std::size_t at_once, std::size_t wanted) {
  Portion portion;
  portion.portions = std::max<std::size_t>((entries + at_once - 1) / at_once, 1);
  portion.number = std::clamp<std::size_t>(wanted, 1, portion.portions);
  portion.first = (portion.number - 1) * at_once;
  portion.end = std::min(portion.first + at_once, entries);
  return portion;
}

std::string portion_links(const Portion& portion, const std::string& link) {
  if (portion.portions == 1) {
    return {};
  }
  std::string html = "<p class=\"rlx-pager\">";
  bool is_gap = false;
  for (std::size_t i = 1; i <= portion.portions; ++i) {
    const std::string number = std::to_string(i);
    const bool is_near = i + kNeighbours >= portion.number && i <= portion.number + kNeighbours;
    if (i == portion.number) {
      html += "<b>" + number + "</b> ";
    } else if (is_near || i == 1 || i == portion.portions) {
      html.append("<a href=\"").append(escaped(link + number)).append("\">");
      html.append(number).append("</a> ");
    } else if (!is_gap) {
      html += "… ";
    }
    is_gap = i != portion.number && !is_near && i != 1 && i != portion.portions;
  }
  return html + "</p>\n";
}

}  // namespace rlx::printer_app
