#include "rlx-printer-app/printer_device.h"

#include <cups/http.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace rlx::printer_app {

namespace {

constexpr int kUsualPort = 9100;
constexpr int kConnectMilliseconds = 10000;
constexpr int kRetryMilliseconds = 2000;
constexpr int kLookMilliseconds = 20;

/// The parts of a device's URI.
struct Place {
  std::string host;
  int port = kUsualPort;
  std::string path;
};

/// A connection that PAPPL has asked for, until a job takes it.
struct SocketDevice {
  Place place;
  std::mutex taking;
  spooler::Descriptor socket;
};

struct FreeAddresses {
  void operator()(http_addrlist_t* list) const { httpAddrFreeList(list); }
};
using Addresses = std::unique_ptr<http_addrlist_t, FreeAddresses>;

bool read_place(const char* uri, Place& place) {
  std::array<char, 32> scheme{};
  std::array<char, 256> user{};
  std::array<char, 256> host{};
  std::array<char, 1024> path{};
  int port = 0;
  const http_uri_status_t status = httpSeparateURI(
      HTTP_URI_CODING_ALL, uri, scheme.data(), static_cast<int>(scheme.size()), user.data(),
      static_cast<int>(user.size()), host.data(), static_cast<int>(host.size()), &port, path.data(),
      static_cast<int>(path.size()));
  place.host = host.data();
  place.port = port == 0 ? kUsualPort : port;
  place.path = path.data();
  return status >= HTTP_URI_STATUS_OK;
}

std::mutex counting;
int at_printers = 0;
bool are_closed = false;

spooler::Descriptor connect_to(const Place& place) {
  const Addresses addresses(
      httpAddrGetList(place.host.c_str(), AF_UNSPEC, std::to_string(place.port).c_str()));
  int number = -1;
  if (addresses == nullptr ||
      httpAddrConnect2(addresses.get(), &number, kConnectMilliseconds, nullptr) == nullptr) {
    return {};
  }
  fcntl(number, F_SETFD, FD_CLOEXEC);
  fcntl(number, F_SETFL, fcntl(number, F_GETFL) | O_NONBLOCK);
  return spooler::Descriptor(number);
}

SocketDevice* data_of(pappl_device_t* device) {
  return static_cast<SocketDevice*>(papplDeviceGetData(device));
}

std::atomic<pappl_system_t*> told{nullptr};

std::string away_words(const Place& place) {
  return "the printer at " + place.host + ':' + std::to_string(place.port) +
         " cannot be reached; the job waits until it answers";
}

/// The numbers of the printers that have this address.
std::vector<int> printers_at(pappl_system_t* system, const std::string& uri) {
  struct Search {
    const std::string& uri;
    std::vector<int> found;
  } search{uri, {}};
  papplSystemIteratePrinters(
      system,
      [](pappl_printer_t* printer, void* data) {
        auto& wanted = *static_cast<Search*>(data);
        if (wanted.uri == papplPrinterGetDeviceURI(printer)) {
          wanted.found.push_back(papplPrinterGetID(printer));
        }
      },
      &search);
  return search.found;
}

/// The number of the job that has the printer; 0 when there is none.
int job_that_waits(pappl_printer_t* printer) {
  int number = 0;
  papplPrinterIterateActiveJobs(
      printer,
      [](pappl_job_t* job, void* found) {
        if (papplJobGetState(job) == IPP_JSTATE_PROCESSING && !papplJobIsCanceled(job)) {
          *static_cast<int*>(found) = papplJobGetID(job);
        }
      },
      &number, 1, 0);
  return number;
}

/// PAPPL opens a printer with its lock in hand, and does not say for which one. This waits for that
/// lock: PAPPL lets it go for some seconds until it tries again, and the printer is "stopped" then.
void tell_of_absence(pappl_system_t* system, const std::string& uri, const std::string& words) {
  for (const int id : printers_at(system, uri)) {
    pappl_printer_t* const printer = papplSystemFindPrinter(system, nullptr, id, nullptr);
    const int job = printer == nullptr ? 0 : job_that_waits(printer);
    if (job != 0 && papplPrinterGetState(printer) == IPP_PSTATE_STOPPED) {
      papplPrinterSetReasons(printer, PAPPL_PREASON_OFFLINE, PAPPL_PREASON_NONE);
      papplJobSetMessage(papplPrinterFindJob(printer, job), "%s", words.c_str());
    }
  }
}

bool open_socket(pappl_device_t* device, const char* uri, const char* /*name*/) {
  auto socket = std::make_unique<SocketDevice>();
  if (!read_place(uri, socket->place) || socket->place.host.empty()) {
    papplDeviceError(device, "Bad device URI '%s'.", uri);
    return false;
  }
  socket->socket = connect_to(socket->place);
  if (!socket->socket.is_open()) {
    papplDeviceError(device, "Unable to connect to '%s:%d': %s", socket->place.host.c_str(),
                     socket->place.port, std::strerror(errno));
    if (pappl_system_t* const system = told; system != nullptr) {
      std::thread(tell_of_absence, system, std::string(uri), away_words(socket->place)).detach();
    }
    return false;
  }
  papplDeviceSetData(device, socket.release());
  return true;
}

void close_socket(pappl_device_t* device) {
  delete data_of(device);
  papplDeviceSetData(device, nullptr);
}

/// A file is opened by the job; here it is only looked at.
bool look_at_file(pappl_device_t* device, const char* uri, const char* /*name*/) {
  Place place;
  const bool good = read_place(uri, place) && place.path.size() > 1;
  if (!good) {
    papplDeviceError(device, "Bad device URI '%s'.", uri);
  }
  return good;
}

void close_nothing(pappl_device_t* /*device*/) {}

/// Jobs write by themselves.
ssize_t write_nothing(pappl_device_t* /*device*/, const void* /*bytes*/, size_t /*count*/) {
  return -1;
}

/// What printers say is not looked at.
ssize_t read_nothing(pappl_device_t* /*device*/, void* /*bytes*/, size_t /*count*/) {
  return 0;
}

pappl_preason_t no_reasons(pappl_device_t* /*device*/) {
  return PAPPL_PREASON_NONE;
}

/// True when the other side has not ended a connection that nobody has used yet.
bool is_alive(const spooler::Descriptor& socket) {
  char byte = 0;
  return socket.is_open() && (recv(socket.number(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0 ||
                              errno == EAGAIN || errno == EWOULDBLOCK);
}

/// Waits until the printer has taken what is on its way. @return false when it does not.
bool is_taken(int socket, const spooler::Cancellation& give_up) {
  while (true) {
    int error = 0;
    socklen_t size = sizeof(error);
    getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
    int on_the_way = 0;
    if (error != 0 || ioctl(socket, SIOCOUTQ, &on_the_way) != 0) {
      return false;
    }
    if (on_the_way == 0) {
      return true;
    }
    if (!give_up.pause(kLookMilliseconds)) {
      return false;
    }
  }
}

/// @param copy  from 1: the number of files that would have the same name.
std::string job_file(pappl_job_t* job, int copy) {
  std::array<char, 64> name{};
  std::snprintf(name.data(), name.size(),
                copy == 1 ? "/job-%05d-%09d.rlx" : "/job-%05d-%09d-%d.rlx",
                papplPrinterGetID(papplJobGetPrinter(job)), papplJobGetID(job), copy);
  return name.data();
}

/// Opens a new file for the job. @param path  the folder's; becomes the file's.
spooler::Descriptor open_in_folder(pappl_job_t* job, std::string& path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  const std::string folder = std::exchange(path, {});
  for (int copy = 1;; ++copy) {
    path = folder + job_file(job, copy);
    spooler::Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.is_open() || errno != EEXIST) {
      return file;
    }
  }
}

}  // namespace

void add_devices() {
  papplDeviceAddScheme("socket", PAPPL_DEVTYPE_SOCKET, nullptr, open_socket, close_socket,
                       read_nothing, write_nothing, no_reasons, nullptr);
  papplDeviceAddScheme("file", PAPPL_DEVTYPE_FILE, nullptr, look_at_file, close_nothing,
                       read_nothing, write_nothing, no_reasons, nullptr);
}

void tell_absence(pappl_system_t* system) {
  told = system;
}

JobDevice::JobDevice(pappl_job_t* job, pappl_device_t* device, const spooler::Cancellation& give_up,
                     std::optional<AtPrinter>& at_printer)
    : job_(job),
      device_(device),
      give_up_(give_up),
      is_file_(
          std::string_view(papplPrinterGetDeviceURI(papplJobGetPrinter(job))).starts_with("file:")),
      at_printer_(at_printer) {}

int jobs_at_printers() {
  const std::lock_guard lock(counting);
  return at_printers;
}

void close_printers() {
  const std::lock_guard lock(counting);
  are_closed = true;
}

AtPrinter::AtPrinter() {
  const std::lock_guard lock(counting);
  is_there_ = !are_closed;
  at_printers += is_there_ ? 1 : 0;
}

AtPrinter::~AtPrinter() {
  const std::lock_guard lock(counting);
  at_printers -= is_there_ ? 1 : 0;
}

bool JobDevice::open() {
  return (is_file_ ? open_file() : connect()) && take_place();
}

bool JobDevice::take_place() {
  while (!at_printer_.emplace().is_there()) {
    if (!give_up_.pause(kRetryMilliseconds)) {
      return false;
    }
  }
  return true;
}

bool JobDevice::fail(const std::string& words) {
  words_ = words;
  papplLogJob(job_, PAPPL_LOGLEVEL_ERROR, "%s", words.c_str());
  return false;
}

bool JobDevice::open_file() {
  Place place;
  read_place(papplPrinterGetDeviceURI(papplJobGetPrinter(job_)), place);
  path_ = place.path;
  struct stat status {};
  const bool is_folder = stat(path_.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  // No other file is made: a folder that was moved away would become one.
  printer_ = is_folder
                 ? open_in_folder(job_, path_)
                 : spooler::Descriptor(::open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
  return printer_.is_open() || fail(path_ + " cannot be opened: " + std::strerror(errno));
}

bool JobDevice::connect() {
  SocketDevice& device = *data_of(device_);
  {
    const std::lock_guard lock(device.taking);
    printer_ = std::move(device.socket);
  }
  while (!is_alive(printer_)) {
    printer_ = connect_to(device.place);
    if (!printer_.is_open()) {
      say_away();
      if (!give_up_.pause(kRetryMilliseconds)) {
        return false;
      }
    }
  }
  say_there();
  return true;
}

void JobDevice::say_away() {
  papplPrinterSetReasons(papplJobGetPrinter(job_), PAPPL_PREASON_OFFLINE, PAPPL_PREASON_NONE);
  papplJobSetMessage(job_, "%s", away_words(data_of(device_)->place).c_str());
}

void JobDevice::say_there() {
  pappl_printer_t* const printer = papplJobGetPrinter(job_);
  if ((papplPrinterGetReasons(printer) & PAPPL_PREASON_OFFLINE) != 0) {
    papplPrinterSetReasons(printer, PAPPL_PREASON_NONE, PAPPL_PREASON_OFFLINE);
  }
  if (papplJobGetMessage(job_) != nullptr) {
    papplJobSetMessage(job_, "Job printing.");
  }
}

bool JobDevice::write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t put = is_file_
                            ? ::write(printer_.number(), bytes.data(), bytes.size())
                            : send(printer_.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (put >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(put));
    } else if (errno != EINTR && errno != EAGAIN) {
      const std::string why = std::strerror(errno);
      return fail(is_file_ ? path_ + " cannot be written: " + why
                           : "the connection broke (" + why + ")");
    } else if (!give_up_.wait_for(printer_.number(), POLLOUT)) {
      return fail("it was given up, for it takes nothing");
    }
  }
  return true;
}

bool JobDevice::finish() {
  const bool taken = is_file_ || is_taken(printer_.number(), give_up_);
  printer_.reset();
  return taken || fail("the connection broke");
}

}  // namespace rlx::printer_app
