// Drives an engine over the real disk by lines of text, so that another process can torture it:
//
//     tortureDriver {database} < commands > results
//
// A line is a word and its arguments, each percent-encoded; "!" stands for no value. Each result is
// a line of the same form, and "done" ends those of one command.

#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Trash/PercentEncoding.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Store/StoredWords.h"

namespace tidemar {
namespace {

using Words = std::vector<std::string>;

constexpr std::string_view nothing = "!";

void print(std::initializer_list<std::string_view> words) {
  std::string line;
  for (const std::string_view word : words) {
    if (!line.empty()) line += ' ';
    line += word.empty() ? std::string(nothing) : percentEncoded(word);
  }
  std::cout << line << std::endl;
}

Date date(const std::string& text) {
  return {std::stod(text)};
}

std::optional<std::int64_t> numberOrNothing(const std::string& text) {
  return text == nothing ? std::nullopt : std::optional<std::int64_t>(std::stoll(text));
}

std::string text(Date date) {
  std::ostringstream stream;
  stream << std::setprecision(17) << date.secondsSince1970;
  return stream.str();
}

class Driver {
 public:
  explicit Driver(const std::string& database)
      : _engine(std::make_unique<Store>(database), _disk) {}

  void perform(const Words& words) {
    const std::string& command = words.front();
    if (command == "add") {
      const Folder added = _engine.addFolder(FileURL(words.at(1)), date(words.at(2)));
      return print({"folder", std::to_string(*added.id), added.path});
    }
    const std::int64_t id = std::stoll(words.at(1));
    if (command == "undo") return undo(id, date(words.at(2)));
    if (command == "status") return status(_engine.status(id, date(words.at(2))));
    const auto folder = [&] { return _engine.store().folder(id).value(); };
    if (command == "rules") {
      Folder changed = folder();
      changed.settings = {.maxAgeDays = numberOrNothing(words.at(2)),
                          .sizeLimit = numberOrNothing(words.at(3)),
                          .automatic = words.at(4) == "1",
                          .emptyOnRestart = words.at(5) == "1",
                          .disposal = disposalFromRawValue(words.at(6)).value()};
      if (words.at(7) != nothing) changed.lastRunAt = date(words.at(7));
      _engine.store().update(changed);
    } else if (command == "tag") {
      _engine.setTemporary(folder(), words.at(2) == "1", date(words.at(3)));
    } else if (command == "forget") {
      _engine.forget(folder());
    } else if (command == "run") {
      RunGate gate;
      finish(_engine.run(id, date(words.at(2)), gate));
    } else if (command == "undoAll") {
      for (const JournalEntry& entry : _engine.store().journalOfFolder(id)) {
        if (!entry.undoneAt) undo(*entry.id, date(words.at(2)));
      }
    } else {
      throw std::invalid_argument("no such command");
    }
  }

 private:
  static void status(const FolderStatus& status) {
    for (const Item& item : status.items) {
      print({"item", item.url.lastPathComponent(), item.freshness ? text(*item.freshness) : "",
             std::to_string(item.size)});
    }
    for (const Removal& removal : status.dueNow) {
      print({"due", removal.item->url.lastPathComponent(), StoredWords::text(removal.reasons)});
    }
    for (const Upcoming& upcoming : status.upcoming) {
      print({"upcoming", upcoming.item->url.lastPathComponent(), text(upcoming.date)});
    }
  }

  static void finish(const RunResult& result) {
    for (const JournalEntry& entry : result.journal)
      print({"removed", entry.name});
    for (const RemovalFailure& failure : result.failures) {
      try {
        std::rethrow_exception(failure.error);
      } catch (const std::exception& error) {
        print({"failed", failure.item.url.lastPathComponent(), error.what()});
      }
    }
  }

  void undo(std::int64_t entryID, Date now) {
    try {
      _engine.undo(entryID, now);
      print({"undone", std::to_string(entryID)});
    } catch (const std::exception& error) {
      print({"notUndone", std::to_string(entryID), error.what()});
    }
  }

  DiskFileManager _disk;
  Engine _engine;
};

Words split(const std::string& line) {
  Words words;
  std::istringstream stream(line);
  for (std::string word; stream >> word;)
    words.push_back(percentDecoded(word).value());
  return words;
}

}  // namespace
}  // namespace tidemar

int main(int argumentCount, char** arguments) {
  using namespace tidemar;
  if (argumentCount != 2) return EXIT_FAILURE;
  try {
    Driver driver(arguments[1]);
    for (std::string line; std::getline(std::cin, line);) {
      const Words words = split(line);
      try {
        driver.perform(words);
      } catch (const std::exception& error) {
        print({"error", words.front(), error.what()});
      }
      print({"done"});
    }
  } catch (const std::exception& error) {
    print({"error", "open", error.what()});
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
