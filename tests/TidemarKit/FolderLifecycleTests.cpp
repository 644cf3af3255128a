#include "TidemarKit/EngineWorld.h"

namespace tidemar::testing {
namespace {

class FolderLifecycle : public ::testing::Test, public EngineWorld {
 protected:
  void SetUp() override { files.draw("/f/\n/g/\n/link -> /f"); }

  const std::string tag{TemporaryTag::name};
  const TemporarySettings rules{7, 100, true, true, Disposal::delete_};
  const TemporarySettings noRules{std::nullopt, std::nullopt, false, false, Disposal::bin};
};

TEST_F(FolderLifecycle, anAddedFolderIsKnownOnceByWhateverPathAndNothingElseHappens) {
  Folder folder = engine.addFolder(FileURL("/link"), added);
  EXPECT_EQ(folder.path, "/f");
  EXPECT_EQ(folder.settings, (TemporarySettings{90, std::nullopt, false, false, Disposal::bin}));
  EXPECT_EQ(folder.createdAt, added);
  EXPECT_EQ(folder.lastRunAt, added);
  EXPECT_EQ(row(folder), folder);
  EXPECT_EQ(engine.resolve(folder).place->url(), FileURL("/f")) << "by its bookmark";

  folder.settings = rules;
  engine.store().update(folder);
  for (const char* path : {"/f", "/link", "/f/"})
    EXPECT_EQ(engine.addFolder(FileURL(path), now), folder) << path;
  files.operations().clear();
  EXPECT_NE(engine.addFolder(FileURL("/g"), now).id, folder.id);
  EXPECT_EQ(std::ranges::count(files.operations(), "resolve"), 0) << "no other disk is asked";
  EXPECT_EQ(engine.store().folders().size(), 2U);
  EXPECT_EQ(files.changes(), Lines{});
}

TEST_F(FolderLifecycle, aFolderAddedTwiceAtOnceIsKnownOnce) {
  // The other add comes between this one's look at the rows and its own row.
  for (const char* other : {"/f", "/link"}) {
    EngineWorld world;
    world.files.draw("/f/\n/link -> /f\n/g/");
    Folder first;
    world.files.before("bookmark /f",
                       [&] { first = world.engine.addFolder(FileURL(other), added); });
    EXPECT_EQ(world.engine.addFolder(FileURL("/f"), now), first) << other;
    EXPECT_EQ(world.engine.store().folders().size(), 1U) << other;
  }
  files.before("bookmark /f", [&] { engine.addFolder(FileURL("/g"), added); });
  EXPECT_EQ(engine.addFolder(FileURL("/f"), now).path, "/f");
  EXPECT_EQ(engine.store().folders().size(), 2U);
}

TEST_F(FolderLifecycle, aPlaceWithSeveralRowsIsThatOfTheOneThatLivesThere) {
  const Folder lost = temporaryFolder("/f", rules);
  const Folder other = temporaryFolder("/g", {});
  files.rename("/f", std::string(files.binPath) + "/f");
  files.rename("/g", "/f");
  EXPECT_EQ(engine.addFolder(FileURL("/f"), now).id, other.id) << "its row still says /g";
  engine.resolve(other);
  EXPECT_EQ(engine.addFolder(FileURL("/f"), now).id, other.id) << "both rows say /f";

  files.rename("/f", "/h");
  files.draw("/f/");
  EXPECT_NE(engine.addFolder(FileURL("/f"), now).id, other.id) << "that one is elsewhere";
  EXPECT_EQ(row(other).path, "/h");
  EXPECT_EQ(row(lost), lost);

  files.draw("/remade/");
  const Folder remade = temporaryFolder("/remade", rules);
  files.erase("/remade");
  files.draw("/remade/");
  EXPECT_EQ(engine.addFolder(FileURL("/remade"), now).id, remade.id) << "made anew in its place";
}

TEST_F(FolderLifecycle, whatTheDiskRefusesChangesNoRow) {
  const Folder folder = temporaryFolder("/f", rules);
  engine.store().insert(entryOf(folder, "a"));
  EXPECT_EQ(codeOf([&] { engine.addFolder(FileURL("/missing"), now); }), ENOENT);
  files.fail("bookmark /g", EACCES);
  EXPECT_EQ(codeOf([&] { engine.addFolder(FileURL("/g"), now); }), EACCES);
  files.fail("setTags /f", EROFS);
  EXPECT_EQ(codeOf([&] { engine.forget(folder); }), EROFS);
  EXPECT_EQ(codeOf([&] { engine.setTemporary(folder, false, now); }), EROFS);
  files.tags("/f").clear();
  EXPECT_EQ(codeOf([&] { engine.setTemporary(folder, true, now); }), EROFS);
  files.bookmarksAreStale = true;
  files.fail("bookmark /f", EIO);
  EXPECT_EQ(codeOf([&] { engine.resolve(folder); }), EIO);
  EXPECT_EQ(engine.store().folders(), std::vector{folder});
  EXPECT_EQ(engine.store().journalOfFolder(*folder.id).size(), 1U);
}

TEST_F(FolderLifecycle, aFolderThatMovedKeepsItsRowAndRules) {
  const Folder folder = temporaryFolder("/f", rules);
  EXPECT_EQ(engine.resolve(folder).folder, folder);
  EXPECT_EQ(files.operations(), Lines{"resolve"}) << "one that stayed isn't written";

  files.rename("/f", "/elsewhere/new");
  const auto [moved, place] = engine.resolvedFolder(*folder.id);
  EXPECT_EQ(place->url(), FileURL("/elsewhere/new"));
  Folder expected = folder;
  expected.path = "/elsewhere/new";
  expected.bookmark = moved.bookmark;
  EXPECT_EQ(moved, expected);
  EXPECT_NE(moved.bookmark, folder.bookmark);
  EXPECT_EQ(row(folder), moved);

  files.bookmarksAreStale = true;
  const Folder renewed = engine.resolve(moved).folder;
  EXPECT_EQ(renewed.path, "/elsewhere/new");
  EXPECT_NE(renewed.bookmark, moved.bookmark) << "a stale one is renewed even in place";
  EXPECT_EQ(row(folder), renewed);
}

TEST_F(FolderLifecycle, rulesThatAreChangedWhileAFolderIsSoughtOrTaggedStay) {
  const Folder folder = temporaryFolder("/f", {});
  files.rename("/f", "/new");
  const auto turnOffAll = [&] {
    engine.store().change(folder.id, [&](Folder& row) { row.settings = noRules; });
  };
  files.before("resolve", turnOffAll);
  EXPECT_EQ(engine.resolvedFolder(*folder.id).folder.settings, noRules);
  EXPECT_EQ(row(folder).settings, noRules);

  engine.store().change(folder.id, [&](Folder& row) { row.settings = rules; });
  files.before("setTags /new", turnOffAll);
  engine.setTemporary(row(folder), false, now);
  EXPECT_EQ(row(folder).settings, noRules);
}

TEST_F(FolderLifecycle, aLostFolderComesBackByItselfUnlessAKnownFolderHasTakenItsPlace) {
  const Folder lost = temporaryFolder("/f", rules);
  files.rename("/f", std::string(files.binPath) + "/f");
  EXPECT_THROW(engine.resolvedFolder(*lost.id), PlatformError);
  EXPECT_THROW(engine.setTemporary(lost, true, now), PlatformError);
  EXPECT_EQ(row(lost), lost);
  files.rename(std::string(files.binPath) + "/f", "/f");
  EXPECT_EQ(engine.resolvedFolder(*lost.id).folder, lost);

  const Folder other = temporaryFolder("/g", {});
  files.erase("/f");
  files.rename("/g", "/f");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(codeOf([&] { engine.resolvedFolder(*lost.id); }), ENOENT);
    EXPECT_EQ(engine.resolvedFolder(*other.id).place->url(), FileURL("/f"));
  }
  EXPECT_EQ(row(lost), lost);
  engine.forget(lost);
  EXPECT_EQ(files.tags("/f"), Lines{tag});

  files.draw("/new/");
  const Folder gone = temporaryFolder("/new", rules);
  files.erase("/new");
  files.draw("/new/");
  EXPECT_EQ(engine.resolvedFolder(*gone.id).place->url(), FileURL("/new")) << "nobody else's";
}

TEST_F(FolderLifecycle, turningTemporaryStartsTheRestartRuleAnewAndTurningPlainDoesNot) {
  const Folder folder = engine.addFolder(FileURL("/f"), added);
  files.rename("/f", "/new");
  files.tags("/new") = {"Work"};
  engine.setTemporary(folder, true, now);
  EXPECT_EQ(files.tags("/new"), (Lines{"Work", tag}));
  const Folder turned = row(folder);
  EXPECT_EQ(turned.path, "/new") << "it was followed";
  EXPECT_EQ(turned.lastRunAt, now);
  engine.setTemporary(turned, false, now + 100);
  EXPECT_EQ(files.tags("/new"), Lines{"Work"});
  EXPECT_EQ(row(folder), turned);
}

TEST_F(FolderLifecycle, forgettingTakesTheTagTheRowAndTheJournalOrNothing) {
  const Folder folder = temporaryFolder("/f", rules);
  engine.store().insert(entryOf(folder, "a"));
  Folder neverStored = folder;
  neverStored.id.reset();
  EXPECT_THROW(engine.forget(neverStored), MissingValue);
  EXPECT_EQ(files.operations(), Lines{});

  files.tags("/f") = {tag, "Work"};
  files.rename("/f", "/h");
  engine.forget(folder);
  EXPECT_EQ(std::ranges::count(files.operations(), "giveBack /h"), 1);
  EXPECT_EQ(files.tags("/h"), Lines{"Work"});
  EXPECT_TRUE(engine.store().folders().empty());
  EXPECT_TRUE(engine.store().journalSince(Date{-1e9}).empty());
  EXPECT_EQ(failureOf([&] { engine.resolvedFolder(*folder.id); }),
            Engine::Failure::Case(Engine::Failure::FolderNotFound{*folder.id}));

  const Folder gone = temporaryFolder("/g", rules);
  files.erase("/g");
  engine.forget(gone);
  EXPECT_TRUE(engine.store().folders().empty());
}

}  // namespace
}  // namespace tidemar::testing
