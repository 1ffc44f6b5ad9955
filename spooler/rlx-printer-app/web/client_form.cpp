// Mends PAPPL's function papplClientGetForm, in whose place the dynamic linker puts the one below:
// a program's own functions come before those of libraries.
//
// PAPPL 1.3.1 looks for a field's end behind the end of a body that is cut, which ends the server;
// anybody may send that, without a password.
#include "rlx-printer-app/web/client_form.h"

#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "rlx-printer-app/web/form_data.h"
#include "rlx-printer-app/web/request.h"
#include "running/descriptor.h"

namespace rlx::printer_app {

namespace {

/// A browser shows an answer only when it could send all. What is longer than this is cut off.
constexpr std::size_t kMostDroppedBytes = std::size_t{32} << 20U;

/// Files that were uploaded to PAPPL's own pages, which get their names; they go with the thread,
/// that is, with the connection.
class UploadedFiles {
 public:
  UploadedFiles() = default;
  ~UploadedFiles() {
    for (const std::string& path : paths_) {
      unlink(path.c_str());
    }
  }
  UploadedFiles(const UploadedFiles&) = delete;
  UploadedFiles& operator=(const UploadedFiles&) = delete;

  /// @return the file's name; empty when it cannot be written.
  std::string keep(const std::string& bytes) {
    std::string path = std::string(papplGetTempDir()) + "/rlx-upload-XXXXXX";
    const spooler::Descriptor file(mkostemp(path.data(), O_CLOEXEC));
    if (!file.is_open()) {
      return {};
    }
    paths_.push_back(path);
    const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    return spooler::write_all(file.number(), {data, bytes.size()}) == 0 ? path : std::string();
  }

 private:
  std::vector<std::string> paths_;
};

std::optional<FormData> form_of(pappl_client_t* client) {
  if (papplClientGetMethod(client) == HTTP_STATE_GET) {
    const char* const query = papplClientGetOptions(client);
    return FormData::from_query(query == nullptr ? "" : query);
  }
  http_t* const http = papplClientGetHTTP(client);
  const std::string type = httpGetField(http, HTTP_FIELD_CONTENT_TYPE);
  std::string body;
  if (!read_body(http, Request::kMostBodyBytes, body)) {
    return std::nullopt;
  }
  return FormData::from_body(type, body);
}

}  // namespace

bool read_body(http_t* http, std::size_t most, std::string& body) {
  std::vector<char> portion(65536);
  std::size_t bytes = 0;
  const http_state_t state = httpGetState(http);
  for (ssize_t count = 0; (count = httpRead2(http, portion.data(), portion.size())) > 0;) {
    bytes += static_cast<std::size_t>(count);
    if (bytes <= most) {
      body.append(portion.data(), static_cast<std::size_t>(count));
    } else if (bytes > kMostDroppedBytes) {
      return false;
    }
  }
  // A body that came to its end takes the connection to another state.
  return httpGetState(http) != state && bytes <= most;
}

}  // namespace rlx::printer_app

extern "C" int papplClientGetForm(pappl_client_t* client, cups_option_t** form) {
  using rlx::printer_app::FormField;
  thread_local rlx::printer_app::UploadedFiles files;
  if (form == nullptr) {
    return 0;
  }
  *form = nullptr;
  const auto data = client == nullptr ? std::nullopt : rlx::printer_app::form_of(client);
  int count = 0;
  if (data) {
    for (const FormField& field : data->fields()) {
      const std::string value = field.file_name.empty() ? field.value : files.keep(field.value);
      if (!field.name.empty()) {
        count = cupsAddOption(field.name.c_str(), value.c_str(), count, form);
      }
    }
  }
  return count;
}
