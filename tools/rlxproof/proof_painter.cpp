#include "rlxproof/proof_painter.h"

#include "rlxproof/margins.h"
#include "rlxproof/rulers.h"

namespace rlx::proof {

namespace {

std::string note_of(const Sheet& sheet, std::uint64_t missing) {
  Note note = sheet.note;
  if (missing != 0) {
    note.add_character("character that no font here has", missing);
  }
  return text_of(note);
}

}  // namespace

void ProofPainter::paint(cairo_t* cairo, const Sheet& sheet) {
  paint_rulers(cairo, fonts_, sheet);
  const std::uint64_t missing = cells_.paint(cairo, sheet.cells);
  paint_margins(cairo, fonts_, sheet, job_, note_of(sheet, missing));
}

void ProofPainter::paint_nothing(cairo_t* cairo, const std::string& reason) {
  paint_message(cairo, fonts_, job_, reason);
}

}  // namespace rlx::proof
