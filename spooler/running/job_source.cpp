#include "running/job_source.h"

#include <iconv.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace rlx::spooler {

std::size_t DescriptorSource::read(std::span<std::uint8_t> room) {
  if (!cancellation_.wait_for(descriptor_, POLLIN)) {
    return 0;
  }
  return read_some(descriptor_, room, "the job");
}

std::size_t TextInFront::read(std::span<std::uint8_t> room) {
  if (next_ == text_.size()) {
    return rest_.read(room);
  }
  const std::size_t count = std::min(room.size(), text_.size() - next_);
  std::copy_n(text_.begin() + static_cast<std::ptrdiff_t>(next_), count, room.begin());
  next_ += count;
  return count;
}

namespace {

constexpr std::size_t kPortionBytes = 32768;

/// What iconv makes at once, at most: a character, and some that are put on it.
constexpr std::size_t kMostCharacterBytes = 64;

/// ESC and FS.
bool begins_sequence(std::uint8_t byte) {
  return byte == 0x1b || byte == 0x1c;
}

constexpr const char* kOnlyText =
    "a control sequence; only text without them can be converted from ";

std::string at_byte(std::uint64_t offset) {
  return "byte " + std::to_string(offset) + " of the job: ";
}

[[noreturn]] void fail(std::uint64_t offset, const std::string& why) {
  throw ConversionFault(at_byte(offset) + why);
}

}  // namespace

ConvertedText::ConvertedText(const std::string& charset, JobSource& text)
    : charset_(charset), text_(text), conversion_(iconv_open("UTF-8", charset.c_str())) {}

ConvertedText::~ConvertedText() {
  iconv_close(conversion_);
}

/// Brings more text behind what is left.
void ConvertedText::refill() {
  waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(next_));
  next_ = 0;
  const std::size_t left = waiting_.size();
  waiting_.resize(left + kPortionBytes);
  const std::size_t got = text_.read(std::span(waiting_).subspan(left));
  waiting_.resize(left + got);
  ended_ = got == 0;
}

/// Where the next ESC or FS stands behind so many of the waiting bytes, or their end. Pieces end in
/// front of such a byte, so one that comes out is known by its place.
std::size_t ConvertedText::next_piece(std::size_t after) const {
  const auto begin = waiting_.begin() + static_cast<std::ptrdiff_t>(next_);
  const auto from = begin + static_cast<std::ptrdiff_t>(after);
  return static_cast<std::size_t>(std::find_if(from, waiting_.end(), begins_sequence) - begin);
}

/// Converts up to `count` bytes of what is waiting, as far as characters are whole and fit.
std::size_t ConvertedText::convert(std::size_t count, std::span<std::uint8_t> room) {
  char* from = reinterpret_cast<char*>(waiting_.data() + next_);
  std::size_t from_left = count;
  char* to = reinterpret_cast<char*>(room.data());
  std::size_t to_left = room.size();
  const std::size_t result = iconv(conversion_, &from, &from_left, &to, &to_left);
  const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
  const std::uint64_t begin = offset_;
  next_ += count - from_left;
  offset_ += count - from_left;
  if (error == EILSEQ) {
    fail(offset_, "this is no character of " + charset_);
  }
  const auto text = room.first(room.size() - to_left);
  if (std::any_of(text.begin(), text.end(), begins_sequence)) {
    throw SequenceInText(at_byte(begin) + kOnlyText + charset_);
  }
  return text.size();
}

/// The end of the text: brings a character that was held back because another one could have been
/// put on it.
std::size_t ConvertedText::end(std::span<std::uint8_t> room) {
  if (std::exchange(shifted_back_, true)) {
    return 0;
  }
  char* to = reinterpret_cast<char*>(room.data());
  std::size_t to_left = room.size();
  iconv(conversion_, nullptr, nullptr, &to, &to_left);
  return room.size() - to_left;
}

std::size_t ConvertedText::read(std::span<std::uint8_t> room) {
  if (next_small_ == small_.size() && room.size() >= kMostCharacterBytes) {
    return convert_some(room);
  }
  if (next_small_ == small_.size()) {
    small_.resize(kMostCharacterBytes);
    small_.resize(convert_some(small_));
    next_small_ = 0;
  }
  const std::size_t count = std::min(room.size(), small_.size() - next_small_);
  std::copy_n(small_.begin() + static_cast<std::ptrdiff_t>(next_small_), count, room.begin());
  next_small_ += count;
  return count;
}

/// @param room  for a character at least.
std::size_t ConvertedText::convert_some(std::span<std::uint8_t> room) {
  std::size_t piece = 0;
  while (true) {
    if (next_ + piece == waiting_.size() && !ended_) {
      refill();
    }
    if (next_ == waiting_.size()) {
      return end(room);
    }
    if (next_ + piece == waiting_.size()) {
      fail(offset_, "the job ends inside a character of " + charset_);
    }
    const std::uint64_t begin = offset_;
    piece = next_piece(piece + 1);
    const std::size_t made = convert(piece, room);
    if (made > 0) {
      return made;
    }
    // Nothing came out: a shift of the encoding was taken, or a character goes over the piece's
    // end.
    piece = offset_ == begin ? piece : 0;
  }
}

}  // namespace rlx::spooler
