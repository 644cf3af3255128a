#include "TidemarKit/Engine/Failure.h"
#include "TidemarUI/State/FailureLine.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(FailureLine, NamesWhatItIsAboutWhateverItsBytes) {
  const auto line = [](EngineFailure::Case failure) {
    return failureLine(EngineFailure(std::move(failure)), "Trash");
  };
  EXPECT_EQ(line(EngineFailure::ChangedSincePlanned{"/data/caf\xE9"}),
            "caf\uFFFD changed, so it was left alone.");
  EXPECT_EQ(line(EngineFailure::OriginalPathTaken{"/data/Old/notes.txt"}),
            "Something new is already called notes.txt in Old, so it was left in the Trash.");
  EXPECT_EQ(line(EngineFailure::GoneFromBin{"/trash/a"}), "An item is no longer in the Trash.");
  EXPECT_EQ(failureLine(std::runtime_error("Couldn't read “a\xFF”."), "Trash"),
            "Couldn't read “a\uFFFD”.");
}

TEST(FailureLine, AnItemThatStayedIsNamedByItsName) {
  const auto line = [](const std::exception& error) {
    return leftItemLine("/data/old", error, "Bin");
  };
  EXPECT_EQ(line(PlatformError("remove", FileURL("/data/old"), EPERM)),
            "old: couldn't remove: Operation not permitted.");
  EXPECT_EQ(line(PlatformError("remove", FileURL("/data/old/part"), EPERM)),
            "old: couldn't remove part: Operation not permitted.");
  EXPECT_EQ(line(std::runtime_error("No room.")), "old: No room.");
  EXPECT_EQ(line(EngineFailure(EngineFailure::ChangedSincePlanned{"/data/old"})),
            "old changed, so it was left alone.");
}

}  // namespace
}  // namespace tidemar::testing
