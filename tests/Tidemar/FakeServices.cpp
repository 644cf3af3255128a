#include "FakeServices.h"

namespace tidemar::testing {

ModelWorld::ModelWorld(Executor* executor) {
  model =
      std::make_unique<AppModel>(Services{.executor = executor == nullptr ? ordered : *executor,
                                          .fileManager = disk,
                                          .notifications = notifications,
                                          .loginItem = loginItem,
                                          .finderExtension = finderExtension,
                                          .alerts = alerts,
                                          .standardDefaults = standardDefaults,
                                          .sharedDefaults = sharedDefaults,
                                          .currentDate = [this] { return Date{now}; },
                                          .secondsSinceBoot = [this] { return now - clockStep; },
                                          .currentCalendar = [this] { return calendar; }});
}

std::int64_t ModelWorld::makeTemporary(const std::string& path,
                                       const std::vector<std::string>& items) {
  std::string drawing = path + "/\n";
  for (const std::string& item : items)
    drawing += "  " + item + "\n";
  disk.draw(drawing);
  const Folder folder = QCoro::waitFor(model->addFolder(FileURL(path))).value();
  QCoro::waitFor(model->setTemporary(folder, true));
  return *folder.id;
}

std::string ModelWorld::aged(double days) {
  return " @" + std::to_string(static_cast<std::int64_t>(start - days * secondsPerDay));
}

std::string ModelWorld::removedNames() {
  std::vector<JournalEntry> entries = model->journal();
  std::ranges::sort(entries, {}, &JournalEntry::id);
  std::string names;
  for (const JournalEntry& entry : entries)
    names += (names.empty() ? "" : " ") + entry.name;
  return names;
}

}  // namespace tidemar::testing
