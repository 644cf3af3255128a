#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <optional>

#include <gtest/gtest.h>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

constexpr std::int64_t gigabyte = 1'000'000'000;

class FolderDetailViewTest : public ::testing::Test {
 protected:
  FolderDetailViewTest() {
    view.onSetTemporary = [this](std::int64_t, bool isTemporary) { requested = isTemporary; };
    view.onChangeSettings = [this](std::int64_t id, const TemporarySettings& shown,
                                   const TemporarySettings& wanted) {
      changedID = id;
      shownAtEdit = shown;
      changes.push_back(wanted);
    };
    view.setFolder(shared(sampleFolder()));
    present(view, {600, 900});
  }

  NumberFieldView* number(std::string_view label) {
    return child<NumberFieldView>(view, std::string(label));
  }

  void type(NumberFieldView& field, const char* text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, text);
    QTest::keyClick(&field, Qt::Key_Return);
  }

  void choose(int index) {
    auto* picker = child<QComboBox>(view);
    picker->setCurrentIndex(index);
    emit picker->activated(index);
    QApplication::processEvents();
  }

  void answer(std::string_view button) {
    auto* question = child<QMessageBox>(view);
    ASSERT_NE(question, nullptr);
    for (QAbstractButton* candidate : question->buttons()) {
      if (candidate->text().toStdString() == button) candidate->click();
    }
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  FolderDetailView view{viewFormats(), "Bin"};
  std::optional<bool> requested;
  std::int64_t changedID = 0;
  TemporarySettings shownAtEdit;
  std::vector<TemporarySettings> changes;
};

TEST_F(FolderDetailViewTest, TheSwitchAsksAndShowsWhatTheFolderSays) {
  auto* temporary = child<Switch>(view, "Temporary");
  ASSERT_NE(temporary, nullptr);
  for (const bool isByKeyboard : {false, true}) {
    requested.reset();
    if (isByKeyboard) {
      QTest::keyClick(temporary, Qt::Key_Space);
    } else {
      QTest::mouseClick(temporary, Qt::LeftButton);
    }
    EXPECT_EQ(requested, false);
    EXPECT_TRUE(temporary->isChecked()) << "it is still on, whatever was clicked";
  }
  MainFolder plain = sampleFolder();
  plain.isTemporary = false;
  view.setFolder(shared(plain));
  EXPECT_FALSE(temporary->isChecked());
  EXPECT_FALSE(child<QComboBox>(view)->isVisible());
}

TEST_F(FolderDetailViewTest, TheSwitchIsDisabledWhereTheFolderCannotBeCleared) {
  auto* temporary = child<Switch>(view, "Temporary");
  MainFolder folder = sampleFolder();
  folder.isReadable = false;
  view.setFolder(shared(folder));
  EXPECT_FALSE(temporary->isEnabled());
  folder.isReadable = true;
  folder.isProtectedRoot = true;
  view.setFolder(shared(folder));
  EXPECT_FALSE(temporary->isEnabled());
}

TEST_F(FolderDetailViewTest, NumbersAreBroughtWithinTheirBounds) {
  TemporarySettings settings;
  settings.sizeLimit = 10 * gigabyte;
  view.setFolder(shared(sampleFolder(1, settings)));
  struct Row {
    const char* name;
    std::string_view label;
    const char* typed;
    std::int64_t days;
    std::int64_t size;
  };
  const Row rows[] = {
      {"no days are one", labels::ageRule, "0", 1, 10 * gigabyte},
      {"days within the bounds", labels::ageRule, "30", 30, 10 * gigabyte},
      {"4000 days are 3650", labels::ageRule, "4000", 3650, 10 * gigabyte},
      {"grouped digits", labels::ageRule, "1,200", 1200, 10 * gigabyte},
      {"no gigabyte is one", labels::sizeRule, "0", 90, gigabyte},
      {"200000 GB are 100000", labels::sizeRule, "200000", 90, 100'000 * gigabyte},
      {"more digits than a number has", labels::sizeRule, "99999999999999999999999", 90,
       100'000 * gigabyte},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    changes.clear();
    type(*number(row.label), row.typed);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].maxAgeDays, row.days);
    EXPECT_EQ(changes[0].sizeLimit, row.size);
    EXPECT_EQ(changes[0].disposal, settings.disposal);
    view.setFolder(shared(sampleFolder(2, settings)));
    view.setFolder(shared(sampleFolder(1, settings)));
  }
}

TEST_F(FolderDetailViewTest, WhatEndsWhereItBeganIsNotWritten) {
  TemporarySettings settings;
  settings.sizeLimit = 2'500'000'000;
  view.setFolder(shared(sampleFolder(1, settings)));
  NumberFieldView* size = number(labels::sizeRule);
  ASSERT_EQ(size->text(), "3") << "shown rounded";
  size->setFocus();
  QTest::keyClick(size, Qt::Key_Tab);
  QTest::keyClick(size, Qt::Key_Return);
  for (const char* typed : {"soon", "", "2.5", "3"}) {
    SCOPED_TRACE(typed);
    type(*size, typed);
    EXPECT_EQ(size->text(), "3");
  }
  QTest::keyClick(size, Qt::Key_Up);
  QTest::keyClick(size, Qt::Key_Down);
  view.setFolder(shared(sampleFolder(2)));
  EXPECT_TRUE(changes.empty());
}

TEST_F(FolderDetailViewTest, AnEditSaysWhatWasSeenWhenItBegan) {
  NumberFieldView* age = number(labels::ageRule);
  age->setFocus();
  age->selectAll();
  QTest::keyClicks(age, "12");
  TemporarySettings later;
  later.maxAgeDays = 30;
  later.emptyOnRestart = true;
  view.setFolder(shared(sampleFolder(1, later)));
  QTest::keyClick(age, Qt::Key_Return);
  TemporarySettings wanted;
  wanted.maxAgeDays = 12;
  EXPECT_EQ(shownAtEdit, TemporarySettings());
  EXPECT_EQ(changes, std::vector{wanted});

  // The edit that follows, before the folder comes back with the first one, is made on that one.
  QTest::keyClick(age, Qt::Key_Up);
  QTest::keyClick(age, Qt::Key_Return);
  EXPECT_EQ(shownAtEdit, wanted);
  EXPECT_EQ(changes.back().maxAgeDays, 13);

  // What couldn't be stored goes back, though the folder is the same as before.
  view.setFolder(shared(sampleFolder(1, later)));
  EXPECT_EQ(age->text(), "30");
}

TEST_F(FolderDetailViewTest, ARuleThatGoesOffTakesTheEditOfItsNumberAlong) {
  TemporarySettings off;
  off.maxAgeDays = std::nullopt;
  NumberFieldView* age = number(labels::ageRule);
  for (const Qt::Key key : {Qt::Key_5, Qt::Key_Up}) {
    view.setFolder(shared(sampleFolder()));
    age->setFocus();
    QTest::keyClick(age, key);
    view.setFolder(shared(sampleFolder(1, off)));
    age->finishEdit();
    view.setFolder(shared(sampleFolder(2)));
    EXPECT_TRUE(changes.empty());
  }
}

TEST_F(FolderDetailViewTest, ANumberComesBeforeTheClickThatEndsItsEdit) {
  NumberFieldView* age = number(labels::ageRule);
  age->setFocus();
  QTest::keyClick(age, Qt::Key_5);
  child<QCheckBox>(view, std::string(labels::ageRule))->setFocus();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
  QApplication::processEvents();
  ASSERT_EQ(changes.size(), 2U);
  EXPECT_EQ(changes[0].maxAgeDays, 905);
  EXPECT_EQ(changes[1].maxAgeDays, std::nullopt);
}

TEST_F(FolderDetailViewTest, AssistiveToolsReadAndSetTheNumber) {
  NumberFieldView* age = number(labels::ageRule);
  QAccessibleValueInterface* value = QAccessible::queryAccessibleInterface(age)->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->currentValue().toLongLong(), 90);
  EXPECT_EQ(value->minimumValue().toLongLong(), 1);
  EXPECT_EQ(value->maximumValue().toLongLong(), 3650);
  EXPECT_EQ(value->minimumStepSize().toLongLong(), 1);
  value->setCurrentValue(4000);
  EXPECT_EQ(value->currentValue().toLongLong(), 3650);
  view.finishEdits();
  ASSERT_EQ(changes.size(), 1U);
  EXPECT_EQ(changes[0].maxAgeDays, 3650);
  QAccessible::queryAccessibleInterface(number(labels::sizeRule))
      ->valueInterface()
      ->setCurrentValue(5);
  view.finishEdits();
  EXPECT_EQ(changes.size(), 1U) << "its rule is off";
}

TEST_F(FolderDetailViewTest, AnEditEndsAsTheEditOfItsOwnFolder) {
  NumberFieldView* age = number(labels::ageRule);
  age->setFocus();
  age->selectAll();
  QTest::keyClicks(age, "12");
  view.setFolder(shared(sampleFolder(2)));
  ASSERT_EQ(changes.size(), 1U);
  EXPECT_EQ(changedID, 1);
  EXPECT_EQ(changes[0].maxAgeDays, 12);
  EXPECT_EQ(age->text(), "90");
}

TEST_F(FolderDetailViewTest, StepsAreHandedOutOnceTheyStop) {
  NumberFieldView* age = number(labels::ageRule);
  age->setFocus();
  for (int step = 0; step < 3; ++step)
    QTest::keyClick(age, Qt::Key_Up);
  EXPECT_EQ(age->text(), "93");
  EXPECT_TRUE(changes.empty());
  QTest::keyClick(age, Qt::Key_Return);
  ASSERT_EQ(changes.size(), 1U);
  EXPECT_EQ(changes[0].maxAgeDays, 93);
}

TEST_F(FolderDetailViewTest, EscapeTakesATypedNumberBack) {
  NumberFieldView* age = number(labels::ageRule);
  age->setFocus();
  QTest::keyClicks(age, "5");
  QTest::keyClick(age, Qt::Key_Escape);
  QTest::keyClick(age, Qt::Key_Return);
  EXPECT_EQ(age->text(), "90");
  EXPECT_TRUE(changes.empty());
}

TEST_F(FolderDetailViewTest, DeletingIsConfirmedFirst) {
  auto* picker = child<QComboBox>(view);
  for (const std::string_view button : {labels::cancel, labels::deletePermanently}) {
    SCOPED_TRACE(button);
    choose(1);
    EXPECT_EQ(picker->currentIndex(), 0) << "the stored value stands while the question is open";
    EXPECT_TRUE(changes.empty());
    answer(button);
    EXPECT_EQ(picker->currentIndex(), 0);
    EXPECT_EQ(changes.empty(), button == labels::cancel);
  }
  ASSERT_EQ(changes.size(), 1U);
  TemporarySettings expected;
  expected.disposal = Disposal::delete_;
  EXPECT_EQ(changes[0], expected);
}

TEST_F(FolderDetailViewTest, NeitherReturnNorEscapeDeletes) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    choose(1);
    QTest::keyClick(child<QMessageBox>(view), key);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(child<QMessageBox>(view), nullptr);
  }
  EXPECT_TRUE(changes.empty());
}

TEST_F(FolderDetailViewTest, TheQuestionGoesWithTheFolderThatItIsAbout) {
  choose(1);
  view.setFolder(shared(sampleFolder(2)));
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(child<QMessageBox>(view), nullptr);
  EXPECT_TRUE(changes.empty());
}

TEST_F(FolderDetailViewTest, GoingOverToTheBinHappensAtOnceAndEndsTheLowDiskRule) {
  TemporarySettings settings;
  settings.disposal = Disposal::delete_;
  settings.automatic = true;
  view.setFolder(shared(sampleFolder(1, settings)));
  auto* automatic = child<QCheckBox>(view, std::string(labels::automaticRule));
  EXPECT_TRUE(automatic->isEnabled());
  choose(0);
  ASSERT_EQ(changes.size(), 1U);
  EXPECT_EQ(changes[0].disposal, Disposal::bin);
  EXPECT_FALSE(changes[0].automatic);
  view.setFolder(shared(sampleFolder(1, changes[0])));
  EXPECT_FALSE(automatic->isEnabled());
  EXPECT_FALSE(automatic->parentWidget()->toolTip().isEmpty());
}

}  // namespace
}  // namespace tidemar::testing
