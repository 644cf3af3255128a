#pragma once

#include <QLabel>
#include <string_view>

#include "TidemarUI/Views/Style.h"

namespace tidemar {

/// A piece of plain text. Its colour and its size follow the desktop's.
class TextLabel : public QLabel {
 public:
  enum class Tone { primary, secondary, warning };

  /// What becomes of a text that is wider than its place.
  enum class Overflow {
    wrap,          ///< It goes on in the next line.
    elideInMiddle  ///< Its ends stay; the whole of it is the tooltip.
  };

  TextLabel(style::TextSize size, QFont::Weight weight, Tone tone, Overflow overflow,
            QWidget* parent = nullptr);

  /// UTF-8, shown as it is. The same text again draws nothing.
  void show(std::string_view text);
  void setTone(Tone tone);

  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  QString elidedText() const;
  void updateToolTip();

  style::TextSize _size;
  QFont::Weight _weight;
  Tone _tone;
  Overflow _overflow;
};

/// The small title over a block of rows, on one line with the rows' texts.
TextLabel* makeBlockTitle(std::string_view text, QWidget* parent = nullptr);

/// UTF-8 as the toolkit's text.
QString textOf(std::string_view utf8);

/// A tooltip that shows this text as it is: a name may look like markup, which tooltips draw.
QString plainToolTip(const QString& text);

}  // namespace tidemar
