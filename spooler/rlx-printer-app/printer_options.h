#pragma once

#include <cups/ipp.h>
#include <pappl/pappl.h>

#include <string>
#include <vector>

#include "mapping/job_settings.h"

namespace rlx::printer_app {

/// Attributes of jobs that IPP does not know. They are named as the options of the other spoolers
/// are; each has a default of the printer, which is set on its web page.
struct VendorAttribute {
  const char* name;
  ipp_tag_t tag;              ///< IPP_TAG_TEXT, _RANGE, _INTEGER, _KEYWORD or _BOOLEAN
  int least, most;            ///< of a range
  const char* default_value;  ///< a number, a keyword, "true" or "false"
  std::vector<const char*> keywords;
  std::vector<int> numbers;  ///< of IPP_TAG_INTEGER: all that may be asked for
};

const std::vector<VendorAttribute>& vendor_attributes();

/// The attributes NAME-default and NAME-supported of a new printer.
/// @return for PAPPL, which owns it then.
ipp_t* make_vendor_defaults();

/// What a job asks for: the printer's defaults first, then the job's own attributes. A default that
/// is what the printer does without being told (A4 paper, one side) is left out.
/// PAPPL checks no vendor attribute, and gives a job no default of one: both are done here.
/// @return what is wrong, by the name of the attribute, of a default NAME-default; the job is not
/// to
///         be printed then.
std::vector<spooler::OptionFault> read_print_options(pappl_job_t* job,
                                                     spooler::JobSettings& settings);

/// Dots per inch: what the job asks for, or the printer's default.
int resolution_of(pappl_job_t* job);

}  // namespace rlx::printer_app
