#pragma once

#include <string>
#include <string_view>

namespace rlx::reader {

/// A line of the job parameter text, as people read it.
struct JobParameter {
  std::string key;      ///< such as "DUP"; empty when the line is no KEY=VALUE
  std::string value;    ///< such as "1"; the whole line when there is no key
  std::string name;     ///< such as "duplex"; empty when its meaning is not known
  std::string meaning;  ///< such as "on"; empty when there is nothing to add to the value
};

/// Explains a line. @param line  without its LF.
JobParameter describe_job_parameter(std::string_view line);

}  // namespace rlx::reader
