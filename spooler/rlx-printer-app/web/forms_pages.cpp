#include <algorithm>

#include "mapping/words.h"
#include "rlx-printer-app/web/html.h"
#include "rlx-printer-app/web/pages.h"
#include "rlx-printer-app/web/paging.h"

namespace rlx::printer_app {

namespace {

constexpr std::size_t kFormsAtOnce = 12;
constexpr unsigned kMostPortions = 100000;

std::string button(const Request& request, const char* english, const std::string& path) {
  return "<a class=\"btn\" href=\"" + escaped(path) + "\">" + shown(request, english) + "</a> ";
}

/// "Line 2: lpi: ...", or the words alone.
std::string fault_words(const Request& request, const FormCheck& check) {
  if (check.line == 0) {
    return escaped(check.words);
  }
  return escaped(filled(request.text("Line {0}: {1}"), {std::to_string(check.line), check.words}));
}

std::string picture(const Request& request, const std::string& name) {
  return "<img src=\"/forms/picture?name=" + url_encoded(name) + "\" alt=\"" +
         escaped(filled(request.text("Drawing of the form {0}"), {name})) + "\">";
}

std::string card(const Request& request, const Web& web, const std::string& name) {
  const std::string link = "/forms/form?name=" + url_encoded(name);
  const auto text = web.forms.read(name);
  const FormCheck check =
      text ? web.forms.check(*text) : FormCheck{false, 0, request.text("too long to show"), {}};
  std::string html = "<div class=\"rlx-card\"><a href=\"" + escaped(link) + "\">";
  if (check.is_good) {
    html += "<span class=\"rlx-frame\">" + picture(request, name) + "</span>";
  } else {
    html += "<span class=\"rlx-frame rlx-broken\">!</span>";
  }
  html += "<b>" + escaped(name) + "</b></a>";
  if (!check.is_good) {
    html += "<span class=\"rlx-fault\">" + fault_words(request, check) + "</span>";
  }
  return html + "</div>\n";
}

/// The text of a form with its line numbers; the faulty line is marked.
std::string numbered_lines(const std::string& text, unsigned fault) {
  std::string html = "<pre class=\"rlx-text\">";
  unsigned number = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    ++number;
    const std::string line = "<i>" + std::to_string(number) + "</i>" +
                             escaped(std::string_view(text).substr(start, end - start)) + '\n';
    html += number == fault ? "<mark>" + line + "</mark>" : line;
    start = end + 1;
  }
  return html + "</pre>\n";
}

/// What somebody wants to store.
struct Change {
  std::string name;
  std::string text;
  bool replaces = false;
};

Change read_change(const FormData& form) {
  Change change;
  change.name = form.value("name");
  change.replaces = !form.value("replace").empty();
  const FormField* const file = form.find("file");
  if (file != nullptr && !file->value.empty()) {
    change.text = file->value;
    if (change.name.empty()) {
      change.name = file->file_name;
    }
  } else {
    change.text = with_line_feeds(form.value("text"));
  }
  return change;
}

std::string change_fields(const Request& request, const Change& change) {
  std::string html = request.form_start("/forms/change", true);
  html += "<p><label>" + shown(request, "Name of the form") +
          " <input type=\"text\" name=\"name\" maxlength=\"255\" pattern=\"[A-Za-z0-9_\\-]+\" "
          "value=\"" +
          escaped(change.name) + "\"></label> <span class=\"rlx-hint\">" +
          shown(request, "Letters, digits, - and _.") + "</span></p>\n";
  if (is_plain_text(change.text)) {
    html += "<p><label>" + shown(request, "Text of the form") +
            "<textarea name=\"text\" rows=\"14\" spellcheck=\"false\">\n" + escaped(change.text) +
            "</textarea></label></p>\n";
  } else {
    html += "<p class=\"rlx-hint\">" +
            shown(request, "The text is no UTF-8, so it can only be uploaded as a file.") +
            "</p>\n";
  }
  html += "<p><label>" + shown(request, "Or a file") +
          " <input type=\"file\" name=\"file\"></label></p>\n<p><label><input type=\"checkbox\" "
          "name=\"replace\" value=\"1\"" +
          (change.replaces ? " checked" : "") + "> " +
          shown(request, "Replace the form of this name, if there is one") + "</label></p>\n" +
          "<p><input type=\"submit\" value=\"" + shown(request, "Check and store") + "\"> " +
          button(request, "Back", "/forms") + "</p></form>\n";
  return html;
}

bool send_change_page(Request& request, const Change& change, const std::string& faults) {
  std::string html = "<h1 class=\"title\">" + shown(request, "Add or change a form") + "</h1>\n";
  html += faults + change_fields(request, change);
  return request.send_page("Add or change a form", html);
}

/// Why a change cannot be stored, as HTML; empty when it can.
std::string fault_of(const Request& request, const Web& web, const Change& change) {
  const auto sentence = [&request](const char* english) {
    return "<p class=\"rlx-fault\">" + shown(request, english) + "</p>\n";
  };
  if (!is_storable_name(change.name)) {
    return sentence("A form's name has letters, digits, - and _, at most 255. Nothing was stored.");
  }
  if (change.text.size() > FormStore::kMostBytes) {
    return sentence("The form is longer than 64 kilobytes. Nothing was stored.");
  }
  const auto names = web.forms.names();
  if (!change.replaces && std::find(names.begin(), names.end(), change.name) != names.end()) {
    return sentence("There is a form of this name. Nothing was stored.");
  }
  const FormCheck check = web.forms.check(change.text);
  if (check.is_good) {
    return {};
  }
  return "<p class=\"rlx-fault\">" + fault_words(request, check) + "<br>" +
         shown(request, "The form has a fault. Nothing was stored.") + "</p>\n" +
         numbered_lines(change.text, check.line);
}

bool store(Request& request, const Web& web) {
  if (!request.read_form()) {
    return false;
  }
  const Change change = read_change(request.form());
  if (!request.take_place()) {
    return send_busy(request, "/forms");
  }
  std::string fault = fault_of(request, web, change);
  if (fault.empty()) {
    const std::string error = web.forms.write(change.name, change.text);
    if (error.empty()) {
      return request.redirect("/forms/form?name=" + url_encoded(change.name));
    }
    fault = "<p class=\"rlx-fault\">" + escaped(error) + "</p>\n";
  }
  return send_change_page(request, change, fault);
}

}  // namespace

bool forms_page(Request& request, Web& web) {
  if (!request.take_place()) {
    return send_busy(request, "/");
  }
  const auto names = web.forms.names();
  const Portion portion =
      portion_of(names.size(), kFormsAtOnce, request.number("part", kMostPortions));
  std::string html = "<h1 class=\"title\">" + shown(request, "Forms") + " " +
                     button(request, "Add a form", "/forms/change") + "</h1>\n";
  if (names.empty()) {
    html += "<p>" + shown(request, "There is no form yet.") + "</p>\n";
  }
  html += "<div class=\"rlx-grid\">\n";
  for (std::size_t i = portion.first; i < portion.end; ++i) {
    html += card(request, web, names[i]);
  }
  html += "</div>\n" + portion_links(portion, "/forms?part=");
  return request.send_page("Forms", html);
}

bool form_page(Request& request, Web& web) {
  const std::string name = request.query("name");
  const auto text = web.forms.read(name);
  if (!text) {
    return request.send_words(request.text("There is no such form."), "/forms");
  }
  if (!request.take_place()) {
    return send_busy(request, "/forms");
  }
  const FormCheck check = web.forms.check(*text);
  const std::string query = "?name=" + url_encoded(name);
  std::string html = "<h1 class=\"title\">" + escaped(name) + "</h1>\n<p>" +
                     button(request, "Change", "/forms/change" + query) +
                     button(request, "Try it", "/try?form=" + url_encoded(name)) +
                     button(request, "Delete this form", "/forms/delete" + query) +
                     button(request, "Back", "/forms") + "</p>\n";
  if (!check.is_good) {
    html += "<p class=\"rlx-fault\">" + fault_words(request, check) + "</p>\n";
  }
  html += "<div class=\"rlx-two\">\n<div>";
  if (check.is_good) {
    html += "<span class=\"rlx-large\">" + picture(request, name) + "</span>";
  }
  html += "</div>\n<div><h2>" + shown(request, "Text of the form") + "</h2>\n" +
          numbered_lines(*text, check.line) + "</div></div>\n";
  return request.send_page("Forms", html);
}

bool form_picture(Request& request, Web& web) {
  if (!request.take_place()) {
    return request.send_status(HTTP_STATUS_SERVICE_UNAVAILABLE);
  }
  const FormCheck check = web.forms.draw(request.query("name"));
  return check.is_good ? request.send_bytes("image/svg+xml", check.svg)
                       : request.send_status(HTTP_STATUS_NOT_FOUND);
}

bool change_form_page(Request& request, Web& web) {
  if (!request.is_authorized()) {
    return true;
  }
  if (request.is_post()) {
    return store(request, web);
  }
  Change change;
  if (const auto text = web.forms.read(request.query("name")); text) {
    change = {request.query("name"), *text, true};
  }
  return send_change_page(request, change, {});
}

bool delete_form_page(Request& request, Web& web) {
  if (!request.is_authorized()) {
    return true;
  }
  if (request.is_post()) {
    if (!request.read_form()) {
      return false;
    }
    const std::string error = web.forms.remove(request.form().value("name"));
    return error.empty() ? request.redirect("/forms") : request.send_words(error, "/forms");
  }
  const std::string name = request.query("name");
  if (!web.forms.read(name)) {
    return request.redirect("/forms");
  }
  const std::string question =
      filled(request.text("Delete the form {0}? Jobs that ask for it will fail."), {name});
  return request.send_page(
      "Delete this form",
      "<h1 class=\"title\">" + shown(request, "Delete this form") + "</h1>\n<p>" +
          escaped(question) + "</p>\n" + request.form_start("/forms/delete", false) +
          "<input type=\"hidden\" name=\"name\" value=\"" + escaped(name) +
          "\"><input type=\"submit\" value=\"" + shown(request, "Delete this form") + "\"> " +
          button(request, "Back", "/forms/form?name=" + url_encoded(name)) + "</form>\n");
}

}  // namespace rlx::printer_app
