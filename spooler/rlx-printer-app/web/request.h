#pragma once

#include <pappl/pappl.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "rlx-printer-app/web/form_data.h"
#include "rlx-printer-app/web/program_run.h"

namespace rlx::printer_app {

/// A request of a browser, and its answer.
class Request {
 public:
  explicit Request(pappl_client_t* client);

  pappl_system_t* system() const { return papplClientGetSystem(client_); }
  bool is_post() const { return papplClientGetMethod(client_) == HTTP_STATE_POST; }

  /// A value of the query; empty when there is none.
  std::string query(std::string_view name) const { return query_.value(name); }
  /// The same as a number from 0 to `most`; 0 when it is none.
  unsigned number(std::string_view name, unsigned most) const;

  /// True for someone who may change things. Otherwise PAPPL's log-in page was sent. May read the
  /// form, and make this a request that is no POST: so is_post() has to be asked behind it.
  bool is_authorized() const { return papplClientHTMLAuthorize(client_); }

  /// Reads the fields of a POST, at most kMostBodyBytes, and looks whether they come from a page of
  /// this server's. Otherwise an answer was sent.
  bool read_form();
  const FormData& form() const { return form_; }

  /// A text in the language of the browser. @param english  as in the table of texts.
  const char* text(const char* english) const { return papplClientGetLocString(client_, english); }

  /// The beginning of a form whose fields go to `action`, with PAPPL's token in it.
  std::string form_start(const std::string& action, bool has_file) const;

  /// Waits for a place to run programs; it is kept until the answer is sent, but not while: who
  /// reads slowly would keep others from drawing. @return false when there was none.
  bool take_place();

  /// Answers with a page. @param title  as for text(). @param content  HTML.
  bool send_page(const char* title, const std::string& content);
  /// Answers with a page of one sentence for people, with a link back.
  bool send_words(const std::string& words, const std::string& back);
  bool send_bytes(const char* type, const std::string& bytes);
  bool send_status(http_status_t status);
  bool redirect(const std::string& path);

  static constexpr std::size_t kMostBodyBytes = std::size_t{1} << 20U;

 private:
  pappl_client_t* client_;
  FormData query_;
  FormData form_;
  std::optional<RunPlace> place_;
};

/// What answers requests for a path. @return false to end the connection.
using Answer = std::function<bool(Request&)>;

}  // namespace rlx::printer_app
