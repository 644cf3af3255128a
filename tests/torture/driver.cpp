// Drives an engine over the real disk by lines of text, so that another process can torture it:
//
//     tortureDriver {database} < commands > results
//
// A line is a word and its arguments, each percent-encoded; "!" stands for no value. Each result is
// a line of the same form, and "done" ends those of one command.

#include <cstdlib>
#include <exception>
#include <functional>
#include <initializer_list>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Trash/PercentEncoding.h"
#include "TidemarKit/Engine/Engine.h"

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

std::string text(RuleSet rules) {
  std::string result;
  for (const Rule rule : allRules) {
    if (!rules.contains(rule)) continue;
    if (!result.empty()) result += '+';
    result += rawValue(rule);
  }
  return result;
}

void printError(std::string_view word, std::string_view subject, const std::exception& error) {
  print({word, subject, error.what()});
}

class Driver {
 public:
  explicit Driver(const std::string& database)
      : _engine(std::make_unique<Store>(database), _disk) {}

  void perform(const Words& words) { _commands.at(words.front())(words); }

 private:
  std::int64_t id(const Words& words) const { return std::stoll(words.at(1)); }

  Folder folder(const Words& words) const { return _engine.store().folder(id(words)).value(); }

  void add(const Words& words) {
    const Folder added = _engine.addFolder(FileURL(words.at(1)), date(words.at(2)));
    print({"folder", std::to_string(*added.id), added.path});
  }

  void setRules(const Words& words) {
    Folder changed = folder(words);
    changed.settings = {.maxAgeDays = numberOrNothing(words.at(2)),
                        .sizeLimit = numberOrNothing(words.at(3)),
                        .automatic = words.at(4) == "1",
                        .emptyOnRestart = words.at(5) == "1",
                        .disposal = disposalFromRawValue(words.at(6)).value()};
    if (words.at(7) != nothing) changed.lastRunAt = date(words.at(7));
    _engine.store().update(changed);
  }

  void tag(const Words& words) {
    _engine.setTemporary(folder(words), words.at(2) == "1", date(words.at(3)));
  }

  void status(const Words& words) {
    const FolderStatus status = _engine.status(id(words), date(words.at(2)));
    print({"status", status.url.path(), status.isTagged ? "tagged" : "untagged",
           status.isProtectedRoot ? "protected" : "free"});
    for (const Item& item : status.items) {
      print({"item", item.url.lastPathComponent(), item.freshness ? text(*item.freshness) : "",
             std::to_string(item.size)});
    }
    for (const Removal& removal : status.dueNow) {
      print({"due", removal.item->url.lastPathComponent(), text(removal.reasons)});
    }
    for (const Upcoming& upcoming : status.upcoming) {
      print({"upcoming", upcoming.item->url.lastPathComponent(), text(upcoming.date)});
    }
  }

  void run(const Words& words) {
    RunGate gate;
    const RunResult result = _engine.run(id(words), date(words.at(2)), gate);
    for (const JournalEntry& entry : result.journal) {
      print({"removed", entry.name, std::to_string(*entry.id), entry.binnedPath.value_or("")});
    }
    for (const RemovalFailure& failure : result.failures) {
      try {
        std::rethrow_exception(failure.error);
      } catch (const std::exception& error) {
        printError("failed", failure.item.url.lastPathComponent(), error);
      }
    }
  }

  void undo(std::int64_t entryID, Date now) {
    try {
      _engine.undo(entryID, now);
      print({"undone", std::to_string(entryID)});
    } catch (const std::exception& error) {
      printError("notUndone", std::to_string(entryID), error);
    }
  }

  void undoAll(const Words& words) {
    for (const JournalEntry& entry : _engine.store().journalOfFolder(id(words))) {
      if (!entry.undoneAt) undo(*entry.id, date(words.at(2)));
    }
  }

  const std::map<std::string, std::function<void(const Words&)>> _commands = {
      {"add", [this](const Words& words) { add(words); }},
      {"rules", [this](const Words& words) { setRules(words); }},
      {"tag", [this](const Words& words) { tag(words); }},
      {"status", [this](const Words& words) { status(words); }},
      {"run", [this](const Words& words) { run(words); }},
      {"undo", [this](const Words& words) { undo(id(words), date(words.at(2))); }},
      {"undoAll", [this](const Words& words) { undoAll(words); }},
      {"forget", [this](const Words& words) { _engine.forget(folder(words)); }},
  };
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

int drive(const std::string& database) {
  std::optional<Driver> driver;
  try {
    driver.emplace(database);
  } catch (const std::exception& error) {
    printError("error", "open", error);
    return EXIT_FAILURE;
  }
  for (std::string line; std::getline(std::cin, line);) {
    const Words words = split(line);
    if (words.empty()) continue;
    try {
      driver->perform(words);
    } catch (const std::exception& error) {
      printError("error", words.front(), error);
    }
    print({"done"});
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace tidemar

int main(int argumentCount, char** arguments) {
  return argumentCount == 2 ? tidemar::drive(arguments[1]) : EXIT_FAILURE;
}
