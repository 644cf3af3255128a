#include "FakeServices.h"
#include "TidemarKit/Store/Store.h"

namespace tidemar::testing {
namespace {

/// A model whose detached work is done and delivered in the order that the test asks for, and the
/// user, who acts on what the screen shows at the moment.
class OverlappingWorld : public ModelWorld {
 public:
  OverlappingWorld() {
    const std::string old = aged(91);
    edited = makeTemporary("/a", {"back" + old});
    disk.draw("/b/\n/c/\n  old" + old + "\n/d/\n  old" + old);
    disk.tags("/c") = {"Tidemar: Temporary"};
    runCycle();
    disk.draw("/a/old" + old + "\n/b/old" + old);
    switched = *QCoro::waitFor(model->addFolder(FileURL("/b")))->id;
    ordered.becomeManual();
    look();
  }

  const std::vector<std::function<void()>> acts = {
      [this] { keep(model->refreshReports()); },
      [this] { keep(model->addFolder(FileURL("/c"))); },
      [this] { edit(); },
      [this] {
        if (const FolderReport* report = model->reportForFolder(switched))
          keep(model->setTemporary(report->folder, !isTemporary(*report)));
      },
      [this] {
        // Another program doesn't wait for the user: it comes between any two steps.
        ordered.start([this] { tagAsAnotherProgram(); }, [this] { keep(model->refreshReports()); });
      },
      [this] {
        if (const FolderReport* report = model->reportForFolder(switched))
          keep(model->removeFolder(report->folder));
      },
      [this] { keep(model->putBack({1})); },
      [this] { runCycleUnlessOneRuns(); },
      [this] { keep(model->followLink("tidemar://folder?path=/d")); },
      [this] { keep(model->finishCommands()); },
  };

  void step(std::size_t index) {
    if (_cyclesReading == index) {
      _cyclesReading.reset();
    } else if (_cyclesReading && index < *_cyclesReading) {
      --*_cyclesReading;
    }
    ordered.take(index);
    look();
  }

  void expectAgreement() {
    EXPECT_EQ(ordered.stepCount(), 0U);
    EXPECT_TRUE(_cycle.isReady());
    EXPECT_EQ(_unfinished, 0);

    const Store store(directory.path("data/Tidemar/tidemar.sqlite"));
    std::vector<Folder> shown;
    std::vector<std::string> temporary;
    for (const FolderReport& report : model->reports()) {
      shown.push_back(report.folder);
      const bool isTagged = !disk.tags(report.folder.path).empty();
      EXPECT_EQ(isTemporary(report), isTagged) << report.folder.path;
      if (isTagged) temporary.push_back(report.folder.path);
    }
    EXPECT_EQ(shown, store.folders());
    EXPECT_EQ(model->journal(), store.journalSince(Date{0}));
    EXPECT_EQ(sharedDefaults.stringArray("temporaryFolderPaths"), temporary);
    EXPECT_EQ(store.folder(edited)->settings, _typed);
    if (!store.folder(switched)) {
      EXPECT_EQ(disk.tags("/b"), std::vector<std::string>{});
    }
    for (const std::string& alert : alerts.told)
      EXPECT_EQ(alert.find("put back"), std::string::npos) << alert;
  }

  std::int64_t edited = 0;
  std::int64_t switched = 0;

 private:
  template <class Result>
  void keep(QCoro::Task<Result> task) {
    ++_unfinished;
    count(std::move(task));
  }
  template <class Result>
  QCoro::Task<void> count(QCoro::Task<Result> task) {
    co_await task;
    --_unfinished;
  }

  static QCoro::Task<void> nothing() { co_return; }

  void runCycleUnlessOneRuns() {
    // A call during a cycle is dropped.
    if (!_cycle.isReady()) return keep(model->runBackgroundCycle());
    ++_cyclesBegun;
    _cyclesReading = ordered.stepCount();
    _cycle = model->runBackgroundCycle();
  }

  /// Types a number that was never there, now into one field and now into the other.
  void edit() {
    const TemporarySettings seen = model->reportForFolder(edited)->folder.settings;
    TemporarySettings wanted = seen;
    ++_edits;
    if (_edits % 2 == 0) {
      wanted.maxAgeDays = _typed.maxAgeDays = 30 + _edits;
    } else {
      wanted.sizeLimit = _typed.sizeLimit = 1'000'000 + _edits;
    }
    keep(model->changeSettings(edited, seen, wanted));
  }

  void tagAsAnotherProgram() {
    const Store store(directory.path("data/Tidemar/tidemar.sqlite"));
    if (!store.folder(switched) || !disk.tags("/b").empty()) return;
    disk.tags("/b") = {"Tidemar: Temporary"};
    // A cycle that hasn't read yet may find it.
    _seen["/b"].isClearable = true;
    _seen["/b"].since = _cyclesReading ? _cyclesBegun - 1 : _cyclesBegun;
  }

  /// Notes when a folder became known and Temporary, and expects that what was cleared was cleared
  /// by a cycle that began later, and that no reading is shown in place of a later one.
  void look() {
    // The free space tells at which moment a reading was made.
    EXPECT_GE(model->freeSpace(), _shownMoment) << "an older reading replaced a newer one";
    _shownMoment = model->freeSpace();
    disk.capacity.available = ++_moment;

    const Store store(directory.path("data/Tidemar/tidemar.sqlite"));
    const std::vector<Folder> rows = store.folders();
    for (const char* path : {"/a", "/b", "/c", "/d"}) {
      const bool isKnown = std::ranges::find(rows, path, &Folder::path) != rows.end();
      const bool isClearable = isKnown && !disk.tags(path).empty();
      const bool isThere = disk.exists(std::string(path) + "/old");
      Seen& seen = _seen[path];
      if (isClearable && !seen.isClearable) seen.since = _cyclesBegun;
      if (seen.isThere && !isThere) {
        EXPECT_LT(seen.since, _cyclesBegun) << path << " wasn't Temporary when the cycle began";
      }
      seen.isClearable = isClearable;
      seen.isThere = isThere;
    }
  }

  struct Seen {
    bool isClearable = false;
    bool isThere = false;
    int since = 0;
  };

  std::map<std::string, Seen> _seen;
  QCoro::Task<void> _cycle = nothing();
  std::int64_t _moment = 1000;
  std::int64_t _shownMoment = 0;
  int _cyclesBegun = 0;
  std::optional<std::size_t> _cyclesReading;  ///< The step in which the cycle makes its list.
  int _unfinished = 0;
  int _edits = 0;
  TemporarySettings _typed;
};

/// The full number where the environment asks for it.
int numberOf(int few, int all) {
  return std::getenv("TIDEMAR_ALL_ORDERS") == nullptr ? few : all;
}

TEST(Overlap, TwoActsAgreeInAnyOrder) {
  const int bits = numberOf(1, 6);
  for (std::size_t acts = 0; acts < 100; ++acts) {
    for (int order = 0; order < 1 << bits; ++order) {
      SCOPED_TRACE("acts " + std::to_string(acts) + ", order " + std::to_string(order));
      OverlappingWorld world;
      world.acts.at(acts / 10)();
      world.acts.at(acts % 10)();
      for (int turn = 0; world.ordered.stepCount() > 0; ++turn) {
        const bool takesNewest = ((order >> turn % bits) & 1) != 0;
        world.step(takesNewest ? world.ordered.stepCount() - 1 : 0);
      }
      world.expectAgreement();
      if (HasFailure()) return;
    }
  }
}

TEST(Overlap, FiveActsAgreeInRandomOrders) {
  const int seeds = numberOf(60, 10'000);
  for (int seed = 0; seed < seeds; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(static_cast<std::uint32_t>(seed));
    const auto below = [&](std::size_t bound) { return random() % bound; };
    OverlappingWorld world;
    for (int acts = 0; acts < 5 || world.ordered.stepCount() > 0;) {
      const std::size_t steps = world.ordered.stepCount();
      if (acts < 5 && (steps == 0 || below(3) == 0)) {
        world.now = world.now + 1;
        world.acts.at(below(10))();
        ++acts;
      } else {
        world.step(below(steps));
      }
    }
    world.expectAgreement();
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace tidemar::testing
