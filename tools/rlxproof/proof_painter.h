#pragma once

#include <cairo.h>

#include <string>

#include "rlxproof/cell_painter.h"
#include "rlxproof/fonts.h"
#include "rlxproof/sheet.h"

namespace rlx::proof {

/// Draws whole proof sheets.
class ProofPainter {
 public:
  /// @param job  the job's name, for the heading.
  /// @throws std::runtime_error when there is no font.
  explicit ProofPainter(std::string job) : job_(std::move(job)), cells_(fonts_) {}

  /// Draws a sheet on a surface that measures in points and is as large as the sheet's paper.
  void paint(cairo_t* cairo, const Sheet& sheet);

  /// Says on default paper why there is no sheet.
  void paint_nothing(cairo_t* cairo, const std::string& reason);

 private:
  std::string job_;
  Fonts fonts_;
  CellPainter cells_;
};

}  // namespace rlx::proof
