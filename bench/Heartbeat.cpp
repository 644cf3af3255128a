// How long the window stands still while it is given a new state: a timer of 5 ms beats on the main
// thread, and the longest time between two beats is printed. States are made and thrown away beside
// the main thread, as in the program.
// Usage: Heartbeat

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <future>
#include <memory>

#include "TidemarUI/State/MainState.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/QuietStyle.h"
#include "bench/SampleReports.h"

namespace tidemar {
namespace {

using SharedState = std::shared_ptr<const MainState>;

/// Everything that a state is made of.
struct Reading {
  std::vector<FolderReport> reports;
  std::vector<JournalEntry> journal;
  std::int64_t freeSpace = 250'000'000'000;
};

SharedState stateOf(const Reading& reading) {
  return std::make_shared<const MainState>(mainState(reading.reports, reading.journal,
                                                     reading.freeSpace, false, sampleNow,
                                                     Formats("en_US", "Europe/Berlin"), "Bin"));
}

class Heartbeat {
 public:
  Heartbeat() {
    _timer.setTimerType(Qt::PreciseTimer);
    _timer.setInterval(5);
    QObject::connect(&_timer, &QTimer::timeout, [this] { beat(); });
    _timer.start();
  }

  /// Does this on the main thread, and everything that follows from it; answers the longest time
  /// between two beats in milliseconds.
  double longestGap(const std::function<void()>& action) {
    wait(50);
    _longest = 0;
    QTimer::singleShot(0, action);
    wait(400);
    return static_cast<double>(_longest) / 1e6;
  }

  static void wait(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
  }

 private:
  void beat() {
    if (_sinceBeat.isValid()) _longest = std::max(_longest, _sinceBeat.nsecsElapsed());
    _sinceBeat.start();
  }

  QTimer _timer;
  QElapsedTimer _sinceBeat;
  qint64 _longest = 0;
};

/// The states that the screens go through, each made out of the reading before.
struct Step {
  const char* name;
  std::function<void(Reading&)> change;
};

std::vector<Step> steps() {
  return {
      {"first", [](Reading&) {}},
      {"the same again", [](Reading&) {}},
      {"every row differs",
       [](Reading& reading) {
         reading.freeSpace /= 2;
         for (FolderReport& report : reading.reports)
           report.status->dueNow.clear();
       }},
      {"every row elsewhere", [](Reading& reading) { std::ranges::reverse(reading.reports); }},
      {"every other gone",
       [](Reading& reading) {
         std::erase_if(reading.reports,
                       [](const FolderReport& report) { return *report.folder.id % 2 == 1; });
       }},
      {"all gone", [](Reading& reading) { reading.reports.clear(); }},
  };
}

/// Walks a screen through the states of a reading. No state is given back by the screen alone.
void measure(const char* title, Reading reading, QWidget& screen,
             const std::function<void(const SharedState&)>& show,
             const std::vector<std::pair<const char*, std::function<void()>>>& actions) {
  Heartbeat heartbeat;
  std::vector<SharedState> states;
  screen.show();
  Heartbeat::wait(200);
  std::printf("\n%s\n", title);
  for (const Step& step : steps()) {
    step.change(reading);
    auto making = std::async(std::launch::async, [&] { return stateOf(reading); });
    while (making.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
      Heartbeat::wait(5);
    states.push_back(making.get());
    std::printf("  %-22s %7.1f ms\n", step.name,
                heartbeat.longestGap([&] { show(states.back()); }));
    for (const auto& [name, action] : actions)
      std::printf("    %-20s %7.1f ms\n", name, heartbeat.longestGap(action));
  }
  screen.hide();
}

void measureScreens(const char* title, const Reading& reading) {
  MainView main(Formats("en_US", "Europe/Berlin"), "Bin");
  main.resize(820, 560);
  main.setSelection(MainSelection::overview());
  measure((std::string(title) + ", main window").c_str(), reading, main,
          [&](const SharedState& state) { main.setState(state); },
          {{"to a folder's page", [&] { main.setSelection(MainSelection::folder(2)); }},
           {"to the overview", [&] { main.setSelection(MainSelection::overview()); }}});

  MenuBarView popover;
  popover.resize(350, 900);
  measure((std::string(title) + ", popover").c_str(), reading, popover,
          [&](const SharedState& state) {
            popover.setState({state, &state->overview});
            popover.sizeHint();
          },
          {});
}

std::vector<JournalEntry> week(int count) {
  std::vector<JournalEntry> journal;
  for (int index = 0; index < count; ++index) {
    JournalEntry entry;
    entry.id = index + 1;
    entry.folderID = index % 20;
    // The newest run took a fifth of all.
    entry.performedAt = sampleNow - (index % 5) * 3600.0;
    journal.push_back(entry);
  }
  return journal;
}

}  // namespace
}  // namespace tidemar

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  using namespace tidemar;
  adoptQuietStyle();
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  measureScreens("20 folders of 10 items",
                 {.reports = sampleReports(20, 10, sampleSettings(14, true), 21), .journal = {}});
  measureScreens("1,000 folders of 10 items",
                 {.reports = sampleReports(1000, 10, sampleSettings(14, true), 21), .journal = {}});
  measureScreens("20 folders of 100,000 items, 500,000 cleared in a week",
                 {.reports = sampleReports(20, 100'000, sampleSettings(14, true), 21),
                  .journal = week(500'000)});
}
