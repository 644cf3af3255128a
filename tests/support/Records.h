#pragma once

#include <string>

#include "TidemarKit/Store/Folder.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar::testing {

inline Folder folderAt(const std::string& path, double createdAt = 1000) {
  Folder folder;
  folder.bookmark = "bookmark";
  folder.path = path;
  folder.createdAt = Date{createdAt};
  folder.lastRunAt = Date{createdAt};
  return folder;
}

inline JournalEntry entryOf(const Folder& folder, const std::string& name,
                            double performedAt = 2000) {
  JournalEntry entry;
  entry.folderID = folder.id.value();
  entry.name = name;
  entry.size = 12;
  entry.reasons = {Rule::age};
  entry.performedAt = Date{performedAt};
  return entry;
}

}  // namespace tidemar::testing
