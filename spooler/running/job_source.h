#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "running/cancellation.h"
#include "running/descriptor.h"

namespace rlx::spooler {

/// The bytes of a job, as they go to the filter.
class JobSource {
 public:
  virtual ~JobSource() = default;

  /// @param room  not empty.
  /// @return how many bytes were put there; 0 at the end, and when the job is cancelled.
  /// @throws std::exception, with a text for people, when they cannot be had.
  virtual std::size_t read(std::span<std::uint8_t> room) = 0;
};

/// What a descriptor gives, from where it stands.
class DescriptorSource : public JobSource {
 public:
  /// @param descriptor  somebody else's, and open as long as this lives; so is `cancellation`.
  DescriptorSource(int descriptor, const Cancellation& cancellation)
      : descriptor_(descriptor), cancellation_(cancellation) {}

  std::size_t read(std::span<std::uint8_t> room) override;

 private:
  int descriptor_;
  const Cancellation& cancellation_;
};

/// A text, and what another source gives behind it.
class TextInFront : public JobSource {
 public:
  /// @param rest  must stay as long as this lives.
  TextInFront(std::string text, JobSource& rest) : text_(std::move(text)), rest_(rest) {}

  std::size_t read(std::span<std::uint8_t> room) override;

 private:
  std::string text_;
  std::size_t next_ = 0;
  JobSource& rest_;
};

/// Text that cannot be converted.
class ConversionFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A sequence stands in what was to be text.
class SequenceInText : public ConversionFault {
 public:
  using ConversionFault::ConversionFault;
};

/// Text in another encoding, as UTF-8. Text only: ESC and FS, which begin sequences, are refused,
/// for the data of sequences would suffer (an encoding may use ESC for itself, as ISO-2022-JP
/// does).
class ConvertedText : public JobSource {
 public:
  /// @param charset  a name that is_known_charset takes.
  /// @param text     must stay as long as this lives.
  ConvertedText(const std::string& charset, JobSource& text);
  ~ConvertedText() override;
  ConvertedText(const ConvertedText&) = delete;
  ConvertedText& operator=(const ConvertedText&) = delete;

  /// @throws ConversionFault that names the offset, from 0, of the byte at which the text is no
  ///         text of its encoding.
  /// @throws SequenceInText that names the offset at which a sequence begins; in an encoding that
  ///         writes ESC and FS otherwise than ASCII, of a byte in front of it.
  std::size_t read(std::span<std::uint8_t> room) override;

 private:
  std::size_t convert_some(std::span<std::uint8_t> room);
  std::size_t convert(std::size_t count, std::span<std::uint8_t> room);
  std::size_t end(std::span<std::uint8_t> room);
  std::size_t next_piece(std::size_t after) const;
  void refill();

  std::string charset_;
  JobSource& text_;
  void* conversion_;
  std::vector<std::uint8_t> small_;    ///< converted for a room that was too small for it
  std::size_t next_small_ = 0;         ///< which of them comes next
  std::vector<std::uint8_t> waiting_;  ///< of the text, not converted yet
  std::size_t next_ = 0;               ///< which of them comes next
  std::uint64_t offset_ = 0;           ///< of that one in the text
  bool ended_ = false;
  bool shifted_back_ = false;  ///< the conversion was told of the end
};

}  // namespace rlx::spooler
