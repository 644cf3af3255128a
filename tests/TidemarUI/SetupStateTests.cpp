#include "TidemarUI/State/SetupState.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(SetupState, OffersWhatIsNotDoneYet) {
  using enum SetupOffer;
  const struct {
    const char* name;
    SetupState state;  // Extension, login item, its approval, notifications.
    std::array<bool, 3> done;
    std::array<SetupOffer, 3> offers;
  } rows[] = {
      {"nothing done",
       {false, false, false, false},
       {false, false, false},
       {openExtensionManagement, enableAtLogin, requestNotifications}},
      {"all done", {true, true, false, true}, {true, true, true}, {none, none, none}},
      {"the login item waits for approval",
       {true, false, true, true},
       {true, false, true},
       {none, openLoginItemsSettings, none}},
      {"on, and still waiting for approval",
       {true, true, true, true},
       {true, true, true},
       {none, openLoginItemsSettings, none}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto steps = setupSteps(row.state);
    for (std::size_t i = 0; i < steps.size(); ++i) {
      EXPECT_EQ(steps[i].isDone, row.done[i]) << i;
      EXPECT_EQ(steps[i].offer, row.offers[i]) << i;
      EXPECT_EQ(steps[i].offerTitle.empty(), steps[i].offer == none) << i;
    }
    EXPECT_EQ(steps[0].hint.empty(), row.done[0]);
    EXPECT_TRUE(steps[2].hint.empty());
    SetupState refused = row.state;
    refused.wereNotificationsRefused = true;
    EXPECT_EQ(setupSteps(refused)[2].hint.empty(), row.done[2]) << "what is missing is told";
  }
}

}  // namespace
}  // namespace tidemar::testing
