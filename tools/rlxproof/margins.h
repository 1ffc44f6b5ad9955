#pragma once

#include <cairo.h>

#include <string>

#include "rlxproof/fonts.h"
#include "rlxproof/sheet.h"

namespace rlx::proof {

/// What stands above the sheet, behind the word PROOF: the job's name, which loses its middle when
/// it is long, page and sheet, side, paper, and what page headers say.
std::string heading_of(const Sheet& sheet, const std::string& job);

/// Draws the heading above the first line, and the note of what is not drawn where no text is: at
/// the lower edge, or at the right one. Where both are taken it stands in the heading.
/// @param note  as text; empty for none.
void paint_margins(cairo_t* cairo, Fonts& fonts, const Sheet& sheet, const std::string& job,
                   const std::string& note);

/// Draws the heading and a message alone, on default paper.
void paint_message(cairo_t* cairo, Fonts& fonts, const std::string& job,
                   const std::string& message);

}  // namespace rlx::proof
