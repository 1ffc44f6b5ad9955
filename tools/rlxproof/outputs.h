#pragma once

#include <memory>
#include <string>

#include "rlxproof/cairo_handles.h"
#include "rlxproof/proof_painter.h"
#include "rlxproof/sheet.h"

namespace rlx::proof {

/// Where proof sheets go.
class Output {
 public:
  virtual ~Output() = default;

  /// Draws a sheet. @throws std::runtime_error when it cannot be written.
  virtual void add(const Sheet& sheet, ProofPainter& painter) = 0;

  /// Nothing follows. @param empty_reason  is shown when there was no sheet.
  /// @throws std::runtime_error when something could not be written.
  virtual void finish(ProofPainter& painter, const std::string& empty_reason) = 0;
};

/// A PDF file of all sheets, each as large as its paper.
/// @param path  "-" is standard output.
/// @throws std::system_error when it cannot be written.
std::unique_ptr<Output> make_pdf_output(const std::string& path, const std::string& title);

/// A picture of each sheet, 150 dots per inch: page-001-1.png, by page and sheet. The pictures of
/// no sheet are no pictures.
/// @param folder  is made when it is missing.
/// @throws std::system_error when that cannot be done.
std::unique_ptr<Output> make_picture_output(const std::string& folder);

}  // namespace rlx::proof
