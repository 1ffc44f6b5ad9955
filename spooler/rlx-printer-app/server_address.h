#pragma once

#include <string>
#include <vector>

namespace rlx::printer_app {

/// A sub-command's "-h HOST[:PORT]". PAPPL takes it and does nothing with it: its sub-commands
/// reach the server of their own user, or the one of a "-u URI".
struct ServerAddress {
  std::string authority;           ///< HOST:PORT, 8631 without a port; empty without "-h"
  std::vector<std::string> words;  ///< the command line, with the "-u" that PAPPL follows
  /// "printers" or "shutdown", which PAPPL has no "-u" for: then run_at_server() is to be called.
  std::string at_server;
};

/// Makes the command line of it that PAPPL follows.
/// @param words  the whole command line, the program's name first.
/// @throws std::runtime_error when "-h" has no value, or "-d PRINTER" is missing.
ServerAddress read_server_address(std::vector<std::string> words);

/// Lists the printers of a server, or has it shut down. @return the exit status.
int run_at_server(const ServerAddress& address);

}  // namespace rlx::printer_app
