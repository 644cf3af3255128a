// Does one half of a comparison:
//
//     measure {command} {arguments}
//
// A command that prepares something first prints what its work alone took, as a line of JSON:
// {"cpu": seconds, "wall": seconds} or {"value": number}. Of the others the whole process counts.
// `bench/compare` says what stands against what.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/Locale/Formats.h"
#include "TidemarCore/Forecast.h"
#include "TidemarCore/NameOrder.h"
#include "TidemarCore/RemovalPlanning.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Inventory.h"
#include "TidemarKit/System.h"
#include "TidemarUI/State/MainState.h"
#include "bench/SampleReports.h"

namespace {
bool flushesRecords = true;
}

/// Stands before the C library's: the Trash is measured with and without its flush.
extern "C" int fsync(int descriptor) {
  return flushesRecords ? static_cast<int>(syscall(SYS_fsync, descriptor)) : 0;
}

namespace tidemar {
namespace {

using Arguments = std::vector<std::string>;

constexpr int million = 1'000'000;

// Measuring.

double seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void printTimes(double cpu, double wall) {
  std::cout << R"({"cpu": )" << cpu << R"(, "wall": )" << wall << "}" << std::endl;
}

void printValue(double value) {
  std::cout << R"({"value": )" << value << "}" << std::endl;
}

template <class Work>
void timed(Work work) {
  const double cpu = seconds(CLOCK_PROCESS_CPUTIME_ID);
  const double wall = seconds(CLOCK_MONOTONIC);
  [[maybe_unused]] const auto result = work();
  printTimes(seconds(CLOCK_PROCESS_CPUTIME_ID) - cpu, seconds(CLOCK_MONOTONIC) - wall);
}

/// CPU seconds of one of so many rounds.
template <class Work>
double cpuOfOne(int rounds, Work work) {
  const double start = seconds(CLOCK_PROCESS_CPUTIME_ID);
  for (int round = 0; round < rounds; ++round)
    work();
  return (seconds(CLOCK_PROCESS_CPUTIME_ID) - start) / rounds;
}

// Reading.

void items(const Arguments& arguments) {
  const DiskFileManager disk;
  timed([&] { return Inventory::items(*disk.openFolder(FileURL(arguments.at(0)))); });
}

/// The least that a walk can do: the kernel's listing and one statx an entry.
std::int64_t walkBare(const FileDescriptor& directory) {
  constexpr std::size_t bufferSize = 32 * 1024;
  alignas(dirent64) char buffer[bufferSize];
  std::int64_t blocks = 0;
  for (;;) {
    const ssize_t size = getdents64(directory.get(), buffer, bufferSize);
    if (size < 0) throw std::system_error(errno, std::generic_category(), "getdents64");
    if (size == 0) return blocks;
    for (ssize_t offset = 0; offset < size;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer + offset);
      offset += entry->d_reclen;
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") continue;
      struct statx values {};
      if (statx(directory.get(), entry->d_name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                STATX_BASIC_STATS | STATX_BTIME, &values) != 0)
        throw std::system_error(errno, std::generic_category(), "statx");
      blocks += static_cast<std::int64_t>(values.stx_blocks);
      if (entry->d_type == DT_DIR) {
        blocks += walkBare(FileDescriptor(openat(directory.get(), entry->d_name,
                                                 O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
      }
    }
  }
}

void bare(const Arguments& arguments) {
  timed([&] {
    return walkBare(FileDescriptor(open(arguments.at(0).c_str(), O_RDONLY | O_DIRECTORY)));
  });
}

// Ordering.

/// Names and dates in random order. `kind` is random (dates differ), tied (half of the items share
/// 1,000 dates), ascii or cjk (one date; plain names or Chinese ones).
FolderSnapshot sampleSnapshot(std::string_view kind) {
  constexpr unsigned sharedDates = 1000;
  std::mt19937_64 random(1);
  EntryURLs urls(FileURL("/home/ada/Downloads"));
  std::vector<Item> items;
  items.reserve(million);
  for (int i = 0; i < million; ++i) {
    std::string name = "file-" + std::to_string(random());
    if (kind == "cjk") {
      name.clear();
      for (int character = 0; character < 8; ++character) {  // U+4E00 to U+9FFF
        const std::uint64_t scalar = 0x4E00 + random() % 0x5200;
        name +=
            {static_cast<char>(0xE0 | scalar >> 12), static_cast<char>(0x80 | (scalar >> 6 & 0x3F)),
             static_cast<char>(0x80 | (scalar & 0x3F))};
      }
    }
    double age = 0;
    if (kind == "random" || (kind == "tied" && i % 2 == 0)) {
      age = static_cast<double>(random() % 10'000'000'000) / 1000;
    } else if (kind == "tied") {
      age = static_cast<double>(random() % sharedDates) * 10'000;
    }
    items.push_back({urls.make(name), sampleNow - age, 4096});
  }
  return {.isTagged = true, .isProtectedRoot = false, .items = std::move(items)};
}

void order(const Arguments& arguments) {
  const FolderSnapshot snapshot = sampleSnapshot(arguments.at(0));
  std::vector<DatedItem> dated;
  dated.reserve(million);
  for (const Item& item : snapshot.items)
    dated.push_back({&item, *item.freshness});
  timed([&] {
    sortByDateThenName(dated, &DatedItem::freshness);
    return dated.front().freshness;
  });
}

void due(const Arguments& arguments) {
  const FolderSnapshot snapshot = sampleSnapshot(arguments.at(0));
  TemporarySettings settings;
  settings.sizeLimit = 4096LL * million / 2;
  const RunConditions conditions{.now = sampleNow,
                                 .availableCapacity = 1,
                                 .totalCapacity = 2,
                                 .bootTime = {},
                                 .lastRunAt = {}};
  timed([&] { return removalsDueNow(snapshot, settings, conditions); });
}

/// The peer: what a program would write that knows only bytes.
void sort(const Arguments& arguments) {
  const FolderSnapshot snapshot = sampleSnapshot(arguments.at(0));
  std::vector<std::pair<double, std::string>> dated;
  std::vector<std::string_view> names;
  for (const Item& item : snapshot.items) {
    dated.emplace_back(item.freshness->secondsSince1970, item.url.lastPathComponent());
    names.push_back(item.url.lastPathComponent());
  }
  timed([&] {
    if (arguments.at(0) == "ascii" || arguments.at(0) == "cjk") {
      std::ranges::sort(names);
    } else {
      std::ranges::sort(dated);
    }
    return 0;
  });
}

// The engine.

constexpr double daysUntilAllIsDue = 100;

Date after(double days) {
  const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
  return {now.count() + days * secondsPerDay};
}

/// An engine over a database, and one folder that is Temporary, with the rules of a new one.
struct OneFolder {
  OneFolder(const std::string& database, const std::string& path)
      : engine(std::make_unique<Store>(database), disk) {
    const Folder folder = engine.addFolder(FileURL(path), after(0));
    engine.setTemporary(folder, true, after(0));
    id = *folder.id;
  }

  DiskFileManager disk;
  Engine engine;
  std::int64_t id = 0;
};

void add(const Arguments& arguments) {
  OneFolder(arguments.at(0), arguments.at(1));
}

void status(const Arguments& arguments) {
  OneFolder folder(arguments.at(0), arguments.at(1));
  std::cout << folder.engine.status(folder.id, after(0)).items.size() << '\n';
}

void run(const Arguments& arguments) {
  OneFolder folder(arguments.at(0), arguments.at(1));
  RunGate gate;
  const RunResult result = folder.engine.run(folder.id, after(daysUntilAllIsDue), gate);
  if (!result.failures.empty()) std::rethrow_exception(result.failures.front().error);
}

/// Bytes that a status holds for an item, beside the bytes of its name.
void memory(const Arguments& arguments) {
  OneFolder folder(arguments.at(1), arguments.at(2));
  const auto held = [] {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
  };
  const Date now = after(arguments.at(0) == "all" ? daysUntilAllIsDue : 0);
  const double before = held();
  const FolderStatus status = folder.engine.status(folder.id, now);
  double bytes = held() - before;
  for (const Item& item : status.items)
    bytes -= static_cast<double>(item.url.lastPathComponent().size());
  printValue(bytes / static_cast<double>(status.items.size()));
}

// Removing, without engine and journal.

void removeAll(const std::string& path, Disposal disposal) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path))
    names.push_back(entry.path().filename());
  const DiskFileManager disk;
  const std::unique_ptr<OpenFolder> place = disk.openFolder(FileURL(path));
  for (const std::string& name : names) {
    const Inventory::Look look = Inventory::item(*place, name, disposal);
    if (look.state.obstacle) throw PlatformError(*look.state.obstacle);
    if (disposal == Disposal::bin) {
      place->trashItem(look.state);
    } else {
      place->removeItem(look.state);
    }
  }
}

void bin(const Arguments& arguments) {
  flushesRecords = false;
  removeAll(arguments.at(0), Disposal::bin);
}

void deletePermanently(const Arguments& arguments) {
  removeAll(arguments.at(0), Disposal::delete_);
}

// One folder's fixed cost, and the screens.

/// Milliseconds that a folder costs before anything in it is read.
void folders(const Arguments& arguments) {
  constexpr int rounds = 1000;
  const DiskFileManager disk;
  const std::string bookmark = disk.openFolder(FileURL(arguments.at(0)))->bookmarkData();
  printValue(1000 * cpuOfOne(rounds, [&] {
               const OpenedBookmark opened = disk.openBookmark(bookmark);
               System::capacity(*opened.folder);
               std::vector<FileURL> fixedPlaces = disk.mountedVolumeURLs();
               for (FileURL& url : disk.systemDirectoryURLs())
                 fixedPlaces.push_back(std::move(url));
               if (System::isProtectedRoot(*opened.folder, disk.homeDirectoryForCurrentUser(),
                                           fixedPlaces))
                 throw std::runtime_error("a protected root is no sample");
             }));
}

/// Microseconds an item of 1,000 folders of 1,000 items each, their ages spread over some days, for
/// the states of the main window and of the popover. Quiet: an item in thirteen goes this week;
/// full: every item does; listed: every item is due, goes this week or on restart.
void states(const Arguments& arguments) {
  constexpr int count = 1000;
  const std::string& kind = arguments.at(0);
  const int age = kind == "quiet" ? 90 : kind == "full" ? 7 : 14;
  const TemporarySettings settings = sampleSettings(age, kind == "listed");
  const double days = kind == "quiet" ? 90 : kind == "full" ? 7 : 21;
  const std::vector<FolderReport> reports = sampleReports(count, count, settings, days);

  const Formats formats("en_US", "Europe/Berlin");
  constexpr std::int64_t freeSpace = 250'000'000'000;
  printValue(cpuOfOne(3, [&] {
    const MainState main = mainState(reports, {}, freeSpace, false, sampleNow, formats, "Bin");
    if (main.folders.size() != count) throw std::runtime_error("folders are missing");
  }));
}

// A panel with a tray.

/// An X server's tray of the embedding protocol, as far as one icon needs it.
class Tray {
 public:
  Tray() : _connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
    if (xcb_connection_has_error(connection()) != 0) throw std::runtime_error("no display");
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection())).data;
    _window = xcb_generate_id(connection());
    xcb_create_window(connection(), XCB_COPY_FROM_PARENT, _window, screen->root, 0, 0, 32, 32, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_map_window(connection(), _window);
    xcb_set_selection_owner(connection(), _window, atom("_NET_SYSTEM_TRAY_S0"), XCB_CURRENT_TIME);
    _request = atom("_NET_SYSTEM_TRAY_OPCODE");
  }

  /// Waits until a program asks for its icon to be shown, and shows it.
  void waitForIcon() {
    xcb_flush(connection());
    while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
        xcb_wait_for_event(connection()), &std::free}) {
      if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) continue;
      const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
      if (message->type != _request || message->data.data32[1] != 0) continue;
      xcb_reparent_window(connection(), message->data.data32[2], _window, 0, 0);
      xcb_map_window(connection(), message->data.data32[2]);
      xcb_flush(connection());
      return;
    }
    throw std::runtime_error("the display went away");
  }

 private:
  xcb_connection_t* connection() const { return _connection.get(); }

  xcb_atom_t atom(std::string_view name) const {
    const auto cookie =
        xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection(), cookie, nullptr), &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  }

  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> _connection;
  xcb_window_t _window = 0;
  xcb_atom_t _request = 0;
};

/// Starts a program and prints its process id and what it took until its icon stands in the tray.
/// Ends it when the standard input ends.
void tray(const Arguments& arguments) {
  Tray tray;
  std::vector<char*> words;
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  const double start = seconds(CLOCK_MONOTONIC);
  pid_t process = 0;
  if (const int code = posix_spawn(&process, words[0], nullptr, nullptr, words.data(), environ))
    throw std::system_error(code, std::generic_category(), arguments.at(0));
  tray.waitForIcon();
  clockid_t clock{};
  clock_getcpuclockid(process, &clock);
  const double cpu = seconds(clock);
  const double wall = seconds(CLOCK_MONOTONIC) - start;
  std::cout << process << '\n';
  printTimes(cpu, wall);
  while (std::cin.get() != std::char_traits<char>::eof())
    continue;
  kill(process, SIGTERM);
  waitpid(process, nullptr, 0);
}

const std::map<std::string_view, std::function<void(const Arguments&)>> commands = {
    {"nothing", [](const Arguments&) {}},
    {"items", items},
    {"bare", bare},
    {"order", order},
    {"due", due},
    {"sort", sort},
    {"add", add},
    {"status", status},
    {"run", run},
    {"memory", memory},
    {"bin", bin},
    {"delete", deletePermanently},
    {"folders", folders},
    {"states", states},
    {"tray", tray},
};

}  // namespace
}  // namespace tidemar

int main(int argc, char** argv) {
  try {
    tidemar::commands.at(argc > 1 ? argv[1] : "")(tidemar::Arguments(argv + 2, argv + argc));
  } catch (const std::exception& error) {
    std::cerr << "measure: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
