#include "rlx-printer-app/printer_options.h"

#include <array>
#include <memory>

namespace rlx::printer_app {

namespace {

using spooler::JobOption;

/// A message of IPP attributes with one owner.
struct DeleteIpp {
  void operator()(ipp_t* ipp) const { ippDelete(ipp); }
};
using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;

struct DeleteOptions {
  void operator()(pappl_pr_options_t* options) const { papplJobDeletePrintOptions(options); }
};
using PrintOptions = std::unique_ptr<pappl_pr_options_t, DeleteOptions>;

std::string text_of(ipp_attribute_t* attribute) {
  std::array<char, 1024> text{};
  ippAttributeString(attribute, text.data(), text.size());
  return text.data();
}

void add_default(ipp_t* attributes, const VendorAttribute& vendor) {
  const std::string name = std::string(vendor.name) + "-default";
  switch (vendor.tag) {
    case IPP_TAG_RANGE:
    case IPP_TAG_INTEGER:
      ippAddInteger(attributes, IPP_TAG_PRINTER, IPP_TAG_INTEGER, name.c_str(),
                    std::stoi(vendor.default_value));
      break;
    case IPP_TAG_BOOLEAN:
      ippAddBoolean(attributes, IPP_TAG_PRINTER, name.c_str(),
                    std::string(vendor.default_value) == "true");
      break;
    default:
      ippAddString(attributes, IPP_TAG_PRINTER, vendor.tag, name.c_str(), nullptr,
                   vendor.default_value);
      break;
  }
}

void add_supported(ipp_t* attributes, const VendorAttribute& vendor) {
  const std::string name = std::string(vendor.name) + "-supported";
  switch (vendor.tag) {
    case IPP_TAG_RANGE:
      ippAddRange(attributes, IPP_TAG_PRINTER, name.c_str(), vendor.least, vendor.most);
      break;
    case IPP_TAG_INTEGER:
      ippAddIntegers(attributes, IPP_TAG_PRINTER, IPP_TAG_INTEGER, name.c_str(),
                     static_cast<int>(vendor.numbers.size()), vendor.numbers.data());
      break;
    case IPP_TAG_BOOLEAN:
      ippAddBoolean(attributes, IPP_TAG_PRINTER, name.c_str(), true);
      break;
    case IPP_TAG_KEYWORD:
      ippAddStrings(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, name.c_str(),
                    static_cast<int>(vendor.keywords.size()), nullptr, vendor.keywords.data());
      break;
    default:
      break;
  }
}

/// What the printer does without being told needs no words.
void add_unless(std::vector<JobOption>& options, const char* name, const std::string& value,
                const std::string& usual) {
  if (value != usual && !value.empty()) {
    options.push_back({name, value});
  }
}

/// "two-sided-long-edge" and so on.
std::string sides_name(pappl_sides_t sides) {
  switch (sides) {
    case PAPPL_SIDES_TWO_SIDED_LONG_EDGE:
      return "two-sided-long-edge";
    case PAPPL_SIDES_TWO_SIDED_SHORT_EDGE:
      return "two-sided-short-edge";
    default:
      return "one-sided";
  }
}

/// Defaults of the attributes that IPP knows.
void add_standard_defaults(pappl_printer_t* printer, std::vector<JobOption>& options) {
  pappl_pr_driver_data_t data;
  papplPrinterGetDriverData(printer, &data);
  add_unless(options, "media", data.media_default.size_name, "iso_a4_210x297mm");
  add_unless(options, "media-source", data.media_default.source, "auto");
  add_unless(options, "sides", sides_name(data.sides_default), "one-sided");
  if (data.orient_default == IPP_ORIENT_LANDSCAPE) {
    options.push_back({"orientation-requested", "4"});
  }
}

void add_vendor_defaults(pappl_printer_t* printer, std::vector<JobOption>& options) {
  const Ipp attributes(papplPrinterGetDriverAttributes(printer));
  for (const VendorAttribute& vendor : vendor_attributes()) {
    const std::string name = std::string(vendor.name) + "-default";
    ipp_attribute_t* const found = ippFindAttribute(attributes.get(), name.c_str(), IPP_TAG_ZERO);
    if (found != nullptr) {
      options.push_back({vendor.name, text_of(found)});
    }
  }
}

bool has(pappl_job_t* job, const char* name) {
  return papplJobGetAttribute(job, name) != nullptr;
}

/// True when the job's media collection names a tray. PAPPL puts the default where none is named.
bool names_tray(pappl_job_t* job) {
  ipp_attribute_t* const media = papplJobGetAttribute(job, "media-col");
  ipp_t* const collection = media == nullptr ? nullptr : ippGetCollection(media, 0);
  return ippFindAttribute(collection, "media-source", IPP_TAG_ZERO) != nullptr;
}

/// What the job asks for itself, of the attributes that IPP knows. PAPPL has put a media collection
/// into its parts.
void add_standard_options(pappl_job_t* job, std::vector<JobOption>& options) {
  const PrintOptions print(papplJobCreatePrintOptions(job, 0, false));
  if (has(job, "media") || has(job, "media-col")) {
    add_unless(options, "media", print->media.size_name, "");
  }
  if (names_tray(job)) {
    add_unless(options, "media-source", print->media.source, "");
  }
  for (const char* const name : {"media-source", "sides", "copies"}) {
    if (has(job, name)) {
      options.push_back({name, text_of(papplJobGetAttribute(job, name))});
    }
  }
  if (has(job, "orientation-requested")) {
    options.push_back({"orientation-requested", std::to_string(print->orientation_requested)});
  }
}

void add_vendor_options(pappl_job_t* job, std::vector<JobOption>& options) {
  for (const VendorAttribute& vendor : vendor_attributes()) {
    if (has(job, vendor.name)) {
      options.push_back({vendor.name, text_of(papplJobGetAttribute(job, vendor.name))});
    }
  }
}

}  // namespace

const std::vector<VendorAttribute>& vendor_attributes() {
  using spooler::JobSettings;
  static const std::vector<VendorAttribute> attributes{
      {"form", IPP_TAG_TEXT, 0, 0, "none", {}, {}},
      {"lines-per-page", IPP_TAG_RANGE, 0, int{JobSettings::kMostLinesPerPage}, "0", {}, {}},
      {"lpi", IPP_TAG_INTEGER, 0, 0, "0", {}, {0, 3, 4, 6, 8, 12}},
      {"cpi", IPP_TAG_RANGE, 0, int{JobSettings::kMostCharactersPerInch}, "0", {}, {}},
      {"rlx-undefined", IPP_TAG_KEYWORD, 0, 0, "space", {"space", "ubar"}, {}},
      {"rlx-extended", IPP_TAG_BOOLEAN, 0, 0, "false", {}, {}},
      {"rlx-charset",
       IPP_TAG_KEYWORD,
       0,
       0,
       "utf-8",
       {"utf-8", "euc-jp", "shift_jis", "iso-2022-jp", "iso-8859-1"},
       {}},
      {"page-offset-x", IPP_TAG_RANGE, 0, int{JobSettings::kMostPageOffset}, "0", {}, {}},
      {"page-offset-y", IPP_TAG_RANGE, 0, int{JobSettings::kMostPageOffset}, "0", {}, {}},
  };
  return attributes;
}

ipp_t* make_vendor_defaults() {
  ipp_t* const attributes = ippNew();
  for (const VendorAttribute& vendor : vendor_attributes()) {
    add_default(attributes, vendor);
    add_supported(attributes, vendor);
  }
  return attributes;
}

std::vector<spooler::OptionFault> read_print_options(pappl_job_t* job,
                                                     spooler::JobSettings& settings) {
  pappl_printer_t* const printer = papplJobGetPrinter(job);
  std::vector<JobOption> defaults;
  add_standard_defaults(printer, defaults);
  add_vendor_defaults(printer, defaults);
  std::vector<JobOption> options;
  add_standard_options(job, options);
  add_vendor_options(job, options);
  auto faults = read_job_options(defaults, settings);
  for (spooler::OptionFault& fault : faults) {
    fault.name += "-default";
  }
  const auto own = read_job_options(options, settings);
  faults.insert(faults.end(), own.begin(), own.end());
  return faults;
}

int resolution_of(pappl_job_t* job) {
  const PrintOptions print(papplJobCreatePrintOptions(job, 0, false));
  return print->printer_resolution[0];
}

}  // namespace rlx::printer_app
