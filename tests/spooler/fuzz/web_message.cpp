#include "spooler/fuzz/web_message.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

namespace rlx::testing {

namespace {

constexpr const char* kUrlEncoded = "application/x-www-form-urlencoded";

struct Field {
  std::string name;
  std::string value;
  std::string file_name{};
  bool is_file = false;
};

std::string coded(const std::string& text, bool all) {
  std::string result;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (!all && (std::isalnum(code) != 0 || byte == '-' || byte == '_')) {
      result += byte;
    } else {
      std::array<char, 8> digits{};
      std::snprintf(digits.data(), digits.size(), "%%%02X", code);
      result += digits.data();
    }
  }
  return result;
}

std::string form_name(Chance& chance) {
  constexpr std::array<std::string_view, 7> kNames{"INVOICE", "NEW",         "A-B_c", "none",
                                                   "X.new",   "INVOICE.new", "-n"};
  switch (chance.below(4)) {
    case 0:
      return path_out(chance);
    case 1:
      return odd_text(chance);
    case 2:
      return "F" + std::to_string(chance.below(40));
    default:
      return std::string(chance.of(kNames));
  }
}

std::string form_text(Chance& chance) {
  std::string text =
      "# a form\nprint 4 79200\nlpi 1200 12\nlpi  900 36\nlpi 1800  6\nlpi 1200 18\n";
  switch (chance.below(6)) {
    case 0:
      return odd_text(chance);
    case 1:
      spoil(text, chance);
      return text;
    case 2:
      return text + std::string(chance.below(70000), '#');
    case 3:
      return chance.bytes(chance.below(4000));
    default:
      return text;
  }
}

std::string trial_text(Chance& chance) {
  switch (chance.below(5)) {
    case 0:
      return odd_text(chance);
    case 1:
      return chance.bytes(chance.below(4000));
    case 2:
      return std::string(chance.below(200), '\f');
    case 3: {
      std::string job = "\033Q1;2;3;4;5/~12345A\n\346\227\245\346\234\254\nC\nD\n\fE\f";
      spoil(job, chance);
      return job;
    }
    default:
      return "ONE\nTWO\n\fTHREE\f";
  }
}

std::string urlencoded(const std::vector<Field>& fields, Chance& chance) {
  std::string body;
  for (const Field& field : fields) {
    body += (body.empty() ? "" : "&") + coded(field.name, false) + '=' +
            coded(field.value, chance.once_in(5));
  }
  return body;
}

std::string multipart(const std::vector<Field>& fields, const std::string& boundary) {
  std::string body;
  for (const Field& field : fields) {
    body += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + field.name + '"';
    if (field.is_file) {
      body += "; filename=\"" + field.file_name + "\"\r\nContent-Type: application/octet-stream";
    }
    body += "\r\n\r\n" + field.value + "\r\n";
  }
  return body + "--" + boundary + "--\r\n";
}

/// Puts something wrong into the fields.
void spoil(std::vector<Field>& fields, Chance& chance) {
  const std::size_t at = chance.below(fields.size());
  switch (chance.below(6)) {
    case 0:
      fields.erase(fields.begin() + static_cast<std::ptrdiff_t>(at));
      break;
    case 1:
      fields[at].value = odd_text(chance);
      break;
    case 2:
      fields[at].name = odd_text(chance);
      break;
    case 3:
      fields.insert(fields.end(), chance.below(200), fields[at]);
      break;
    case 4:
      fields[at].is_file = true;
      fields[at].file_name = form_name(chance);
      break;
    default:
      fields[at].value.append(chance.below(1300000), 'z');
      break;
  }
}

WebMessage post(const std::string& path, std::vector<Field> fields, Chance& chance) {
  if (chance.once_in(3)) {
    spoil(fields, chance);
  }
  WebMessage message{"POST", path, kUrlEncoded, {}};
  if (chance.once_in(2)) {
    message.body = urlencoded(fields, chance);
  } else {
    const std::string boundary = chance.once_in(8) ? odd_text(chance) : "fuzz5e11f";
    message.type = "multipart/form-data; boundary=" +
                   (chance.once_in(8) ? odd_text(chance).substr(0, 100) : boundary);
    message.body = multipart(fields, boundary);
  }
  if (chance.once_in(4)) {
    spoil(message.body, chance);
  }
  if (chance.once_in(30)) {
    message.type = odd_text(chance).substr(0, 200);
  }
  return message;
}

std::vector<Field> token(const WebPlaces& places, Chance& chance) {
  return {{"session", chance.once_in(12) ? odd_text(chance) : places.token}};
}

void add_file(std::vector<Field>& fields, const std::string& content, Chance& chance) {
  fields.push_back({"file", chance.once_in(2) ? content : "", form_name(chance), true});
}

WebMessage store_form(const WebPlaces& places, Chance& chance) {
  std::vector<Field> fields = token(places, chance);
  fields.push_back({"name", chance.once_in(5) ? "" : form_name(chance)});
  fields.push_back({"text", form_text(chance)});
  add_file(fields, form_text(chance), chance);
  if (!chance.once_in(3)) {
    fields.push_back({"replace", "1"});
  }
  return post("/forms/change", fields, chance);
}

WebMessage delete_form(const WebPlaces& places, Chance& chance) {
  std::vector<Field> fields = token(places, chance);
  fields.push_back({"name", form_name(chance)});
  return post("/forms/delete", fields, chance);
}

WebMessage try_form(const WebPlaces& places, Chance& chance) {
  constexpr std::array<std::string_view, 4> kKinds{"rlx-240", "rlx-400", "rlx-mode-7", "nosuch"};
  constexpr std::array<std::string_view, 4> kCharsets{"utf-8", "shift_jis", "iso-2022-jp", "x"};
  std::vector<Field> fields = token(places, chance);
  fields.push_back({"kind", std::string(chance.of(kKinds))});
  fields.push_back({"form", chance.once_in(3) ? form_name(chance) : ""});
  fields.push_back({"charset", std::string(chance.of(kCharsets))});
  fields.push_back({"text", trial_text(chance)});
  add_file(fields, trial_text(chance), chance);
  return post("/try", fields, chance);
}

WebMessage cancel_job(const WebPlaces& places, Chance& chance) {
  std::vector<Field> fields = token(places, chance);
  fields.push_back({"of", std::to_string(1 + chance.below(3)) + '-' +
                              std::to_string(chance.below(places.jobs + 3))});
  return post("/proofs/cancel", fields, chance);
}

/// To PAPPL's own page of jobs.
WebMessage press_a_button(const WebPlaces& places, Chance& chance) {
  constexpr std::array<std::string_view, 4> kActions{"hold-job", "release-job", "cancel-job",
                                                     "nothing"};
  std::vector<Field> fields = token(places, chance);
  fields.push_back({"action", std::string(chance.of(kActions))});
  fields.push_back({"job-id", std::to_string(chance.below(places.jobs + 3))});
  if (chance.once_in(3)) {
    spoil(fields, chance);
  }
  return post("/office/jobs", fields, chance);
}

std::string of_proof(const WebPlaces& places, Chance& chance) {
  switch (chance.below(5)) {
    case 0:
      return odd_text(chance);
    case 1:
      return "2-" + std::to_string(chance.below(places.jobs + 3));
    case 2:
      return places.trial;
    case 3: {
      std::string name = places.trial + "1-2";
      spoil(name, chance);
      return name;
    }
    default: {
      const std::size_t back = chance.below(20);
      return "1-" + std::to_string(places.jobs > back ? places.jobs - back : 1);
    }
  }
}

std::string number(Chance& chance) {
  constexpr std::array<std::string_view, 8> kNumbers{
      "1", "2", "0", "-1", "999999", "4294967296", "99999999999999999999", "1x"};
  return std::string(chance.of(kNumbers));
}

WebMessage get(const WebPlaces& places, Chance& chance) {
  constexpr std::array<std::string_view, 22> kPaths{"/forms",         "/forms/form",
                                                    "/forms/picture", "/forms/change",
                                                    "/forms/delete",  "/proofs",
                                                    "/proofs/job",    "/proofs/page",
                                                    "/proofs/dump",   "/proofs/picture",
                                                    "/proofs/job",    "/try",
                                                    "/try",           "/",
                                                    "/office",        "/office/jobs",
                                                    "/office/media",  "/office/printing",
                                                    "/rlx.css",       "/rlx-ja.strings",
                                                    "/office/config", "/nosuch"};
  WebMessage message{chance.once_in(20) ? "HEAD" : "GET", std::string(chance.of(kPaths)), {}, {}};
  std::vector<Field> fields{{"name", form_name(chance)}, {"of", of_proof(places, chance)},
                            {"page", number(chance)},    {"sheet", number(chance)},
                            {"part", number(chance)},    {"printer", number(chance)},
                            {"form", form_name(chance)}};
  if (chance.once_in(4)) {
    spoil(fields, chance);
  }
  message.path += '?' + urlencoded(fields, chance).substr(0, 6000);
  if (chance.once_in(4)) {
    message.path = path_out(chance).insert(0, chance.once_in(2) ? "/forms/" : "/");
  }
  if (chance.once_in(4)) {
    spoil(message.path, chance);
  }
  return message;
}

}  // namespace

WebMessage web_message(const WebPlaces& places, Chance& chance) {
  switch (chance.below(10)) {
    case 0:
    case 1:
      return store_form(places, chance);
    case 2:
      return delete_form(places, chance);
    case 3:
    case 4:
      return try_form(places, chance);
    case 5:
      return chance.once_in(2) ? press_a_button(places, chance) : cancel_job(places, chance);
    default:
      return get(places, chance);
  }
}

}  // namespace rlx::testing
