#pragma once

#include <string>

namespace rlx::printer_app {

/// What is kept of a password of the web page: NONCE~HASH, as PAPPL keeps it.
/// @param kept  what is kept of the password to compare with; a new nonce is taken when it is
/// empty.
/// @return empty when it cannot be made.
std::string password_hash(const std::string& kept, const std::string& password);

}  // namespace rlx::printer_app
