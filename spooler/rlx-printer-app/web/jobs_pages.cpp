#include <fcntl.h>

#include <array>
#include <ctime>

#include "rlx-printer-app/formats.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/web/html.h"
#include "rlx-printer-app/web/job_facts.h"
#include "rlx-printer-app/web/pages.h"
#include "rlx-printer-app/web/paging.h"
#include "rlx-printer-app/web/proof_name.h"

namespace rlx::printer_app {

namespace {

constexpr std::size_t kJobsAtOnce = 20;
constexpr unsigned kMostNumber = 1000000;

const char* state_name(ipp_jstate_t state) {
  switch (state) {
    case IPP_JSTATE_PENDING:
      return "Waiting";
    case IPP_JSTATE_HELD:
      return "Held";
    case IPP_JSTATE_PROCESSING:
    case IPP_JSTATE_STOPPED:
      return "Printing";
    case IPP_JSTATE_CANCELED:
      return "Cancelled";
    case IPP_JSTATE_ABORTED:
      return "Not printed";
    default:
      return "Printed";
  }
}

const char* state_class(ipp_jstate_t state) {
  if (state == IPP_JSTATE_COMPLETED) {
    return "rlx-good";
  }
  return state == IPP_JSTATE_ABORTED ? "rlx-bad" : "rlx-open";
}

std::string state_mark(const Request& request, const JobFacts& job) {
  return std::string("<span class=\"rlx-state ") + state_class(job.state) + "\">" +
         shown(request, state_name(job.state)) + "</span>";
}

std::string time_text(std::time_t time) {
  std::tm parts{};
  std::array<char, 32> text{};
  if (time == 0 || localtime_r(&time, &parts) == nullptr) {
    return {};
  }
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

std::string name_of(const JobFacts& job) {
  return std::to_string(job.printer_id) + '-' + std::to_string(job.id);
}

/// A button that cancels it; empty when it has ended.
std::string cancel_button(const Request& request, const JobFacts& job) {
  if (job.has_ended()) {
    return {};
  }
  return request.form_start("/proofs/cancel", false) +
         "<input type=\"hidden\" name=\"of\" value=\"" + name_of(job) +
         "\"><input type=\"submit\" value=\"" + shown(request, "Cancel this job") + "\"></form>";
}

std::string job_row(const Request& request, const JobFacts& job) {
  const std::string link = "/proofs/job?of=" + name_of(job);
  return "<li><a href=\"" + escaped(link) + "\"><b>" + escaped(job.printer) + ' ' +
         std::to_string(job.id) + "</b> <span class=\"rlx-name\">" + escaped(job.name) +
         "</span></a>" + state_mark(request, job) + "<span>" + escaped(job.user) +
         "</span><span class=\"rlx-pages\">" +
         escaped(filled(request.text("Pages: {0}"), {std::to_string(job.impressions)})) +
         "</span><time>" + time_text(job.created) + "</time>" + cancel_button(request, job) +
         (job.message.empty() ? "" : "<small>" + escaped(job.message) + "</small>") + "</li>\n";
}

/// A proof that somebody may look at, and where it comes from.
struct Shown {
  ProofName name;
  std::string of;
  std::optional<JobFacts> job;
  std::optional<Proof> proof;
  JobRecord record;
  bool has_record = false;
  std::string words;  ///< why there is no proof
};

/// The job as it was printed. @return why that cannot be; null when `print` is filled in.
const char* recall(const Web& web, Shown& shown_proof, spooler::PrintJob& print) {
  const JobFacts& job = *shown_proof.job;
  const PrinterKind* const kind = find_printer_kind(shown_proof.record.kind);
  if (!shown_proof.has_record || kind == nullptr) {
    return job.has_ended() ? "Nothing was kept of this job's run."
                           : "There will be a proof when the job has ended.";
  }
  if (job.document.empty()) {
    return "The document is no longer kept.";
  }
  print.settings = shown_proof.record.settings;
  print.queue = queue_settings(*kind, shown_proof.record.resolution, web.application.form_folder);
  print.in_printer_language = job.format == kPrinterLanguage;
  print.filter = web.application.filter;
  print.form_checker = web.application.form_checker;
  return nullptr;
}

void make_job_proof(const Request& request, Web& web, const std::string& key, Shown& result) {
  spooler::PrintJob print;
  if (const char* const why = recall(web, result, print); why != nullptr) {
    result.words = request.text(why);
    return;
  }
  const spooler::Descriptor document(
      open(result.job->document.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!document.is_open()) {
    result.words = request.text("The document is no longer kept.");
    return;
  }
  print.input = document.number();
  result.proof = web.proofs.make(key, print, {});
}

/// Takes a place, finds what the query names, and makes its proof where there is none.
/// @param is_picture  the answer is to be a picture, not a page.
/// @return false when an answer was sent.
bool find_shown(Request& request, Web& web, Shown& result, bool is_picture = false) {
  result.of = request.query("of");
  if (!result.name.read(result.of)) {
    request.redirect("/proofs");
    return false;
  }
  const bool is_trial = !result.name.trial.empty();
  // The log-in page is sent without a place.
  if (!is_trial && !request.is_authorized()) {
    return false;
  }
  if (!request.take_place()) {
    if (is_picture) {
      request.send_status(HTTP_STATUS_SERVICE_UNAVAILABLE);
    } else {
      send_busy(request, "/proofs");
    }
    return false;
  }
  if (is_trial) {
    result.proof = web.proofs.find(result.name.trial);
  } else {
    result.job = find_job(request.system(), result.name.printer_id, result.name.job_id);
    if (result.job) {
      const std::string key = result.of + '-' + std::to_string(result.job->created);
      result.has_record =
          web.application.records->find(result.job->printer_id, result.job->id, result.record);
      result.proof = web.proofs.find(key);
      if (!result.proof) {
        make_job_proof(request, web, key, result);
      }
    }
  }
  if (!result.job && !result.proof) {
    request.send_words(request.text("There is no such job, or it is no longer kept."), "/proofs");
    return false;
  }
  return true;
}

/// Where the page of a proof is.
std::string home_of(const Shown& proof) {
  return (proof.job ? "/proofs/job?of=" : "/try?of=") + proof.of;
}

std::string facts(const Request& request, const Shown& proof) {
  const JobFacts& job = *proof.job;
  std::string html = "<table class=\"rlx-facts\">\n";
  html += fact_row(request, "State", state_mark(request, job) + cancel_button(request, job));
  if (!job.message.empty()) {
    html += fact_row(request, "Message", escaped(job.message));
  }
  html += fact_row(request, "Document", escaped(job.name));
  html += fact_row(request, "User", escaped(job.user));
  html += fact_row(request, "Format", escaped(job.format));
  html += fact_row(request, "Accepted", time_text(job.created));
  html += fact_row(request, "Ended", time_text(job.ended));
  html += fact_row(request, "Pages printed", std::to_string(job.impressions));
  for (const std::string& command : proof.record.commands) {
    html += fact_row(request, "Command line", "<code>" + escaped(command) + "</code>");
  }
  if (proof.has_record && !proof.record.words.empty() && proof.record.words != job.message) {
    html += fact_row(request, "Messages", escaped(proof.record.words));
  }
  return html + "</table>\n";
}

}  // namespace

bool jobs_page(Request& request, Web& /*web*/) {
  if (!request.is_authorized()) {
    return true;
  }
  const unsigned printer = request.number("printer", kMostNumber);
  const auto jobs = all_jobs(request.system(), printer);
  const Portion portion = portion_of(jobs.size(), kJobsAtOnce, request.number("part", kMostNumber));
  std::string html = "<h1 class=\"title\">" + shown(request, "Jobs with proofs") + "</h1>\n";
  if (jobs.empty()) {
    html += "<p>" + shown(request, "There was no job yet.") + "</p>\n";
  }
  html += "<ul class=\"rlx-jobs\">\n";
  for (std::size_t i = portion.first; i < portion.end; ++i) {
    html += job_row(request, jobs[i]);
  }
  html +=
      "</ul>\n" + portion_links(portion, "/proofs?printer=" + std::to_string(printer) + "&part=");
  return request.send_page("Jobs with proofs", html);
}

bool cancel_page(Request& request, Web& /*web*/) {
  if (!request.is_authorized()) {
    return true;
  }
  if (request.is_post()) {
    if (!request.read_form()) {
      return false;
    }
    if (ProofName name; name.read(request.form().value("of")) && name.trial.empty()) {
      cancel_job(request.system(), name.printer_id, name.job_id);
    }
  }
  return request.redirect("/proofs");
}

bool proof_page(Request& request, Web& web) {
  Shown proof;
  if (!find_shown(request, web, proof)) {
    return true;
  }
  if (!proof.job) {
    return request.redirect(home_of(proof));
  }
  std::string html = "<h1 class=\"title\">" + escaped(proof.job->printer) + ' ' +
                     std::to_string(proof.job->id) + " <span class=\"rlx-name\">" +
                     escaped(proof.job->name) + "</span></h1>\n";
  html += facts(request, proof);
  if (proof.proof) {
    if (proof.proof->words == proof.job->message) {
      proof.proof->words.clear();
    }
    // Of a job that was not printed there may be nothing to see.
    if (proof.proof->pages > 0 || proof.job->state != IPP_JSTATE_ABORTED) {
      html += proof_pictures(request, web, *proof.proof, proof.of, home_of(proof) + "&part=");
    } else if (!proof.proof->words.empty()) {
      html += "<p class=\"rlx-fault\">" + escaped(proof.proof->words) + "</p>\n";
    }
  } else {
    html += "<p class=\"rlx-hint\">" + escaped(proof.words) + "</p>\n";
  }
  html += "<p><a class=\"btn\" href=\"/proofs\">" + shown(request, "All jobs") + "</a></p>\n";
  return request.send_page("Jobs with proofs", html);
}

bool sheet_page(Request& request, Web& web) {
  Shown proof;
  if (!find_shown(request, web, proof)) {
    return true;
  }
  const unsigned page = request.number("page", kMostNumber);
  if (!proof.proof || page == 0 || page > proof.proof->pages) {
    return request.redirect(home_of(proof));
  }
  std::string words;
  const auto sheets = web.proofs.draw(*proof.proof, page, page, words);
  std::string html = "<h1 class=\"title\">" +
                     escaped(filled(request.text("Page {0} of {1}"),
                                    {std::to_string(page), std::to_string(proof.proof->pages)})) +
                     "</h1>\n<p>";
  const std::string here = "/proofs/page?of=" + proof.of + "&page=";
  const auto link = [&request](const char* english, const std::string& path) {
    return "<a class=\"btn\" href=\"" + escaped(path) + "\">" + shown(request, english) + "</a> ";
  };
  if (page > 1) {
    html += link("Page before", here + std::to_string(page - 1));
  }
  if (page < proof.proof->pages) {
    html += link("Next page", here + std::to_string(page + 1));
  }
  html += link("All pages", home_of(proof)) + "</p>\n";
  for (const Sheet& sheet : sheets) {
    html += "<p><img class=\"rlx-sheet\" alt=\"\" src=\"" +
            escaped("/proofs/picture?of=" + proof.of + "&page=" + std::to_string(sheet.page) +
                    "&sheet=" + std::to_string(sheet.sheet)) +
            "\"></p>\n";
  }
  if (sheets.empty()) {
    html += "<p class=\"rlx-fault\">" + escaped(words) + "</p>\n";
  }
  return request.send_page("Jobs with proofs", html);
}

bool sheet_picture(Request& request, Web& web) {
  Shown proof;
  if (!find_shown(request, web, proof, true)) {
    return true;
  }
  const Sheet sheet{request.number("page", kMostNumber), request.number("sheet", kMostNumber)};
  if (!proof.proof || sheet.page == 0 || sheet.page > proof.proof->pages) {
    return request.send_status(HTTP_STATUS_NOT_FOUND);
  }
  std::string words;
  web.proofs.draw(*proof.proof, sheet.page, sheet.page, words);
  const auto picture = ProofStore::picture(*proof.proof, sheet);
  return picture ? request.send_bytes("image/png", *picture)
                 : request.send_status(HTTP_STATUS_NOT_FOUND);
}

bool dump_page(Request& request, Web& web) {
  Shown proof;
  if (!find_shown(request, web, proof)) {
    return true;
  }
  if (!proof.proof) {
    return request.redirect(home_of(proof));
  }
  bool is_cut = false;
  const std::string dump = web.proofs.dump(*proof.proof, is_cut);
  std::string html = "<h1 class=\"title\">" + shown(request, "What the printer gets") +
                     "</h1>\n<p><a class=\"btn\" href=\"" + escaped(home_of(proof)) + "\">" +
                     shown(request, "Back") + "</a></p>\n<pre class=\"rlx-dump\">" + escaped(dump) +
                     "</pre>\n";
  if (is_cut) {
    html += "<p class=\"rlx-hint\">" + shown(request, "There is more; this is its beginning.") +
            "</p>\n";
  }
  return request.send_page("Jobs with proofs", html);
}

}  // namespace rlx::printer_app
