#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "spooler/fuzz/chance.h"

namespace rlx::testing {

/// A piece of an IPP message: the begin of a group (a tag below 0x10), or a value with its name,
/// which is empty for a further value and inside a collection.
struct IppPiece {
  std::uint8_t tag = 0;
  std::string name{};
  std::string value{};
};

/// An IPP request before it becomes bytes. Nothing in it need be right.
struct IppMessage {
  std::uint16_t version = 0x0200;
  std::uint16_t operation = 0;
  std::vector<IppPiece> pieces{};
  std::string document{};

  std::string bytes() const;
};

/// Where the requests go.
struct IppPlaces {
  int port = 0;
  std::size_t jobs = 0;  ///< so many have been submitted
};

/// The path for a POST of the message.
std::string path_of(const IppMessage& message, Chance& chance);

/// A request with nothing wrong in it, of any operation that stays on this machine.
IppMessage good_message(const IppPlaces& places, Chance& chance);

/// Puts something wrong into it: tags, names, values, order, counts.
void spoil(IppMessage& message, Chance& chance);

/// A request for "office", or for the system without a printer.
IppMessage plain_message(std::uint16_t operation, int port, const std::string& printer);
void add(IppMessage& message, std::uint8_t tag, const std::string& name, const std::string& value);
std::string ipp_integer(std::uint32_t value);

/// Asks printers and files outside of the fuzzer's own: such a request must not be sent.
bool leaves_the_machine(const std::string& bytes);

namespace ipp {
inline constexpr std::uint8_t kOperationGroup = 0x01;
inline constexpr std::uint8_t kJobGroup = 0x02;
inline constexpr std::uint8_t kEnd = 0x03;
inline constexpr std::uint8_t kPrinterGroup = 0x04;
inline constexpr std::uint8_t kSubscriptionGroup = 0x06;
inline constexpr std::uint8_t kSystemGroup = 0x0a;
inline constexpr std::uint8_t kInteger = 0x21;
inline constexpr std::uint8_t kBoolean = 0x22;
inline constexpr std::uint8_t kEnum = 0x23;
inline constexpr std::uint8_t kResolution = 0x32;
inline constexpr std::uint8_t kRange = 0x33;
inline constexpr std::uint8_t kBegin = 0x34;
inline constexpr std::uint8_t kCollectionEnd = 0x37;
inline constexpr std::uint8_t kText = 0x41;
inline constexpr std::uint8_t kName = 0x42;
inline constexpr std::uint8_t kKeyword = 0x44;
inline constexpr std::uint8_t kUri = 0x45;
inline constexpr std::uint8_t kCharset = 0x47;
inline constexpr std::uint8_t kLanguage = 0x48;
inline constexpr std::uint8_t kMimeType = 0x49;
inline constexpr std::uint8_t kMember = 0x4a;

inline constexpr std::uint16_t kPrintJob = 0x02;
inline constexpr std::uint16_t kCreateJob = 0x05;
inline constexpr std::uint16_t kSendDocument = 0x06;
inline constexpr std::uint16_t kGetJobAttributes = 0x09;
inline constexpr std::uint16_t kGetPrinterAttributes = 0x0b;
inline constexpr std::uint16_t kResumePrinter = 0x11;
inline constexpr std::uint16_t kSetPrinterAttributes = 0x13;
inline constexpr std::uint16_t kEnablePrinter = 0x22;
inline constexpr std::uint16_t kReleaseHeldNewJobs = 0x26;
inline constexpr std::uint16_t kCancelJobs = 0x38;
inline constexpr std::uint16_t kCreatePrinter = 0x4c;
inline constexpr std::uint16_t kDeletePrinter = 0x4e;
inline constexpr std::uint16_t kFirstSystemOperation = 0x4f;
inline constexpr std::uint16_t kEnableAllPrinters = 0x5a;
inline constexpr std::uint16_t kResumeAllPrinters = 0x61;
inline constexpr std::uint16_t kShutdownAllPrinters = 0x63;
}  // namespace ipp

}  // namespace rlx::testing
