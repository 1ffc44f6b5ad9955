#include "rlx-lpd/lpd_arguments.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "mapping/words.h"

namespace rlx::lpd {

namespace {

/// Takes an option's value. @return false when it cannot be used.
using Take = bool (*)(const std::string& value, LpdArguments& arguments);

struct LongOption {
  std::string_view name;
  bool has_value;
  Take take;
};

bool put_number(const std::string& value, unsigned& number) {
  const auto read = spooler::whole_number(value, std::numeric_limits<unsigned>::max());
  number = read.value_or(number);
  return read.has_value();
}

bool take_mode(const std::string& value, LpdArguments& arguments) {
  return put_number(value, arguments.queue.emulation_mode);
}

bool take_resolution(const std::string& value, LpdArguments& arguments) {
  return put_number(value, arguments.queue.resolution);
}

bool take_capabilities(const std::string& value, LpdArguments& arguments) {
  arguments.queue.capabilities = value;
  return true;
}

bool take_flags(const std::string& value, LpdArguments& arguments) {
  arguments.queue.filter_flags = value;
  return true;
}

bool take_forms(const std::string& value, LpdArguments& arguments) {
  arguments.queue.form_directories.push_back(value);
  return true;
}

bool take_options(const std::string& value, LpdArguments& arguments) {
  arguments.queue_options = value;
  return true;
}

bool take_cancel_seconds(const std::string& value, LpdArguments& arguments) {
  constexpr auto kMost = static_cast<unsigned>(LpdArguments::kMostCancelTime.count());
  const auto seconds = spooler::whole_number(value, kMost);
  arguments.cancel_time = std::chrono::seconds(seconds.value_or(0));
  return seconds.has_value();
}

bool take_verbose(const std::string& /*value*/, LpdArguments& arguments) {
  arguments.verbose = true;
  return true;
}

bool take_help(const std::string& /*value*/, LpdArguments& arguments) {
  arguments.task = LpdArguments::Task::help;
  return true;
}

bool take_version(const std::string& /*value*/, LpdArguments& arguments) {
  arguments.task = LpdArguments::Task::version;
  return true;
}

constexpr std::array<LongOption, 10> kLongOptions{{
    {"--mode", true, take_mode},
    {"--resolution", true, take_resolution},
    {"--capabilities", true, take_capabilities},
    {"--flags", true, take_flags},
    {"--forms", true, take_forms},
    {"--options", true, take_options},
    {"--cancel-seconds", true, take_cancel_seconds},
    {"--verbose", false, take_verbose},
    {"--help", false, take_help},
    {"--version", false, take_version},
}};

/// A letter of LPRng's that matters here, and where its value goes.
struct Letter {
  char letter;
  std::string LpdArguments::*value;
};

constexpr std::array<Letter, 4> kLetters{{
    {'Z', &LpdArguments::job_options},
    {'e', &LpdArguments::data_file},
    {'P', &LpdArguments::printer},
    {'j', &LpdArguments::job_number},
}};

/// The one letter without a value: a job that was sent with lpr -b or -l.
constexpr char kBinary = 'c';

/// What the mapping calls the settings of a queue, and how they are written here.
struct QueueName {
  std::string_view mapping;
  std::string_view here;
};

constexpr std::array<QueueName, 5> kQueueNames{{
    {"option ", ""},
    {"rlxEmulationMode", "--mode"},
    {"rlxResolution", "--resolution"},
    {"rlxFilterFlags", "--flags"},
    {"rlxFormDirectories", "--forms"},
}};

void replace_all(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

std::string text_of_queue_fault(const spooler::OptionFault& fault) {
  std::string text = spooler::text_of(fault);
  for (const QueueName& name : kQueueNames) {
    replace_all(text, name.mapping, name.here);
  }
  replace_all(text, "rlxCapabilities' (", "--capabilities (");
  return text;
}

/// Goes through the words.
class Reader {
 public:
  explicit Reader(const std::vector<std::string>& words) : words_(words) {}

  LpdArguments read();

 private:
  void read_word(const std::string& word);
  void read_long_option(const std::string& word);
  void read_letter(const std::string& word);
  void refuse(const std::string& why);
  bool has_next() const { return next_ < words_.size(); }

  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
  LpdArguments arguments_;
};

/// The first fault is the one that is told.
void Reader::refuse(const std::string& why) {
  if (arguments_.fault.empty()) {
    arguments_.fault = why;
  }
}

void Reader::read_long_option(const std::string& word) {
  const std::size_t equals = word.find('=');
  const std::string_view name = std::string_view(word).substr(0, equals);
  const auto* const option =
      std::find_if(kLongOptions.begin(), kLongOptions.end(),
                   [name](const LongOption& known) { return known.name == name; });
  if (option == kLongOptions.end() || (!option->has_value && equals != std::string::npos)) {
    refuse("unknown option " + word);
    return;
  }
  std::string value;
  if (equals != std::string::npos) {
    value = word.substr(equals + 1);
  } else if (option->has_value) {
    if (!has_next()) {
      refuse(word + " needs a value");
      return;
    }
    value = words_[next_++];
  }
  if (!option->take(value, arguments_)) {
    refuse(std::string(name) + "=" + value + ": wanted is a whole number");
  }
}

void Reader::read_letter(const std::string& word) {
  std::string value = word.substr(2);
  if (value.empty() && word[1] != kBinary && has_next()) {
    value = words_[next_++];
  }
  for (const Letter& known : kLetters) {
    if (known.letter == word[1]) {
      arguments_.*known.value = value;
    }
  }
}

void Reader::read_word(const std::string& word) {
  if (word.starts_with("--")) {
    read_long_option(word);
  } else if (word.starts_with("-") && word.size() > 1) {
    read_letter(word);
  }
}

LpdArguments Reader::read() {
  while (has_next()) {
    read_word(words_[next_++]);
  }
  const auto faults = spooler::check_queue(arguments_.queue);
  if (!faults.empty()) {
    refuse(text_of_queue_fault(faults.front()));
  }
  return arguments_;
}

}  // namespace

LpdArguments read_arguments(const std::vector<std::string>& words) {
  return Reader(words).read();
}

}  // namespace rlx::lpd
