#pragma once

#include <cups/cups.h>
#include <pappl/pappl.h>

#include <string>

#include "rlx-printer-app/print_document.h"

namespace rlx::printer_app {

/// Where a server of this user keeps its state when no option says otherwise.
std::string usual_state_folder();

/// Makes the system that serves: listeners, formats, printers and jobs of the last run. PAPPL's
/// main loop calls it for the sub-command "server".
/// @param data  an Application, which is filled in.
/// @return null, with a message on standard error, when it cannot be.
pappl_system_t* make_system(int count, cups_option_t* options, void* data);

/// Describes a printer of a kind to PAPPL; it calls this for each new printer.
bool describe_printer(pappl_system_t* system, const char* name, const char* device_uri,
                      const char* device_id, pappl_pr_driver_data_t* data, ipp_t** attributes,
                      void* application);

}  // namespace rlx::printer_app
