#include "rlx-printer-app/web/html.h"
#include "rlx-printer-app/web/pages.h"
#include "rlx-printer-app/web/paging.h"

namespace rlx::printer_app {

namespace {

constexpr unsigned kPagesAtOnce = 8;
constexpr unsigned kMostPortions = 1000000;

std::string thumbnail(const Request& request, const std::string& of, const Sheet& sheet) {
  const std::string page = std::to_string(sheet.page);
  const std::string words = filled(request.text("Page {0}"), {page});
  return "<div class=\"rlx-card\"><a href=\"" + escaped("/proofs/page?of=" + of + "&page=" + page) +
         "\"><span class=\"rlx-frame\"><img alt=\"" + escaped(words) + "\" src=\"" +
         escaped("/proofs/picture?of=" + of + "&page=" + page +
                 "&sheet=" + std::to_string(sheet.sheet)) +
         "\"></span><b>" + escaped(words) + "</b></a></div>\n";
}

}  // namespace

std::string shown(const Request& request, const char* english) {
  return escaped(request.text(english));
}

std::string fact_row(const Request& request, const char* name, const std::string& value) {
  return "<tr><th>" + shown(request, name) + "</th><td>" + value + "</td></tr>\n";
}

bool send_busy(Request& request, const std::string& back) {
  return request.send_words(
      request.text("Too many pictures are being drawn. Please try again in a moment."), back);
}

std::string proof_pictures(const Request& request, Web& web, const Proof& proof,
                           const std::string& of, const std::string& here) {
  std::string html = "<h2>" + shown(request, "Proof") + " <span class=\"rlx-name\">" +
                     escaped(filled(request.text("Pages: {0}"), {std::to_string(proof.pages)})) +
                     "</span> <a class=\"btn\" href=\"" + escaped("/proofs/dump?of=" + of) + "\">" +
                     shown(request, "What the printer gets") + "</a></h2>\n";
  if (!proof.words.empty()) {
    html += "<p class=\"rlx-fault\">" + escaped(proof.words) + "</p>\n";
  }
  if (proof.is_cut) {
    html += "<p class=\"rlx-hint\">" +
            shown(request, "The job is long. The proof shows its beginning.") + "</p>\n";
  }
  const Portion portion =
      portion_of(proof.pages, kPagesAtOnce, request.number("part", kMostPortions));
  std::string words;
  const auto sheets = web.proofs.draw(proof, static_cast<unsigned>(portion.first) + 1,
                                      static_cast<unsigned>(portion.end), words);
  html += "<div class=\"rlx-grid\">\n";
  for (const Sheet& sheet : sheets) {
    html += thumbnail(request, of, sheet);
  }
  html += "</div>\n" + portion_links(portion, here);
  if (!words.empty()) {
    html += "<pre class=\"rlx-text\">" + escaped(words) + "</pre>\n";
  }
  return html;
}

}  // namespace rlx::printer_app
