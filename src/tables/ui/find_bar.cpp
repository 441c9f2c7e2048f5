#include "tables/ui/find_bar.h"

#include "base/ui/qt_text.h"
#include "tables/ui/cell_block.h"
#include "tables/ui/spreadsheet_model.h"
#include "tables/ui/spreadsheet_view.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "units/unit_system.h"

#include <QAction>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

namespace quobrix {
namespace {

// Rows that are searched for hits before the window gets its turn again.
constexpr std::size_t kRowsAtOnce = 500;
// ms after the last letter, so that a long list is not searched for the beginnings of a word
constexpr int kTypingPause = 150;

QToolButton* button(const char* name, const QString& text, Qt::ArrowType arrow) {
    auto* result = new QToolButton;
    result->setObjectName(QLatin1String(name));
    result->setAccessibleName(text);
    result->setToolTip(text);
    result->setArrowType(arrow);
    result->setAutoRaise(true);
    result->setFocusPolicy(Qt::TabFocus);
    return result;
}

} // namespace

FindBar::FindBar(SpreadsheetView& view, const SpreadsheetModel& model, const TextContext& context, QWidget* parent)
    : EscapeBar(parent), view_(view), model_(model), context_(context), text_(new QLineEdit),
      matchCase_(new QCheckBox(tr("Match &case"))), wrap_(new QCheckBox(tr("&Wrap around"))), count_(new QLabel),
      counter_(new QTimer(this)) {
    setObjectName(QStringLiteral("FindBar"));
    QLabel* label = fieldLabel(tr("Fin&d:"), *text_);
    text_->setObjectName(QStringLiteral("findText"));
    text_->setClearButtonEnabled(true);
    text_->setMaximumWidth(text_->fontMetrics().averageCharWidth() * 40);
    matchCase_->setObjectName(QStringLiteral("findMatchCase"));
    wrap_->setObjectName(QStringLiteral("findWrap"));
    wrap_->setChecked(true);
    count_->setObjectName(QStringLiteral("findCount"));
    QToolButton* previous = button("findPrevious", tr("Find previous (Shift+F3)"), Qt::UpArrow);
    QToolButton* next = button("findNext", tr("Find next (F3)"), Qt::DownArrow);
    auto* close = new QToolButton;
    close->setObjectName(QStringLiteral("findClose"));
    close->setText(QStringLiteral("×"));
    close->setAccessibleName(tr("Close"));
    close->setToolTip(tr("Close (Esc)"));
    close->setAutoRaise(true);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->addWidget(label);
    layout->addWidget(text_, 1);
    layout->addWidget(previous);
    layout->addWidget(next);
    layout->addSpacing(8);
    layout->addWidget(matchCase_);
    layout->addWidget(wrap_);
    layout->addSpacing(8);
    layout->addWidget(count_);
    layout->addStretch(1);
    layout->addWidget(close);

    auto* typing = new QTimer(this);
    typing->setSingleShot(true);
    typing->setInterval(kTypingPause);
    connect(text_, &QLineEdit::textEdited, typing, qOverload<>(&QTimer::start));
    connect(typing, &QTimer::timeout, this, &FindBar::search);
    connect(text_, &QLineEdit::textChanged, this, &FindBar::cellsChanged);
    connect(matchCase_, &QCheckBox::toggled, this, &FindBar::search);
    connect(previous, &QToolButton::clicked, this, &FindBar::findPrevious);
    connect(next, &QToolButton::clicked, this, &FindBar::findNext);
    connect(close, &QToolButton::clicked, this, [this] { hide(); });
    connect(counter_, &QTimer::timeout, this, &FindBar::countOn);
    for (QWidget* part : findChildren<QWidget*>())
        part->installEventFilter(this);
    hide();
}

void FindBar::open() {
    show();
    text_->setFocus(Qt::ShortcutFocusReason);
    text_->selectAll();
    cellsChanged();
}

bool FindBar::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        view_.markCurrent(event->type() == QEvent::FocusIn);
    return EscapeBar::eventFilter(object, event);
}

void FindBar::hideEvent(QHideEvent* event) {
    counter_->stop();
    view_.markCurrent(false);
    if (isAncestorOf(focusWidget()))
        view_.setFocus();
    EscapeBar::hideEvent(event);
}

void FindBar::escaped() {
    hide();
    view_.setFocus();
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        find(event->modifiers().testFlag(Qt::ShiftModifier), false);
    else
        EscapeBar::keyPressEvent(event);
}

FindOptions FindBar::options() const {
    FindOptions result;
    result.matchCase = matchCase_->isChecked();
    result.wrap = wrap_->isChecked();
    return result;
}

void FindBar::search() {
    cellsChanged();
    if (!text_->text().isEmpty())
        find(false, true);
}

void FindBar::find(bool backwards, bool atCurrent) {
    if (text_->text().isEmpty())
        return open();
    const std::vector<int> shown = shownColumns(view_);
    std::vector<const Column*> columns;
    for (const int column : shown)
        columns.push_back(&model_.column(column));
    std::optional<CellPlace> from;
    const QModelIndex current = view_.currentIndex();
    const auto column = std::find(shown.begin(), shown.end(), current.column());
    if (current.isValid() && column != shown.end())
        from = CellPlace{static_cast<std::size_t>(column - shown.begin()), static_cast<std::size_t>(current.row())};
    if (from && atCurrent) { // from the cell before it
        if (from->column > 0)
            --from->column;
        else if (from->row > 0)
            from = CellPlace{shown.size() - 1, from->row - 1};
        else
            from.reset();
    }
    FindOptions how = options();
    how.backwards = backwards;
    const auto hit = findText(columns, model_.rows(), context_, text_->text().toStdString(), how, from);
    if (!hit) {
        count_->setText(how.wrap ? tr("Not found") : tr("No more"));
        return;
    }
    view_.goTo(model_.index(static_cast<int>(hit->row), shown[hit->column]));
    showCount();
}

void FindBar::cellsChanged() {
    hits_ = counted_ = 0;
    const bool counting = isVisible() && !text_->text().isEmpty();
    counting ? counter_->start(0) : counter_->stop();
    if (!counting)
        count_->clear();
}

void FindBar::countOn() {
    const std::vector<int> shown = shownColumns(view_);
    std::vector<const Column*> columns;
    for (const int column : shown)
        columns.push_back(&model_.column(column));
    const auto rows = static_cast<std::size_t>(model_.rowCount());
    const std::size_t end = std::min(rows, counted_ + kRowsAtOnce);
    std::vector<RowIndex> part;
    for (std::size_t place = counted_; place < end; ++place)
        part.push_back(model_.storedRow(static_cast<int>(place)));
    const std::string needle = text_->text().toStdString();
    FindOptions how = options();
    how.wrap = false;
    std::optional<CellPlace> hit;
    while ((hit = findText(columns, part, context_, needle, how, hit)))
        ++hits_;
    counted_ = end;
    if (counted_ == rows)
        counter_->stop();
    showCount();
}

void FindBar::showCount() {
    const bool counting = counter_->isActive();
    if (hits_ == 0 && !counting)
        return count_->setText(tr("Not found"));
    const QString number = toQt(context_.units.formatInteger(static_cast<std::int64_t>(hits_)));
    count_->setText(counting ? QStringLiteral("%1…").arg(number)
                             : toQt(counted(TextId::CellsFound, hits_, number.toStdString())));
}

} // namespace quobrix
