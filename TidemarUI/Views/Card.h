#pragma once

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <QWidget>
#include <string_view>

#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

/// A raised ground with rows below one another, a hairline between any two that are shown.
class Card : public QWidget {
 public:
  explicit Card(QWidget* parent = nullptr);

  void addRow(QWidget* row);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QVBoxLayout* _rows;
};

/// One row of a card: what is added to its layout stands side by side, in the middle of its height.
class FormRow : public QWidget {
 public:
  explicit FormRow(QWidget* parent = nullptr);

  QHBoxLayout& line() noexcept { return *_line; }

 private:
  QHBoxLayout* _line;
};

/// A card with a heading over it and a footer under it, each shown only with a text.
class FormSection : public QWidget {
 public:
  explicit FormSection(std::string_view heading = {}, QWidget* parent = nullptr);

  Card& card() noexcept { return *_card; }

  /// An empty text hides the footer.
  void setFooter(std::string_view text, TextLabel::Tone tone = TextLabel::Tone::secondary);

 private:
  Card* _card;
  TextLabel* _footer;
};

}  // namespace tidemar
