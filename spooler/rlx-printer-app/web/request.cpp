#include "rlx-printer-app/web/request.h"

#include <array>

#include "mapping/words.h"
#include "rlx-printer-app/web/client_form.h"
#include "rlx-printer-app/web/html.h"

namespace rlx::printer_app {

namespace {

FormData query_of(pappl_client_t* client) {
  const char* const options = papplClientGetOptions(client);
  return FormData::from_query(options == nullptr ? "" : options);
}

}  // namespace

Request::Request(pappl_client_t* client) : client_(client), query_(query_of(client)) {}

unsigned Request::number(std::string_view name, unsigned most) const {
  return spooler::whole_number(query(name), most).value_or(0);
}

bool Request::read_form() {
  http_t* const http = papplClientGetHTTP(client_);
  const std::string type = httpGetField(http, HTTP_FIELD_CONTENT_TYPE);
  std::string body;
  if (!read_body(http, kMostBodyBytes, body)) {
    send_status(HTTP_STATUS_REQUEST_TOO_LARGE);
    return false;
  }
  auto form = FormData::from_body(type, body);
  if (!form) {
    send_status(HTTP_STATUS_BAD_REQUEST);
    return false;
  }
  form_ = std::move(*form);
  cups_option_t* token = nullptr;
  const int count = cupsAddOption("session", form_.value("session").c_str(), 0, &token);
  const bool is_ours = papplClientIsValidForm(client_, count, token);
  cupsFreeOptions(count, token);
  if (!is_ours) {
    send_status(HTTP_STATUS_FORBIDDEN);
  }
  return is_ours;
}

std::string Request::form_start(const std::string& action, bool has_file) const {
  std::array<char, 256> token{};
  papplClientGetCSRFToken(client_, token.data(), token.size());
  return "<form class=\"rlx\" method=\"POST\" action=\"" + escaped(action) + "\"" +
         (has_file ? " enctype=\"multipart/form-data\"" : "") +
         "><input type=\"hidden\" name=\"session\" value=\"" + escaped(token.data()) + "\">\n";
}

bool Request::take_place() {
  place_.emplace();
  if (!place_->is_there()) {
    place_.reset();
  }
  return place_.has_value();
}

bool Request::send_page(const char* title, const std::string& content) {
  place_.reset();
  if (!papplClientRespond(client_, HTTP_STATUS_OK, nullptr, "text/html", 0, 0)) {
    return false;
  }
  papplClientHTMLHeader(client_, title, 0);
  const std::string page =
      "<link rel=\"stylesheet\" href=\"/rlx.css\">\n<div class=\"content rlx\" lang=\"" +
      std::string(text("rlx-language")).substr(0, 2) +
      "\"><div class=\"row\"><div class=\"col-12\">\n" + content + "\n</div></div></div>\n";
  papplClientHTMLPuts(client_, page.c_str());
  papplClientHTMLFooter(client_);
  return true;
}

bool Request::send_words(const std::string& words, const std::string& back) {
  return send_page(nullptr, "<p class=\"rlx-fault\">" + escaped(words) +
                                "</p>\n<p><a class=\"btn\" href=\"" + escaped(back) + "\">" +
                                escaped(text("Back")) + "</a></p>");
}

bool Request::send_bytes(const char* type, const std::string& bytes) {
  place_.reset();
  return papplClientRespond(client_, HTTP_STATUS_OK, nullptr, type, 0, bytes.size()) &&
         httpWrite2(papplClientGetHTTP(client_), bytes.data(), bytes.size()) >= 0 &&
         httpFlushWrite(papplClientGetHTTP(client_)) >= 0;
}

bool Request::send_status(http_status_t status) {
  place_.reset();
  return papplClientRespond(client_, status, nullptr, nullptr, 0, 0);
}

bool Request::redirect(const std::string& path) {
  place_.reset();
  return papplClientRespondRedirect(client_, HTTP_STATUS_SEE_OTHER, path.c_str());
}

}  // namespace rlx::printer_app
