#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::printer_app {

/// A field that a browser has sent.
struct FormField {
  std::string name;
  std::string file_name;  ///< of an uploaded file, without folders; empty for other fields
  std::string value;      ///< any bytes
};

/// The fields of a query, or of the body of a POST.
class FormData {
 public:
  /// A query, or a body of application/x-www-form-urlencoded. Whatever it holds, there are fields;
  /// those behind kMostFields are left out.
  static FormData from_query(std::string_view text);

  /// A body by its Content-Type, which may be multipart/form-data too.
  /// @return nothing when it is of another type, is cut off, or has more than kMostFields fields.
  static std::optional<FormData> from_body(std::string_view content_type, std::string_view body);

  /// All of them, in their order.
  const std::vector<FormField>& fields() const { return fields_; }
  /// The first field of a name; null when there is none.
  const FormField* find(std::string_view name) const;
  /// Its value; empty when there is none.
  std::string value(std::string_view name) const;

  static constexpr std::size_t kMostFields = 512;

 private:
  std::vector<FormField> fields_;
};

}  // namespace rlx::printer_app
