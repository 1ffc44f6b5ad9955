#pragma once

#include <cairo.h>
#include <glib-object.h>
#include <pango/pango.h>

#include <memory>

namespace rlx::proof {

/// Gives an object of the drawing libraries back.
template <auto Release>
struct Releaser {
  template <typename Object>
  void operator()(Object* object) const {
    Release(object);
  }
};

using CairoPtr = std::unique_ptr<cairo_t, Releaser<cairo_destroy>>;
using SurfacePtr = std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_destroy>>;
using FontFacePtr = std::unique_ptr<cairo_font_face_t, Releaser<cairo_font_face_destroy>>;
using ScaledFontPtr = std::unique_ptr<cairo_scaled_font_t, Releaser<cairo_scaled_font_destroy>>;
using FontOptionsPtr = std::unique_ptr<cairo_font_options_t, Releaser<cairo_font_options_destroy>>;
using FontDescriptionPtr =
    std::unique_ptr<PangoFontDescription, Releaser<pango_font_description_free>>;

/// A reference to an object of the type system that pango uses.
template <typename Object>
using ObjectPtr = std::unique_ptr<Object, Releaser<g_object_unref>>;

}  // namespace rlx::proof
