#pragma once

#include <cstdint>

namespace rlx {

/// Writes one piece of output for the main loop: onto the page, or into a frame with option -d. A
/// piece that ends the page also makes the glyph download forget the size that it selected.
/// @return the status of out_page_data or directout.
int write_piece(std::int32_t count, const std::uint8_t* bytes);

/// Writes a form feed of its own.
int write_form_feed();

}  // namespace rlx
