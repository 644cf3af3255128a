#include <stdexcept>

#include <gtest/gtest.h>

#include "TidemarKit/Engine/Failure.h"
#include "TidemarUI/State/FailureLine.h"

namespace tidemar {
namespace {

TEST(FailureLine, IsASentenceForEachFailure) {
  struct Row {
    EngineFailure::Case failure;
    const char* line;
  };
  const Row rows[] = {
      {EngineFailure::FolderNotFound{7}, "Tidemar no longer knows about that folder."},
      {EngineFailure::JournalEntryNotFound{7}, "Tidemar no longer knows about that folder."},
      {EngineFailure::ChangedSincePlanned{"/data/Old/notes.txt"},
       "notes.txt changed, so it was left alone."},
      {EngineFailure::ChangedSincePlanned{"/data/caf\xE9"},
       "caf\uFFFD changed, so it was left alone."},
      {EngineFailure::GoneFromBin{"/trash/a"}, "An item is no longer in the Trash."},
      {EngineFailure::OriginalPathTaken{"/data/Old/notes.txt"},
       "Something new is already called notes.txt in Old, so it was left in the Trash."},
      {EngineFailure::DeletedPermanently{}, "Items deleted permanently can't be put back."},
      {EngineFailure::AlreadyUndone{}, "Those items were already put back."},
  };
  for (const Row& row : rows)
    EXPECT_EQ(failureLine(EngineFailure(row.failure), "Trash"), row.line);
  EXPECT_EQ(failureLine(std::runtime_error("Couldn't read “a\xFF”."), "Trash"),
            "Couldn't read “a\uFFFD”.");
}

TEST(FailureLine, PutBackTellsEachSentenceOnceAndSorted) {
  EXPECT_EQ(putBackFailureText({"b.", "a.", "b."}), "a.\nb.");
  EXPECT_EQ(putBackFailureText({"a.", "a."}), "a.");
}

TEST(FailureLine, TitlesNameTheFolder) {
  EXPECT_EQ(failureTitle(addingFolder("/data/Old/")), "Couldn't add Old");
  EXPECT_EQ(failureTitle(settingTemporary("/data/Old", true)), "Couldn't make Old Temporary");
  EXPECT_EQ(failureTitle(settingTemporary("/data/Old", false)),
            "Couldn't make the folder plain again");
  EXPECT_EQ(failureTitle(removingFolder("/data/Old")), "Couldn't remove Old");
  EXPECT_EQ(failureTitle(switchingExtension("Nemo", true)),
            "Couldn't turn on the extension for Nemo");
  EXPECT_EQ(failureTitle(changingSettings()), "Couldn't save the folder's settings");
}

}  // namespace
}  // namespace tidemar
