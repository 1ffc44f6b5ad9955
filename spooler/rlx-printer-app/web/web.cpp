#include "rlx-printer-app/web/web.h"

#include <array>
#include <exception>
#include <string>

#include "rlx-printer-app/web/pages.h"
#include "rlx-printer-app/web/style.h"
#include "rlx-printer-app/web/texts.h"

namespace rlx::printer_app {

namespace {

struct Page {
  const char* path;
  const char* type;
  bool (*answer)(Request& request, Web& web);
};

constexpr const char* kHtml = "text/html";
constexpr std::array<Page, 12> kPages{{
    {"/forms", kHtml, forms_page},
    {"/forms/form", kHtml, form_page},
    {"/forms/picture", "image/svg+xml", form_picture},
    {"/forms/change", kHtml, change_form_page},
    {"/forms/delete", kHtml, delete_form_page},
    {"/proofs", kHtml, jobs_page},
    {"/proofs/cancel", kHtml, cancel_page},
    {"/proofs/job", kHtml, proof_page},
    {"/proofs/page", kHtml, sheet_page},
    {"/proofs/picture", "image/png", sheet_picture},
    {"/proofs/dump", kHtml, dump_page},
    {"/try", kHtml, try_page},
}};

/// What PAPPL hands back with a request.
struct Place {
  const Page* page = nullptr;
  Web* web = nullptr;
};

bool answer(pappl_client_t* client, void* data) {
  const auto& place = *static_cast<const Place*>(data);
  try {
    Request request(client);
    return place.page->answer(request, *place.web);
  } catch (const std::exception& error) {
    papplLogClient(client, PAPPL_LOGLEVEL_ERROR, "%s: %s", place.page->path, error.what());
    papplClientRespond(client, HTTP_STATUS_SERVER_ERROR, nullptr, nullptr, 0, 0);
    return false;
  }
}

/// The strings are in PAPPL's tables then, and the file that they came from is no page of the
/// server. Where there is one, PAPPL 1.3.1 adds its language to the printer's attributes at each
/// Get-Printer-Attributes, so that the answers grow for ever.
void add_strings(pappl_system_t* system, const char* path, const char* language, const char* data) {
  papplSystemAddStringsData(system, path, language, data);
  papplSystemRemoveResource(system, path);
}

}  // namespace

void add_web_pages(pappl_system_t* system, const Application& application) {
  // They stay until the process ends: PAPPL's threads use them to the last.
  static Web web{
      application,
      FormStore(application.form_folder + "/fcbe", application.form_checker),
      ProofStore(application.proof_folder, application.painter, application.dumper),
  };
  static std::array<Place, kPages.size()> places;
  for (std::size_t i = 0; i < kPages.size(); ++i) {
    places[i] = {&kPages[i], &web};
    papplSystemAddResourceCallback(system, kPages[i].path, kPages[i].type, answer, &places[i]);
  }
  papplSystemAddResourceString(system, "/rlx.css", "text/css", kStyle);
  static const std::string japanese = japanese_strings();
  add_strings(system, "/rlx-ja.strings", "ja", japanese.c_str());
  add_strings(system, "/rlx-en.strings", "en", "\"rlx-language\" = \"en\";\n");
  // Without a footer PAPPL 1.3.1 crashes where it looks for its translation.
  papplSystemSetFooterHTML(system, "rlx-printer-app " RLX_VERSION);
  papplSystemAddLink(system, "Forms", "/forms", PAPPL_LOPTIONS_NAVIGATION);
  papplSystemAddLink(system, "Jobs with proofs", "/proofs", PAPPL_LOPTIONS_NAVIGATION);
  papplSystemAddLink(system, "Try a form", "/try", PAPPL_LOPTIONS_NAVIGATION);
}

void prepare_printer(pappl_printer_t* printer, void* data) {
  const auto& application = *static_cast<const Application*>(data);
  papplPrinterSetMaxPreservedJobs(printer, application.preserved_jobs);
  const std::string path = "/proofs?printer=" + std::to_string(papplPrinterGetID(printer));
  papplPrinterAddLink(printer, "Jobs with proofs", path.c_str(), PAPPL_LOPTIONS_NAVIGATION);
}

}  // namespace rlx::printer_app
