#pragma once

#include <pappl/pappl.h>

#include "rlx-printer-app/print_document.h"

namespace rlx::printer_app {

/// Adds our pages to PAPPL's: /forms, /proofs (jobs with their proofs) and /try.
/// @param data  must stay until the process ends; so do the pages.
void add_web_pages(pappl_system_t* system, const Application& application);

/// What a new printer needs for them; PAPPL calls it for each.
/// @param data  an Application.
void prepare_printer(pappl_printer_t* printer, void* data);

}  // namespace rlx::printer_app
