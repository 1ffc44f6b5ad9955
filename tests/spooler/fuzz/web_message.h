#pragma once

#include <string>

#include "spooler/fuzz/chance.h"

namespace rlx::testing {

/// What requests of a browser are made of.
struct WebPlaces {
  std::string token;     ///< of the server's forms
  std::string trial;     ///< name of a trial that is kept; empty without one
  std::size_t jobs = 0;  ///< so many have been submitted
};

struct WebMessage {
  std::string method;
  std::string path;
  std::string type;
  std::string body;
};

/// A request to one of our pages, or to one of PAPPL's that only show. Some have something wrong.
WebMessage web_message(const WebPlaces& places, Chance& chance);

}  // namespace rlx::testing
