#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace rlx::printer_app {

/// What fcbcheck says of a form.
struct FormCheck {
  bool is_good = false;
  unsigned line = 0;  ///< of the fault, from 1; 0 when it has none
  std::string words;  ///< of the fault
  std::string svg;    ///< the drawing of a good form, of draw()
};

/// The folder of forms. Names are those that is_form_name takes, so no path leaves the folder.
class FormStore {
 public:
  /// @param folder   forms stand in it, one file each.
  /// @param checker  path of fcbcheck; without it each check says so.
  FormStore(std::string folder, std::string checker)
      : folder_(std::move(folder)), checker_(std::move(checker)) {}

  /// In the order of the alphabet.
  std::vector<std::string> names() const;

  /// @return nothing for another name than a form's, and for a file that is longer than
  /// kMostBytes or cannot be read.
  std::optional<std::string> read(const std::string& name) const;

  /// Puts a form in place, whole or not at all. @return what went wrong; empty when nothing did.
  std::string write(const std::string& name, const std::string& text) const;
  /// @return what went wrong; empty when nothing did.
  std::string remove(const std::string& name) const;

  FormCheck check(const std::string& text) const;
  /// The same of a form that is there, with its drawing. @return nothing good when it is not.
  FormCheck draw(const std::string& name) const;

  static constexpr std::size_t kMostBytes = 65536;

 private:
  FormCheck run(const std::vector<std::string>& arguments, const std::string& input) const;
  std::string path_of(const std::string& name) const { return folder_ + '/' + name; }

  std::string folder_;
  std::string checker_;
  mutable std::mutex writing_;  ///< one at a time: they share the file aside
};

/// Divides what fcbcheck says of standard input: "(standard input):2: lpi: ...".
FormCheck read_fault(const std::string& message);

/// True for a name under which a form can be kept.
bool is_storable_name(const std::string& name);

}  // namespace rlx::printer_app
