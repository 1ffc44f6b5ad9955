#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rlx::dump {

/// Text on its way to a file descriptor, or into a string. Every write is checked.
class Output {
 public:
  /// @param descriptor  is written to, and not closed.
  explicit Output(int descriptor) : descriptor_(descriptor) {}
  /// @param text  is written to its end, and must outlive this.
  explicit Output(std::string& text) : text_(&text) {}

  /// @throws std::system_error when it cannot be written.
  void put(std::string_view text);

  /// Writes what waits.
  /// @throws std::system_error when it cannot be written.
  void flush();

 private:
  int descriptor_ = -1;
  std::string* text_ = nullptr;
  std::string waiting_;
  std::string written_;
};

/// How a stretch of text looks on a terminal.
enum class Look : std::uint8_t { plain, faint, bold, title, bad, good };

/// Paints text, or leaves it as it is.
class Painter {
 public:
  explicit Painter(bool colored) : colored_(colored) {}

  std::string paint(Look look, std::string_view text) const;

 private:
  bool colored_;
};

/// A text with blanks behind it, or in front of it, to make it as wide as that in characters. A
/// wider one is left as it is.
std::string left(std::string_view text, std::size_t width);
std::string right(std::string_view text, std::size_t width);

}  // namespace rlx::dump
