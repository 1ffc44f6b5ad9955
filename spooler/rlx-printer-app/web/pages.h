#pragma once

#include <string>

#include "rlx-printer-app/print_document.h"
#include "rlx-printer-app/web/form_store.h"
#include "rlx-printer-app/web/proof_store.h"
#include "rlx-printer-app/web/request.h"

namespace rlx::printer_app {

/// What the pages show.
struct Web {
  const Application& application;
  FormStore forms;
  ProofStore proofs;
};

// The pages, by their paths. Each answers, and returns false to end the connection.
bool forms_page(Request& request, Web& web);        ///< /forms: all forms, drawn
bool form_page(Request& request, Web& web);         ///< /forms/form: one, with its text
bool form_picture(Request& request, Web& web);      ///< /forms/picture
bool change_form_page(Request& request, Web& web);  ///< /forms/change: adds one, too
bool delete_form_page(Request& request, Web& web);  ///< /forms/delete
bool jobs_page(Request& request, Web& web);         ///< /proofs: all jobs
bool cancel_page(Request& request, Web& web);       ///< /proofs/cancel
bool proof_page(Request& request, Web& web);        ///< /proofs/job: one, with its proof
bool sheet_page(Request& request, Web& web);        ///< /proofs/page: one of its pages, large
bool sheet_picture(Request& request, Web& web);     ///< /proofs/picture
bool dump_page(Request& request, Web& web);         ///< /proofs/dump
bool try_page(Request& request, Web& web);          ///< /try

/// Thumbnails of a proof's pages, with links to the pages and to the other portions.
/// @param of     names the proof, as in the query "of".
/// @param here   a path that ends where a portion's number goes.
std::string proof_pictures(const Request& request, Web& web, const Proof& proof,
                           const std::string& of, const std::string& here);

/// HTML of a small table of names and values. Adds a row; `value` is HTML.
std::string fact_row(const Request& request, const char* name, const std::string& value);

/// A text of the table, escaped.
std::string shown(const Request& request, const char* english);

/// "Too many people ..." for a request that got no place.
bool send_busy(Request& request, const std::string& back);

}  // namespace rlx::printer_app
