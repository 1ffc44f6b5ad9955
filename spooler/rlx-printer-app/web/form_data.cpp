#include "rlx-printer-app/web/form_data.h"

#include <algorithm>

#include "mapping/words.h"

namespace rlx::printer_app {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

int hex_value(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  if (digit >= 'a' && digit <= 'f') {
    return digit - 'a' + 10;
  }
  return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

std::string url_decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_coded = text[i] == '%' && text.size() - i >= 3 && hex_value(text[i + 1]) >= 0 &&
                          hex_value(text[i + 2]) >= 0;
    if (is_coded) {
      result += static_cast<char>(hex_value(text[i + 1]) * 16 + hex_value(text[i + 2]));
      i += 2;
    } else {
      result += text[i] == '+' ? ' ' : text[i];
    }
  }
  return result;
}

/// Takes what stands in front of a separator, and the separator. Without one it is all of the text.
std::string_view take_until(std::string_view& text, std::string_view separator) {
  const std::size_t end = text.find(separator);
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
  return piece;
}

bool begins_with_word(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && spooler::same_word(text.substr(0, word.size()), word);
}

/// The value behind a parameter's "=", quoted or not; empty without one.
std::string_view take_value(std::string_view& header) {
  if (header.starts_with("=\"")) {
    header.remove_prefix(2);
    const std::string_view value = take_until(header, "\"");
    take_until(header, ";");
    return value;
  }
  const std::string_view rest = take_until(header, ";");
  return rest.starts_with('=') ? rest.substr(1) : std::string_view();
}

/// A parameter of a header, such as name="x"; empty when it is not there.
std::string parameter(std::string_view header, std::string_view name) {
  take_until(header, ";");
  while (!header.empty()) {
    header.remove_prefix(std::min(header.find_first_not_of(' '), header.size()));
    const std::string_view key = header.substr(0, header.find_first_of("=;"));
    header.remove_prefix(key.size());
    const std::string_view value = take_value(header);
    if (spooler::same_word(key, name)) {
      return std::string(value);
    }
  }
  return {};
}

/// Some browsers send folders, too.
std::string without_folders(const std::string& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

/// Reads the headers of a part, to the empty line behind them.
/// @return false when they do not end, or do not name a field.
bool read_headers(std::string_view& part, FormField& field) {
  while (part.find(kLineEnd) != std::string_view::npos) {
    const std::string_view line = take_until(part, kLineEnd);
    if (line.empty()) {
      return !field.name.empty();
    }
    if (begins_with_word(line, "Content-Disposition:")) {
      field.name = parameter(line, "name");
      field.file_name = without_folders(parameter(line, "filename"));
    }
  }
  return false;
}

std::optional<std::vector<FormField>> read_parts(std::string_view body,
                                                 const std::string& boundary) {
  const std::string first = "--" + boundary;
  const std::string next = "\r\n--" + boundary;
  std::vector<FormField> fields;
  if (!body.starts_with(first)) {
    return std::nullopt;
  }
  body.remove_prefix(first.size());
  while (body.starts_with(kLineEnd)) {
    body.remove_prefix(kLineEnd.size());
    const std::size_t end = body.find(next);
    if (end == std::string_view::npos || fields.size() == FormData::kMostFields) {
      return std::nullopt;
    }
    std::string_view part = body.substr(0, end);
    FormField field;
    if (!read_headers(part, field)) {
      return std::nullopt;
    }
    field.value = part;
    fields.push_back(std::move(field));
    body.remove_prefix(end + next.size());
  }
  return body.starts_with("--") ? std::optional(fields) : std::nullopt;
}

}  // namespace

FormData FormData::from_query(std::string_view text) {
  FormData data;
  while (!text.empty() && data.fields_.size() < kMostFields) {
    std::string_view field = take_until(text, "&");
    const std::string_view name = take_until(field, "=");
    data.fields_.push_back({url_decoded(name), {}, url_decoded(field)});
  }
  return data;
}

std::optional<FormData> FormData::from_body(std::string_view content_type, std::string_view body) {
  if (begins_with_word(content_type, "application/x-www-form-urlencoded")) {
    return from_query(body);
  }
  const std::string boundary = parameter(content_type, "boundary");
  if (!begins_with_word(content_type, "multipart/form-data") || boundary.empty()) {
    return std::nullopt;
  }
  auto fields = read_parts(body, boundary);
  if (!fields) {
    return std::nullopt;
  }
  FormData data;
  data.fields_ = std::move(*fields);
  return data;
}

const FormField* FormData::find(std::string_view name) const {
  const auto found = std::find_if(fields_.begin(), fields_.end(),
                                  [name](const FormField& field) { return field.name == name; });
  return found == fields_.end() ? nullptr : &*found;
}

std::string FormData::value(std::string_view name) const {
  const FormField* const field = find(name);
  return field == nullptr ? std::string() : field->value;
}

}  // namespace rlx::printer_app
