#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "rlx-printer-app/formats.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/printer_options.h"
#include "rlx-printer-app/system.h"

namespace rlx::printer_app {

namespace {

constexpr std::array<const char*, 6> kMedia{"iso_a4_210x297mm", "iso_a3_297x420mm",
                                            "iso_a5_148x210mm", "jis_b4_257x364mm",
                                            "jis_b5_182x257mm", "na_letter_8.5x11in"};
constexpr std::array<const char*, 5> kTrays{"auto", "tray-1", "tray-2", "tray-3", "tray-4"};

/// Hundredths of a millimetre: 1/5 inch, the least offset that the printer takes.
constexpr int kMargin = 508;
constexpr int kPagesPerMinute = 60;

template <std::size_t Size>
void copy(char (&to)[Size], const char* from) {
  std::snprintf(to, Size, "%s", from);
}

/// PAPPL wants a printer of pixels. This one is none: such a job is refused before its first line.
bool refuse_raster(pappl_job_t* job, pappl_pr_options_t* /*options*/, pappl_device_t* /*device*/) {
  papplJobSetReasons(job, PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR, PAPPL_JREASON_NONE);
  papplJobSetMessage(job, "%s", kNotPrintable);
  papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s", kNotPrintable);
  return false;
}

bool no_page(pappl_job_t* /*job*/, pappl_pr_options_t* /*options*/, pappl_device_t* /*device*/,
             unsigned /*page*/) {
  return false;
}

bool no_line(pappl_job_t* /*job*/, pappl_pr_options_t* /*options*/, pappl_device_t* /*device*/,
             unsigned /*y*/, const unsigned char* /*line*/) {
  return false;
}

bool no_end(pappl_job_t* /*job*/, pappl_pr_options_t* /*options*/, pappl_device_t* /*device*/) {
  return false;
}

void describe_raster(pappl_pr_driver_data_t& data) {
  data.rstartjob_cb = refuse_raster;
  data.rstartpage_cb = no_page;
  data.rwriteline_cb = no_line;
  data.rendpage_cb = no_page;
  data.rendjob_cb = no_end;
  data.raster_types = PAPPL_PWG_RASTER_TYPE_BLACK_1 | PAPPL_PWG_RASTER_TYPE_SGRAY_8;
  data.color_supported = PAPPL_COLOR_MODE_MONOCHROME;
  data.color_default = PAPPL_COLOR_MODE_MONOCHROME;
}

void describe_resolutions(const PrinterKind& kind, pappl_pr_driver_data_t& data) {
  for (const int resolution : kind.resolutions) {
    if (resolution != 0) {
      data.x_resolution[data.num_resolution] = resolution;
      data.y_resolution[data.num_resolution] = resolution;
      ++data.num_resolution;
    }
  }
  data.x_default = kind.resolutions.front();
  data.y_default = kind.resolutions.front();
}

void describe_media(pappl_pr_driver_data_t& data) {
  data.num_media = static_cast<int>(kMedia.size());
  std::copy(kMedia.begin(), kMedia.end(), data.media);
  data.num_source = static_cast<int>(kTrays.size());
  std::copy(kTrays.begin(), kTrays.end(), data.source);
  data.num_type = 1;
  data.type[0] = "stationery";
  data.left_right = kMargin;
  data.bottom_top = kMargin;
  for (std::size_t i = 0; i < kTrays.size(); ++i) {
    pappl_media_col_t& ready = data.media_ready[i];
    const pwg_media_t* const size = pwgMediaForPWG(kMedia.front());
    ready.size_width = size->width;
    ready.size_length = size->length;
    copy(ready.size_name, kMedia.front());
    copy(ready.source, kTrays[i]);
    copy(ready.type, "stationery");
    ready.left_margin = ready.right_margin = kMargin;
    ready.top_margin = ready.bottom_margin = kMargin;
  }
  data.media_default = data.media_ready[0];
}

}  // namespace

bool describe_printer(pappl_system_t* /*system*/, const char* name, const char* /*device_uri*/,
                      const char* /*device_id*/, pappl_pr_driver_data_t* data, ipp_t** attributes,
                      void* /*application*/) {
  const PrinterKind* const kind = find_printer_kind(name);
  if (kind == nullptr) {
    return false;
  }
  copy(data->make_and_model, kind->description);
  data->format = kPrinterLanguage;
  data->ppm = kPagesPerMinute;
  data->kind = PAPPL_KIND_DOCUMENT;
  data->orient_default = IPP_ORIENT_PORTRAIT;
  data->duplex = PAPPL_DUPLEX_NORMAL;
  data->sides_supported =
      PAPPL_SIDES_ONE_SIDED | PAPPL_SIDES_TWO_SIDED_LONG_EDGE | PAPPL_SIDES_TWO_SIDED_SHORT_EDGE;
  data->sides_default = PAPPL_SIDES_ONE_SIDED;
  data->quality_default = IPP_QUALITY_NORMAL;
  data->scaling_default = PAPPL_SCALING_NONE;
  data->content_default = PAPPL_CONTENT_TEXT;
  describe_raster(*data);
  describe_resolutions(*kind, *data);
  describe_media(*data);
  for (const VendorAttribute& vendor : vendor_attributes()) {
    data->vendor[data->num_vendor++] = vendor.name;
  }
  *attributes = make_vendor_defaults();
  return true;
}

}  // namespace rlx::printer_app
