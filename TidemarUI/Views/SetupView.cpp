#include "TidemarUI/Views/SetupView.h"

#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

constexpr int contentWidth = 420;
constexpr int markSize = 20;

/// Tells whether a step is done.
class StatusMark : public QLabel {
 public:
  StatusMark() { setFixedSize(style::scaled(markSize), style::scaled(markSize)); }

  void show(bool isDone) {
    _isDone = isDone;
    setAccessibleName(textOf(setupMarkLabel(isDone)));
    update();
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = static_cast<double>(width()) / markSize;
    painter.scale(scale, scale);
    const QColor color = _isDone ? style::accent(palette()) : style::secondaryText(palette());
    painter.setPen(QPen(color, 1.6));
    painter.setBrush(_isDone ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawEllipse(QRectF(1, 1, markSize - 2, markSize - 2));
    if (!_isDone) return;
    painter.setPen(QPen(style::onAccent(palette()), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF{{6, 10.4}, {9, 13.4}, {14.2, 7}});
  }

 private:
  bool _isDone = false;
};

TextLabel* makeText(style::TextSize size, QFont::Weight weight, TextLabel::Tone tone) {
  return new TextLabel(size, weight, tone, TextLabel::Overflow::wrap);
}

}  // namespace

/// One step: its mark, its words and, where something is left to do, the button for it.
class SetupStepView : public QWidget {
 public:
  explicit SetupStepView(bool isFirst)
      : _isFirst(isFirst),
        _mark(new StatusMark),
        _title(new TextLabel(style::TextSize::body, QFont::DemiBold, TextLabel::Tone::primary,
                             TextLabel::Overflow::elideInMiddle)),
        _note(new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                            TextLabel::Overflow::elideInMiddle)),
        _description(makeText(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary)),
        _offer(new QPushButton),
        _hint(makeText(style::TextSize::secondary, QFont::Normal, TextLabel::Tone::secondary)) {
    auto* titleLine = new QHBoxLayout;
    titleLine->setSpacing(style::grid);
    titleLine->addWidget(_title);
    titleLine->addWidget(_note);
    titleLine->addStretch();
    _offer->setAutoDefault(false);
    connect(_offer, &QPushButton::clicked, this, [this] { callClosure(onAccept, _step.offer); });

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addLayout(titleLine);
    texts->addWidget(_description);
    _offerGap = new QWidget;
    _offerGap->setFixedHeight(style::grid);
    texts->addWidget(_offerGap);
    texts->addWidget(_offer, 0, Qt::AlignLeading);
    texts->addWidget(_hint);
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 14, 0, 14);
    line->setSpacing(14);
    line->addWidget(_mark, 0, Qt::AlignTop);
    line->addLayout(texts, 1);
  }

  std::function<void(SetupOffer)> onAccept;

  void show(const SetupStep& step) {
    _step = step;
    _mark->show(step.isDone);
    _title->show(step.title);
    _note->show(step.note);
    _note->setVisible(!step.note.empty());
    _description->show(step.description);
    const bool hasOffer = step.offer != SetupOffer::none;
    if (hasOffer) _offer->setText(textOf(step.offerTitle));
    _offer->setVisible(hasOffer);
    _offerGap->setVisible(hasOffer);
    _hint->show(step.hint);
    _hint->setVisible(!step.hint.empty());
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    if (!_isFirst) QPainter(this).fillRect(0, 0, width(), 1, style::hairline(palette()));
  }

 private:
  bool _isFirst;
  SetupStep _step;
  StatusMark* _mark;
  TextLabel* _title;
  TextLabel* _note;
  TextLabel* _description;
  QWidget* _offerGap;
  QPushButton* _offer;
  TextLabel* _hint;
};

SetupView::SetupView(const SystemNames& names, QWidget* parent) : QWidget(parent), _names(names) {
  setFixedWidth(style::scaled(contentWidth));
  auto* title =
      makeText(style::TextSize::sectionHeadline, QFont::DemiBold, TextLabel::Tone::primary);
  title->show(labels::setupTitle);
  auto* explanation = makeText(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary);
  explanation->show(labels::setupExplanation(names));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(6 * style::grid, 5 * style::grid, 6 * style::grid, 2 * style::grid);
  column->setSpacing(0);
  column->addWidget(title);
  column->addSpacing(2);
  column->addWidget(explanation);
  column->addSpacing(2 * style::grid);
  for (SetupStepView*& step : _steps) {
    step = new SetupStepView(&step == _steps.data());
    step->onAccept = [this](SetupOffer offer) { accept(offer); };
    column->addWidget(step);
  }
  column->addStretch();
  setState({});
}

void SetupView::setState(const SetupState& state) {
  const std::array<SetupStep, 3> steps = setupSteps(state, _names);
  for (std::size_t index = 0; index < steps.size(); ++index)
    _steps[index]->show(steps[index]);
}

void SetupView::accept(SetupOffer offer) const {
  switch (offer) {
    case SetupOffer::none:
      break;
    case SetupOffer::openExtensionManagement:
      callClosure(onOpenExtensionManagement);
      break;
    case SetupOffer::enableAtLogin:
      callClosure(onToggleOpenAtLogin, true);
      break;
    case SetupOffer::openLoginItemsSettings:
      callClosure(onOpenLoginItemsSettings);
      break;
    case SetupOffer::requestNotifications:
      callClosure(onRequestNotifications);
      break;
  }
}

}  // namespace tidemar
