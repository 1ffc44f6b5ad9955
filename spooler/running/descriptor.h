#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace rlx::spooler {

/// A descriptor with one owner, who closes it.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  bool is_open() const { return number_ >= 0; }
  /// Closes it.
  void reset();

 private:
  int number_ = -1;
};

struct Pipe {
  Descriptor read_end;
  Descriptor write_end;
};

/// A pipe whose ends no program inherits. Neither is one of the three standard descriptors, also in
/// a process without them: a child's are put there.
/// @throws std::system_error when there is none.
Pipe make_pipe();

/// Reads what is there. @return how many bytes; 0 at the end.
/// @throws std::system_error, with `name` in its text.
std::size_t read_some(int descriptor, std::span<std::uint8_t> room, const std::string& name);

/// Writes all of it, and waits where the descriptor does not take it at once.
/// @return 0, or the error's number.
int write_all(int descriptor, std::span<const std::uint8_t> bytes);

}  // namespace rlx::spooler
