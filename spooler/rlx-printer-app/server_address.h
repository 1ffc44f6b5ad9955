#pragma once

#include <string>
#include <vector>

namespace rlx::printer_app {

/// A sub-command's "-h HOST[:PORT]". PAPPL takes it and does nothing with it: its sub-commands
/// reach the server of their own user, or the one of a "-u URI".
struct ServerAddress {
  std::string authority;           ///< HOST:PORT, 8631 without a port; empty without "-h"
  std::vector<std::string> words;  ///< the command line, with the "-u" that PAPPL follows
  /// A sub-command that PAPPL has no "-u" for, or does wrongly with one: "printers", "shutdown",
  /// "modify", "status" of a server. Then run_at_server() is to be called.
  std::string at_server;
  std::string printer;               ///< of "-d", where PAPPL would not say that there is none
  std::vector<std::string> options;  ///< of "modify": each NAME=VALUE
};

/// Makes the command line of it that PAPPL follows.
/// @param words  the whole command line, the program's name first.
/// @throws std::runtime_error when "-h" has no value, or "-d PRINTER" is missing.
ServerAddress read_server_address(std::vector<std::string> words);

/// Does what `at_server` says. @return the exit status.
/// @throws std::runtime_error when an option of "modify" cannot be set.
int run_at_server(const ServerAddress& address);

/// @return false, with a message, when the server says that it has no printer of this name.
bool has_printer(const ServerAddress& address);

}  // namespace rlx::printer_app
