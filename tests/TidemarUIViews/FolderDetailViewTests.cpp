#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

constexpr std::int64_t gigabyte = 1'000'000'000;

TemporarySettings settingsOf(std::optional<std::int64_t> days,
                             std::optional<std::int64_t> sizeLimit = std::nullopt) {
  TemporarySettings settings;
  settings.maxAgeDays = days;
  settings.sizeLimit = sizeLimit;
  return settings;
}

class FolderDetailViewTest : public ::testing::Test {
 protected:
  FolderDetailViewTest() {
    view.onSetTemporary = [this](std::int64_t, bool isTemporary) { requested = isTemporary; };
    view.onChangeSettings = [this](std::int64_t id, const TemporarySettings& shown,
                                   const TemporarySettings& wanted) {
      EXPECT_EQ(id, 1);
      shownAtEdit = shown;
      changes.push_back(wanted);
    };
    show(settingsOf(90));
    present(view, {600, 900});
  }

  void show(const TemporarySettings& settings) {
    view.setFolder(shared(sampleFolder(1, settings)));
  }

  void showAnotherFolder() { view.setFolder(shared(sampleFolder(2))); }

  NumberFieldView& number(std::string_view label) {
    return *child<NumberFieldView>(view, std::string(label));
  }

  void press(NumberFieldView& field, std::initializer_list<Qt::Key> keys) {
    field.setFocus();
    for (const Qt::Key key : keys)
      QTest::keyClick(&field, key);
  }

  void type(NumberFieldView& field, const char* text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, text);
  }

  void choose(int index) {
    auto* picker = child<QComboBox>(view);
    picker->setCurrentIndex(index);
    emit picker->activated(index);
    QApplication::processEvents();
  }

  FolderDetailView view{viewFormats(), "Bin"};
  NumberFieldView& age = number(labels::ageRule);
  NumberFieldView& size = number(labels::sizeRule);
  std::optional<bool> requested;
  TemporarySettings shownAtEdit;
  std::vector<TemporarySettings> changes;
};

TEST_F(FolderDetailViewTest, TheSwitchAsksAndStaysAsItIs) {
  auto* temporary = child<Switch>(view, "Temporary");
  for (const auto& press : std::initializer_list<std::function<void()>>{
           [&] { QTest::keyClick(temporary, Qt::Key_Space); },
           [&] { QTest::mouseClick(temporary, Qt::LeftButton); }}) {
    requested.reset();
    press();
    EXPECT_EQ(requested, false);
    EXPECT_TRUE(temporary->isChecked()) << "it is still on, whatever was clicked";
  }
}

TEST_F(FolderDetailViewTest, NumbersAreReadAsTypedAndBroughtWithinTheirBounds) {
  const struct {
    NumberFieldView& field;
    const char* typed;
    std::int64_t days;
    std::int64_t gigabytes;
  } rows[] = {
      {age, "30", 30, 10},
      {age, "1,200", 1200, 10},
      {age, "4000", 3650, 10},
      {size, "0", 90, 1},
      {size, "99999999999999999999999", 90, 100'000},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.typed);
    changes.clear();
    show(settingsOf(90, 10 * gigabyte));
    type(row.field, row.typed);
    press(row.field, {Qt::Key_Return});
    EXPECT_EQ(changes, std::vector{settingsOf(row.days, row.gigabytes * gigabyte)});
    showAnotherFolder();
  }
}

TEST_F(FolderDetailViewTest, AnEditIsHandedOutOnceAsThatOfItsFolder) {
  const struct {
    const char* title;
    std::initializer_list<Qt::Key> keys;
    std::optional<std::int64_t> days;
  } rows[] = {
      {"steps, once they stop", {Qt::Key_Up, Qt::Key_Up, Qt::Key_Up}, 93},
      {"a typed number that ends by another folder", {Qt::Key_5}, 905},
      {"Return hands it out at once", {Qt::Key_5, Qt::Key_Return}, 905},
      {"Escape takes it back", {Qt::Key_5, Qt::Key_Escape, Qt::Key_Return}, std::nullopt},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    changes.clear();
    show(settingsOf(90));
    press(age, row.keys);
    EXPECT_EQ(changes.empty(), row.keys.end()[-1] != Qt::Key_Return || !row.days);
    showAnotherFolder();
    EXPECT_EQ(age.text(), "90");
    EXPECT_EQ(changes,
              row.days ? std::vector{settingsOf(*row.days)} : std::vector<TemporarySettings>());
  }
}

TEST_F(FolderDetailViewTest, WhatEndsWhereItBeganIsNotWritten) {
  show(settingsOf(90, 2'500'000'000));
  ASSERT_EQ(size.text(), "3") << "shown rounded";
  press(size, {Qt::Key_Tab, Qt::Key_Return});
  for (const char* typed : {"soon", "", "2.5", "3"}) {
    SCOPED_TRACE(typed);
    type(size, typed);
    press(size, {Qt::Key_Return});
    EXPECT_EQ(size.text(), "3");
  }
  press(size, {Qt::Key_Up, Qt::Key_Down});
  showAnotherFolder();
  EXPECT_TRUE(changes.empty());
}

TEST_F(FolderDetailViewTest, AnEditSaysWhatWasSeenWhenItBegan) {
  type(age, "12");
  TemporarySettings later = settingsOf(30);
  later.emptyOnRestart = true;
  show(later);
  press(age, {Qt::Key_Return});
  EXPECT_EQ(shownAtEdit, settingsOf(90));
  EXPECT_EQ(changes, std::vector{settingsOf(12)});

  // The edit that follows, before the folder comes back with the first one, is made on that one.
  press(age, {Qt::Key_Up, Qt::Key_Return});
  EXPECT_EQ(shownAtEdit, settingsOf(12));
  EXPECT_EQ(changes.back(), settingsOf(13));

  // What couldn't be stored goes back, though the folder is the same as before.
  show(later);
  EXPECT_EQ(age.text(), "30");
  EXPECT_TRUE(child<QCheckBox>(view, labels::restartRule({}))->isChecked());
}

TEST_F(FolderDetailViewTest, ARuleThatGoesOffTakesTheEditOfItsNumberAlong) {
  for (const Qt::Key key : {Qt::Key_5, Qt::Key_Up}) {
    show(settingsOf(90));
    press(age, {key});
    show(settingsOf(std::nullopt));
    age.finishEdit();
    showAnotherFolder();
    EXPECT_TRUE(changes.empty());
  }
}

TEST_F(FolderDetailViewTest, ANumberComesBeforeTheClickThatEndsItsEdit) {
  press(age, {Qt::Key_5});
  child<QCheckBox>(view, std::string(labels::ageRule))->setFocus();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
  QApplication::processEvents();
  EXPECT_EQ(changes, (std::vector{settingsOf(905), settingsOf(std::nullopt)}));
}

TEST_F(FolderDetailViewTest, AssistiveToolsReadAndSetTheNumber) {
  QAccessibleValueInterface* value = QAccessible::queryAccessibleInterface(&age)->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->currentValue().toLongLong(), 90);
  EXPECT_EQ(value->minimumValue().toLongLong(), 1);
  EXPECT_EQ(value->maximumValue().toLongLong(), 3650);
  EXPECT_EQ(value->minimumStepSize().toLongLong(), 1);
  value->setCurrentValue(4000);
  EXPECT_EQ(value->currentValue().toLongLong(), 3650);
  QAccessible::queryAccessibleInterface(&size)->valueInterface()->setCurrentValue(5);
  view.finishEdits();
  EXPECT_EQ(changes, std::vector{settingsOf(3650)}) << "the rule of the size is off";
}

TEST_F(FolderDetailViewTest, NothingButItsButtonConfirmsDeleting) {
  const auto press = [](const char* name) {
    return [name](QWidget& question) { child<QPushButton>(question, name)->click(); };
  };
  const std::pair<const char*, std::function<void(QWidget & question)>> rows[] = {
      {"Cancel", press("Cancel")},
      {"Return", [](auto& question) { QTest::keyClick(&question, Qt::Key_Return); }},
      {"Escape", [](auto& question) { QTest::keyClick(&question, Qt::Key_Escape); }},
      {"another folder", [this](auto&) { showAnotherFolder(); }},
      {"its button", press("Delete Permanently")},
  };
  for (const auto& [name, end] : rows) {
    SCOPED_TRACE(name);
    show(settingsOf(90));
    choose(1);
    EXPECT_EQ(child<QComboBox>(view)->currentIndex(), 0) << "the stored value stands";
    EXPECT_TRUE(changes.empty());
    end(*child<QMessageBox>(view));
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(child<QMessageBox>(view), nullptr);
    EXPECT_EQ(child<QComboBox>(view)->currentIndex(), 0);
  }
  TemporarySettings expected = settingsOf(90);
  expected.disposal = Disposal::delete_;
  EXPECT_EQ(changes, std::vector{expected});
}

TEST_F(FolderDetailViewTest, GoingOverToTheBinHappensAtOnceAndEndsTheLowDiskRule) {
  TemporarySettings settings = settingsOf(90);
  settings.disposal = Disposal::delete_;
  settings.automatic = true;
  show(settings);
  auto* automatic = child<QCheckBox>(view, std::string(labels::automaticRule));
  EXPECT_TRUE(automatic->isEnabled());
  choose(0);
  EXPECT_EQ(changes, std::vector{settingsOf(90)});
  show(settingsOf(90));
  choose(0);
  EXPECT_EQ(changes.size(), 1U) << "what is chosen already changes nothing";
  EXPECT_FALSE(automatic->isEnabled());
  EXPECT_FALSE(automatic->parentWidget()->toolTip().isEmpty());
}

}  // namespace
}  // namespace tidemar::testing
