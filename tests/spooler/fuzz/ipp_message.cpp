#include "spooler/fuzz/ipp_message.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace rlx::testing {

namespace {

/// A value that is good for its attribute.
struct Known {
  std::uint8_t tag;
  std::string_view name;
  std::string_view value;
};

std::string two_bytes(std::size_t value) {
  return {static_cast<char>(value >> 8U & 0xffU), static_cast<char>(value & 0xffU)};
}

/// Literals with NUL bytes in them.
template <std::size_t Size>
constexpr std::string_view bytes_of(const char (&text)[Size]) {
  return {text, Size - 1};
}

constexpr std::array kForOperations{
    Known{ipp::kName, "job-name", "a job"},
    Known{ipp::kName, "document-name", "a document"},
    Known{ipp::kMimeType, "document-format", "text/plain"},
    Known{ipp::kMimeType, "document-format", "application/vnd.rlx-lines"},
    Known{ipp::kMimeType, "document-format", "application/vnd.rlx"},
    Known{ipp::kMimeType, "document-format", "application/octet-stream"},
    Known{ipp::kMimeType, "document-format", "image/pwg-raster"},
    Known{ipp::kMimeType, "document-format", "image/urf"},
    Known{ipp::kKeyword, "compression", "none"},
    Known{ipp::kKeyword, "compression", "gzip"},
    Known{ipp::kKeyword, "compression", "deflate"},
    Known{ipp::kBoolean, "last-document", bytes_of("\1")},
    Known{ipp::kBoolean, "my-jobs", bytes_of("\1")},
    Known{ipp::kBoolean, "ipp-attribute-fidelity", bytes_of("\1")},
    Known{ipp::kKeyword, "which-jobs", "all"},
    Known{ipp::kKeyword, "which-jobs", "completed"},
    Known{ipp::kInteger, "limit", bytes_of("\0\0\0\5")},
    Known{ipp::kInteger, "first-index", bytes_of("\0\0\0\2")},
    Known{ipp::kInteger, "first-job-id", bytes_of("\0\0\0\2")},
    Known{ipp::kInteger, "printer-id", bytes_of("\0\0\0\1")},
    Known{ipp::kInteger, "notify-subscription-id", bytes_of("\0\0\0\1")},
    Known{ipp::kInteger, "notify-subscription-ids", bytes_of("\0\0\0\1")},
    Known{ipp::kInteger, "notify-sequence-numbers", bytes_of("\0\0\0\1")},
    Known{ipp::kInteger, "notify-lease-duration", bytes_of("\0\0\0\x3c")},
    Known{ipp::kKeyword, "requested-attributes", "all"},
    Known{ipp::kKeyword, "requested-attributes", "printer-description"},
    Known{ipp::kKeyword, "requested-attributes", "media-col-database"},
    Known{ipp::kKeyword, "job-hold-until", "indefinite"},
    Known{ipp::kKeyword, "identify-actions", "display"},
    Known{ipp::kText, "message", "words"},
};

constexpr std::array kForJobs{
    Known{ipp::kInteger, "copies", bytes_of("\0\0\0\2")},
    Known{ipp::kKeyword, "sides", "two-sided-long-edge"},
    Known{ipp::kKeyword, "media", "iso_a4_210x297mm"},
    Known{ipp::kKeyword, "media-source", "tray-1"},
    Known{ipp::kEnum, "orientation-requested", bytes_of("\0\0\0\4")},
    Known{ipp::kResolution, "printer-resolution", bytes_of("\0\0\0\xf0\0\0\0\xf0\3")},
    Known{ipp::kText, "form", "INVOICE"},
    Known{ipp::kText, "form", "none"},
    Known{ipp::kInteger, "lines-per-page", bytes_of("\0\0\0\x42")},
    Known{ipp::kInteger, "lpi", bytes_of("\0\0\0\6")},
    Known{ipp::kInteger, "cpi", bytes_of("\0\0\0\12")},
    Known{ipp::kKeyword, "rlx-undefined", "ubar"},
    Known{ipp::kBoolean, "rlx-extended", bytes_of("\1")},
    Known{ipp::kKeyword, "rlx-charset", "shift_jis"},
    Known{ipp::kKeyword, "rlx-charset", "iso-2022-jp"},
    Known{ipp::kInteger, "page-offset-x", bytes_of("\0\0\x0b\xb8")},
    Known{ipp::kInteger, "page-offset-y", bytes_of("\0\0\x0b\xb8")},
    Known{ipp::kKeyword, "job-hold-until", "indefinite"},
    Known{ipp::kKeyword, "job-hold-until", "no-hold"},
    Known{ipp::kInteger, "job-priority", bytes_of("\0\0\0\x32")},
    Known{ipp::kRange, "page-ranges", bytes_of("\0\0\0\1\0\0\0\2")},
    Known{ipp::kKeyword, "multiple-document-handling", "separate-documents-collated-copies"},
    Known{ipp::kEnum, "print-quality", bytes_of("\0\0\0\4")},
    Known{ipp::kKeyword, "print-color-mode", "monochrome"},
};

constexpr std::array kForPrinters{
    Known{ipp::kName, "printer-name", "another"},
    Known{ipp::kText, "printer-location", "here"},
    Known{ipp::kText, "printer-info", "words"},
    Known{ipp::kUri, "printer-geo-location", "geo:1,2"},
    Known{ipp::kText, "printer-organization", "words"},
    Known{ipp::kKeyword, "media-default", "iso_a4_210x297mm"},
    Known{ipp::kKeyword, "sides-default", "one-sided"},
    Known{ipp::kInteger, "copies-default", bytes_of("\0\0\0\1")},
    Known{ipp::kEnum, "orientation-requested-default", bytes_of("\0\0\0\3")},
    Known{ipp::kResolution, "printer-resolution-default", bytes_of("\0\0\0\xf0\0\0\0\xf0\3")},
    Known{ipp::kText, "form-default", "INVOICE"},
    Known{ipp::kInteger, "lpi-default", bytes_of("\0\0\0\6")},
    Known{ipp::kKeyword, "rlx-charset-default", "euc-jp"},
    Known{ipp::kBoolean, "rlx-extended-default", bytes_of("\1")},
    Known{ipp::kName, "system-name", "a system"},
    Known{ipp::kText, "system-location", "here"},
    Known{ipp::kInteger, "system-default-printer-id", bytes_of("\0\0\0\1")},
};

constexpr std::array kForSubscriptions{
    Known{ipp::kKeyword, "notify-pull-method", "ippget"},
    Known{ipp::kKeyword, "notify-events", "job-completed"},
    Known{ipp::kKeyword, "notify-events", "printer-state-changed"},
    Known{ipp::kInteger, "notify-lease-duration", bytes_of("\0\0\0\x3c")},
    Known{ipp::kInteger, "notify-time-interval", bytes_of("\0\0\0\1")},
    Known{ipp::kLanguage, "notify-natural-language", "en"},
    Known{ipp::kCharset, "notify-charset", "utf-8"},
    Known{0x30, "notify-user-data", "bytes"},
};

template <typename List>
void add_some(IppMessage& message, const List& list, Chance& chance) {
  for (std::size_t count = chance.below(5); count > 0; --count) {
    const Known& known = chance.of(list);
    add(message, known.tag, std::string(known.name), std::string(known.value));
  }
}

void begin_group(IppMessage& message, std::uint8_t tag) {
  message.pieces.push_back({tag});
}

void add_media_col(IppMessage& message, std::size_t depth) {
  add(message, ipp::kBegin, "media-col", "");
  for (std::size_t i = 0; i < depth; ++i) {
    add(message, ipp::kMember, "", "media-size");
    add(message, ipp::kBegin, "", "");
  }
  for (const char* const name : {"x-dimension", "y-dimension"}) {
    add(message, ipp::kMember, "", name);
    add(message, ipp::kInteger, "", ipp_integer(21000));
  }
  for (std::size_t i = 0; i < depth; ++i) {
    add(message, ipp::kCollectionEnd, "", "");
  }
  add(message, ipp::kMember, "", "media-source");
  add(message, ipp::kKeyword, "", "tray-2");
  add(message, ipp::kCollectionEnd, "", "");
}

std::string document(Chance& chance) {
  switch (chance.below(8)) {
    case 0:
      return {};
    case 1:
      return chance.bytes(chance.below(3000));
    case 2:
      return "RaS2" + chance.bytes(chance.below(2000));
    case 3:
      return "\033Q1;2;3;4;5/~12345A\n\346\227\245\nC\fD\f";
    case 4:
      return "UNIRAST" + chance.bytes(chance.below(2000));
    case 5:
      return "\x1f\x8b\x08" + chance.bytes(chance.below(200));
    case 6: {
      std::string lines;
      for (std::size_t line = chance.below(400); line > 0; --line) {
        lines += "LINE " + std::to_string(line) + '\n';
      }
      return lines + '\f';
    }
    default:
      return "ONE\fTWO\f";
  }
}

/// Of the operations of IPP and its extensions; Print-Job and its like come often.
std::uint16_t operation(Chance& chance) {
  constexpr std::array<std::uint16_t, 8> kOften{
      ipp::kPrintJob, ipp::kPrintJob,         0x04, ipp::kCreateJob, 0x06,
      0x14,           ipp::kGetJobAttributes, 0x0b};
  constexpr std::uint16_t kFirstOfCups = 0x4001;
  if (chance.once_in(2)) {
    return chance.of(kOften);
  }
  const auto number = static_cast<std::uint16_t>(chance.below(0x75));
  // PAPPL 1.3.1 deletes what other clients' threads still use when it is asked to end.
  const bool ends = number == ipp::kShutdownAllPrinters;
  const bool seldom = number == ipp::kDeletePrinter || number == 0x60 || number == 0x50;
  if (ends || (seldom && !chance.once_in(10))) {
    return ipp::kPrintJob;
  }
  return number < 0x70 ? number : static_cast<std::uint16_t>(kFirstOfCups + chance.below(0x10));
}

std::string printer_path(Chance& chance) {
  constexpr std::array<std::string_view, 6> kPaths{"office", "office", "office",
                                                   "away",   "nosuch", "another"};
  return std::string(chance.of(kPaths));
}

}  // namespace

std::string ipp_integer(std::uint32_t value) {
  return two_bytes(value >> 16U) + two_bytes(value & 0xffffU);
}

std::string IppMessage::bytes() const {
  std::string all = two_bytes(version) + two_bytes(operation) + ipp_integer(1);
  for (const IppPiece& piece : pieces) {
    all += static_cast<char>(piece.tag);
    if (piece.tag >= 0x10) {
      all +=
          two_bytes(piece.name.size()) + piece.name + two_bytes(piece.value.size()) + piece.value;
    }
  }
  return all + document;
}

void add(IppMessage& message, std::uint8_t tag, const std::string& name, const std::string& value) {
  message.pieces.push_back({tag, name, value});
}

IppMessage plain_message(std::uint16_t operation, int port, const std::string& printer) {
  const std::string server = "ipp://localhost:" + std::to_string(port);
  IppMessage message;
  message.operation = operation;
  begin_group(message, ipp::kOperationGroup);
  add(message, ipp::kCharset, "attributes-charset", "utf-8");
  add(message, ipp::kLanguage, "attributes-natural-language", "en");
  if (printer.empty()) {
    add(message, ipp::kUri, "system-uri", server + "/ipp/system");
  } else {
    add(message, ipp::kUri, "printer-uri", server + "/ipp/print/" + printer);
  }
  add(message, ipp::kName, "requesting-user-name", "tester");
  return message;
}

std::string path_of(const IppMessage& message, Chance& chance) {
  if (chance.once_in(12)) {
    constexpr std::array<std::string_view, 6> kOthers{
        "/", "/ipp/print", "/ipp/print/nosuch", "/ipp/system/x", "/forms", "/ipp/print/office/1"};
    return std::string(chance.of(kOthers));
  }
  for (const IppPiece& piece : message.pieces) {
    if (const std::size_t at = piece.value.find("/ipp/"); at != std::string::npos) {
      return piece.value.substr(at, 200);
    }
  }
  return "/ipp/system";
}

IppMessage good_message(const IppPlaces& places, Chance& chance) {
  const std::uint16_t number = operation(chance);
  const bool is_of_system = number == ipp::kCreatePrinter || number == ipp::kDeletePrinter ||
                            (number >= ipp::kFirstSystemOperation && number < 0x70);
  IppMessage message = plain_message(number, places.port, is_of_system ? "" : printer_path(chance));
  if (chance.once_in(2) || (number >= ipp::kSendDocument && number <= 0x0d && number != 0x0b)) {
    const std::size_t back = chance.below(chance.once_in(3) ? places.jobs + 3 : 12);
    const auto id = static_cast<std::uint32_t>(places.jobs + 2 > back ? places.jobs + 2 - back : 1);
    add(message, ipp::kInteger, "job-id", ipp_integer(id));
  }
  if (number == ipp::kPrintJob || number == ipp::kCreateJob) {
    add(message, ipp::kName, "job-name", "a job");
  }
  if (number == ipp::kSendDocument) {
    add(message, ipp::kBoolean, "last-document", "\1");
  }
  if (number == ipp::kDeletePrinter) {
    add(message, ipp::kInteger, "printer-id",
        ipp_integer(static_cast<std::uint32_t>(1 + chance.below(6))));
  }
  if (number == ipp::kCreatePrinter) {
    add(message, ipp::kKeyword, "printer-service-type", "print");
    add(message, ipp::kKeyword, "smi55357-driver", "rlx-400");
    add(message, ipp::kUri, "smi55357-device-uri", "socket://127.0.0.1:9");
  }
  add_some(message, kForOperations, chance);
  if (number == 0x16 || number == 0x17 || number == 0x58 || chance.once_in(20)) {
    begin_group(message, ipp::kSubscriptionGroup);
    add_some(message, kForSubscriptions, chance);
  }
  if (number < 0x08 || number == 0x14 || chance.once_in(10)) {
    begin_group(message, ipp::kJobGroup);
    add_some(message, kForJobs, chance);
    if (chance.once_in(4)) {
      add_media_col(message, chance.once_in(10) ? 1 + chance.below(3000) : 1);
    }
  }
  if (number == ipp::kSetPrinterAttributes || number == ipp::kCreatePrinter || number == 0x62) {
    begin_group(message, number == 0x62 ? ipp::kSystemGroup : ipp::kPrinterGroup);
    add_some(message, kForPrinters, chance);
  }
  begin_group(message, ipp::kEnd);
  if (number == ipp::kPrintJob || number == ipp::kSendDocument || chance.once_in(12)) {
    message.document = document(chance);
  }
  return message;
}

void spoil(IppMessage& message, Chance& chance) {
  auto& pieces = message.pieces;
  for (std::size_t times = chance.below(4); times > 0 && !pieces.empty(); --times) {
    const std::size_t at = chance.below(pieces.size());
    const auto place = pieces.begin() + static_cast<std::ptrdiff_t>(at);
    switch (chance.below(12)) {
      case 0:
        place->tag = static_cast<std::uint8_t>(chance.below(0x50));
        break;
      case 1:
        place->value.resize(chance.below(place->value.size() + 1));
        break;
      case 2:
        place->name = odd_text(chance);
        break;
      case 3:
        pieces.erase(place);
        break;
      case 4:
        std::swap(pieces[at], pieces[chance.below(pieces.size())]);
        break;
      case 5: {
        const IppPiece further{place->tag, "", place->value};
        pieces.insert(place, 1 + chance.below(chance.once_in(4) ? 4000 : 4), further);
        break;
      }
      case 6:
        place->value = chance.bytes(place->value.size());
        break;
      case 7: {
        constexpr std::array<std::uint32_t, 6> kNumbers{0,           1,           0x7fffffffU,
                                                        0x80000000U, 0xffffffffU, 65536};
        place->value = ipp_integer(chance.of(kNumbers));
        break;
      }
      case 8: {
        const IppPiece copy = *place;
        pieces.insert(place, copy);
        break;
      }
      default:
        place->value = odd_text(chance);
        break;
    }
  }
  if (chance.once_in(30)) {
    message.version = static_cast<std::uint16_t>(chance.below(0x10000));
  }
}

bool leaves_the_machine(const std::string& bytes) {
  constexpr std::array<std::string_view, 6> kNever{
      "file:", "snmp:", "usb:", "dnssd:", "addprinter", "network"};
  return std::any_of(kNever.begin(), kNever.end(), [&bytes](std::string_view word) {
    return bytes.find(word) != std::string::npos;
  });
}

}  // namespace rlx::testing
