#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "running/descriptor.h"

namespace rlx::spooler {

/// How a process ended.
struct ProcessEnd {
  int status = 0;  ///< its exit status, when no signal ended it
  int signal = 0;  ///< 0, or the signal that ended it

  /// The status of a process that nobody could wait for: somebody else did.
  static constexpr int kUnknownStatus = -1;
};

/// A program as a child in a process group of its own: a signal to the group of its parent, by
/// which a spooler ends a job, does not reach it. It is killed when the thread that started it
/// dies, so that none is left behind.
class ChildProcess {
 public:
  /// Starts it. Its standard input, output and error are pipes.
  /// @param arguments  without the program's name; that is the last part of `program`.
  /// @throws std::system_error when it cannot be started.
  ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
  /// Closes the pipes and waits, if that was not done.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Its standard input; writing to it does not block.
  Descriptor& input() { return input_; }
  Descriptor& output() { return output_; }
  Descriptor& messages() { return messages_; }

  /// Kills it, and those of its group that it has started. To be called before wait().
  void kill() const;

  /// Waits for its end. To be called once, after the ends of its output and messages.
  ProcessEnd wait();

 private:
  pid_t child_ = -1;
  Descriptor input_;
  Descriptor output_;
  Descriptor messages_;
};

/// Where a program of the project is: beside this program, or in the same installation.
/// @param name         such as "zqeuctorlx".
/// @param from_here    the folder of it in an installation, as the way from this program's folder.
/// @return its path; empty when it is in neither place.
std::string find_program(const std::string& name, const std::string& from_here);

}  // namespace rlx::spooler
