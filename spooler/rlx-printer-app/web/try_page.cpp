#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "mapping/job_settings.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/web/html.h"
#include "rlx-printer-app/web/pages.h"
#include "rlx-printer-app/web/proof_name.h"

namespace rlx::printer_app {

namespace {

constexpr std::array<const char*, 5> kCharsets{"utf-8", "euc-jp", "shift_jis", "iso-2022-jp",
                                               "iso-8859-1"};
/// So much text is shown again beside its proof.
constexpr std::size_t kMostShownText = 65536;

/// What is to be tried.
struct Trial {
  std::string kind;
  std::string form;
  std::string charset;
  std::string text;
};

std::string choice(const std::string& value, const std::string& label, bool is_chosen) {
  return "<option value=\"" + escaped(value) + "\"" + (is_chosen ? " selected" : "") + ">" +
         escaped(label) + "</option>";
}

std::string selection(const Request& request, const char* label, const char* name,
                      const std::string& choices) {
  return "<label>" + shown(request, label) + " <select name=\"" + name + "\">" + choices +
         "</select></label>\n";
}

std::string trial_fields(const Request& request, const Web& web, const Trial& trial) {
  std::string forms = choice("", request.text("No form"), trial.form.empty());
  for (const std::string& name : web.forms.names()) {
    forms += choice(name, name, name == trial.form);
  }
  std::string kinds;
  for (const PrinterKind& kind : printer_kinds()) {
    kinds += choice(kind.name, kind.description, trial.kind == kind.name);
  }
  std::string charsets;
  for (const char* const charset : kCharsets) {
    charsets += choice(charset, charset, trial.charset == charset);
  }
  return request.form_start("/try", true) + "<p class=\"rlx-row\">" +
         selection(request, "Form", "form", forms) +
         selection(request, "Kind of printer", "kind", kinds) + "</p>\n<p><label>" +
         shown(request, "Text") + "<textarea name=\"text\" rows=\"12\" spellcheck=\"false\">\n" +
         escaped(trial.text) + "</textarea></label></p>\n<p class=\"rlx-row\"><label>" +
         shown(request, "Or a file") + " <input type=\"file\" name=\"file\"></label>\n" +
         selection(request, "Encoding of the file", "charset", charsets) +
         "</p>\n<p><input type=\"submit\" value=\"" + shown(request, "Show the proof") +
         "\"></p></form>\n";
}

/// A file in memory, at its beginning.
spooler::Descriptor file_of(const std::string& text) {
  spooler::Descriptor file(memfd_create("trial", MFD_CLOEXEC));
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  if (!file.is_open() || spooler::write_all(file.number(), {bytes, text.size()}) != 0 ||
      lseek(file.number(), 0, SEEK_SET) != 0) {
    throw std::system_error(errno, std::generic_category(), "the text");
  }
  return file;
}

Trial read_trial(const FormData& form) {
  Trial trial{form.value("kind"), form.value("form"), "utf-8", with_line_feeds(form.value("text"))};
  const FormField* const file = form.find("file");
  if (file != nullptr && !file->value.empty()) {
    trial.text = file->value;
    trial.charset = form.value("charset");
  }
  return trial;
}

/// A proof keeps what was tried in one text: three lines, and the text behind them.
std::string kept_text(const Trial& trial) {
  const bool can_be_shown = trial.text.size() <= kMostShownText && is_plain_text(trial.text);
  return trial.kind + '\n' + trial.form + '\n' + trial.charset + '\n' +
         (can_be_shown ? trial.text : std::string());
}

Trial kept_trial(std::string kept) {
  const auto take_line = [&kept] {
    std::string line = kept.substr(0, kept.find('\n'));
    kept.erase(0, line.size() + 1);
    return line;
  };
  Trial trial;
  trial.kind = take_line();
  trial.form = take_line();
  trial.charset = take_line();
  trial.text = kept;
  return trial;
}

/// The job of a trial. @return false when it has what no page of ours offers.
bool describe(const Trial& trial, const Web& web, spooler::PrintJob& job) {
  const PrinterKind* const kind = find_printer_kind(trial.kind);
  const bool is_charset =
      std::find(kCharsets.begin(), kCharsets.end(), trial.charset) != kCharsets.end();
  if (kind == nullptr || !is_charset || (!trial.form.empty() && !is_storable_name(trial.form))) {
    return false;
  }
  job.queue = queue_settings(*kind, kind->resolutions.front(), web.application.form_folder);
  job.settings.form = trial.form;
  // UTF-8 needs no conversion, and may hold commands then.
  job.settings.charset = trial.charset == "utf-8" ? "" : trial.charset;
  job.filter = web.application.filter;
  job.form_checker = web.application.form_checker;
  return true;
}

bool make_trial(Request& request, Web& web) {
  if (!request.read_form()) {
    return false;
  }
  const Trial trial = read_trial(request.form());
  spooler::PrintJob job;
  if (!describe(trial, web, job)) {
    return request.send_status(HTTP_STATUS_BAD_REQUEST);
  }
  if (!request.take_place()) {
    return send_busy(request, "/try");
  }
  const spooler::Descriptor file = file_of(trial.text);
  job.input = file.number();
  const std::string name = new_trial_name();
  web.proofs.make(name, job, kept_text(trial));
  return request.redirect("/try?of=" + name);
}

}  // namespace

bool try_page(Request& request, Web& web) {
  if (request.is_post()) {
    return make_trial(request, web);
  }
  if (!request.take_place()) {
    return send_busy(request, "/");
  }
  Trial trial{printer_kinds().front().name, request.query("form"), "utf-8", {}};
  ProofName name;
  std::string pictures;
  if (name.read(request.query("of")) && !name.trial.empty()) {
    const auto proof = web.proofs.find(name.trial);
    if (!proof) {
      return request.send_words(request.text("This proof is no longer kept."), "/try");
    }
    trial = kept_trial(proof->text);
    pictures = proof_pictures(request, web, *proof, name.trial, "/try?of=" + name.trial + "&part=");
    for (const std::string& command : proof->commands) {
      pictures +=
          "<p>" + shown(request, "Command line") + ": <code>" + escaped(command) + "</code></p>\n";
    }
  }
  return request.send_page(
      "Try a form", "<h1 class=\"title\">" + shown(request, "Try a form") + "</h1>\n<p>" +
                        shown(request, "Nothing is printed: you see what would be.") + "</p>\n" +
                        trial_fields(request, web, trial) + pictures);
}

}  // namespace rlx::printer_app
