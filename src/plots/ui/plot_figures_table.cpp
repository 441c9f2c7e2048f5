#include "plots/ui/plot_figures_table.h"

#include "base/ui/qt_text.h"
#include "plots/plot_figures.h"
#include "plots/ui/plot_widget.h"
#include "texts/text.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

enum FigureColumn { kQuantity, kAtCursor, kLeast, kMean, kGreatest, kFigureColumns };

constexpr int kMostRows = 6; // without scrolling
constexpr int kMargin = 6;

/// Says all of its text in its tooltip where there is no room for it.
class CutLabel final : public QLabel {
protected:
    void paintEvent(QPaintEvent* event) override {
        const bool cut = sizeHint().width() > width();
        setToolTip(cut ? text() : QString());
        if (!cut)
            return QLabel::paintEvent(event);
        QPainter painter(this);
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         fontMetrics().elidedText(text(), Qt::ElideRight, width()));
    }
};

QLabel* lineOfText(const char* name) {
    auto* label = new CutLabel;
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setMinimumWidth(1); // a narrow window cuts it off
    return label;
}

} // namespace

PlotFiguresTable::PlotFiguresTable(const TextContext& text, PlotWidget& plot, QWidget* parent)
    : QWidget(parent), text_(text), plot_(plot), cursor_(lineOfText("PlotCursor")), range_(lineOfText("PlotRange")),
      table_(new QTableWidget(0, kFigureColumns)) {
    setObjectName(QStringLiteral("PlotFigures"));
    table_->setObjectName(QStringLiteral("PlotFiguresTable"));
    table_->setAccessibleName(tr("Figures of the plot"));
    table_->setHorizontalHeaderLabels(
        {toQt(quobrix::text(TextId::PlotQuantity)), tr("At Cursor"), toQt(quobrix::text(TextId::HeadingMinimum)),
         toQt(quobrix::text(TextId::PlotMean)), toQt(quobrix::text(TextId::HeadingMaximum))});
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->horizontalHeader()->setSectionResizeMode(kQuantity, QHeaderView::Stretch);
    table_->setMinimumSize(1, 1);
    table_->horizontalHeader()->setHighlightSections(false);
    table_->horizontalHeader()->setResizeContentsPrecision(-1); // of all rows, also of those that are scrolled away
    table_->horizontalHeaderItem(kQuantity)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (int column = kAtCursor; column < kFigureColumns; ++column)
        table_->horizontalHeaderItem(column)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + kMargin);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setTabKeyNavigation(false);
    table_->setFrameStyle(QFrame::NoFrame);
    table_->setShowGrid(false);

    auto* line = new QHBoxLayout;
    line->setContentsMargins(kMargin, kMargin / 2, kMargin, 0);
    line->setSpacing(3 * kMargin);
    line->addWidget(cursor_, 1);
    line->addWidget(range_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kMargin / 2);
    layout->addLayout(line);
    layout->addWidget(table_);
    connect(&plot_, &PlotWidget::viewChanged, this, &PlotFiguresTable::showAll);
    connect(&plot_, &PlotWidget::pointersChanged, this, [this] {
        if (plot_.pointers().range != shown_)
            showAll();
        else
            showCursor();
    });
}

int PlotFiguresTable::heightOfRows(int rows) const {
    const int line = cursor_->sizeHint().height() + kMargin;
    return rows == 0 ? line
                     : line + table_->horizontalHeader()->sizeHint().height() +
                           rows * table_->verticalHeader()->defaultSectionSize();
}

/// Without scrolling; 0 where the plot needs all the room.
int PlotFiguresTable::rowsShown() const {
    int rows = std::clamp(table_->rowCount(), 1, kMostRows);
    while (rows > 0 && heightOfRows(rows) > room_)
        --rows;
    return rows;
}

QSize PlotFiguresTable::sizeHint() const { return {1, heightOfRows(rowsShown())}; }

void PlotFiguresTable::fitInto(int height) {
    room_ = height;
    table_->setVisible(rowsShown() > 0);
    updateGeometry();
}

void PlotFiguresTable::resizeEvent(QResizeEvent*) { sizeColumns(); }

/// Figures are not cut off; the rest of the room is for names, and what these leave again for figures.
void PlotFiguresTable::sizeColumns() {
    const QHeaderView& header = *table_->horizontalHeader();
    const QAbstractItemView& cells = *table_;
    int least = 0; // what is at the cursor is hardly wider than the extremes
    for (int column = kAtCursor; column < kFigureColumns; ++column)
        least = std::max({least, header.sectionSizeHint(column),
                          column == kAtCursor ? 0 : cells.sizeHintForColumn(column) + kMargin});
    const int names = std::max(cells.sizeHintForColumn(kQuantity), header.sectionSizeHint(kQuantity)) + kMargin;
    const int width = std::max(least, (table_->viewport()->width() - names) / (kFigureColumns - 1));
    for (int column = kAtCursor; column < kFigureColumns; ++column)
        table_->horizontalHeader()->resizeSection(column, width);
}

void PlotFiguresTable::showEvent(QShowEvent* event) {
    showAll();
    QWidget::showEvent(event);
}

void PlotFiguresTable::setCell(int row, int column, const QString& text) {
    QTableWidgetItem* item = table_->item(row, column);
    if (!item) {
        item = new QTableWidgetItem;
        item->setTextAlignment((column == kQuantity ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
        table_->setItem(row, column, item);
    }
    if (item->text() != text)
        item->setText(text);
}

void PlotFiguresTable::showAll() {
    if (!isVisible())
        return;
    shown_ = plot_.pointers().range;
    const PlotData& plotted = plot_.data();
    const RangeFigures figures = figuresOf(plotted, shown_.value_or(plot_.seen()), text_, plot_.view().panels);
    const std::vector<PlotReading::Value> rows =
        readPlot(plotted, plotted.whole.from, text_, plot_.view().panels).values;
    if (table_->rowCount() != static_cast<int>(rows.size())) {
        table_->setRowCount(static_cast<int>(rows.size()));
        updateGeometry();
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const int row = static_cast<int>(i);
        setCell(row, kQuantity, toQt(rows[i].title));
        const auto of = std::ranges::find_if(figures.curves, [&](const CurveFigures& curve) {
            return curve.panel == rows[i].panel && curve.record == rows[i].record;
        });
        const bool known = of != figures.curves.end();
        setCell(row, kLeast, known ? toQt(of->leastText) : QString());
        setCell(row, kMean, known ? toQt(of->meanText) : QString());
        setCell(row, kGreatest, known ? toQt(of->greatestText) : QString());
    }
    sizeColumns();
    range_->setText(plotted.panels.empty() ? QString() : toQt(rangeText(plotted, figures, shown_.has_value(), text_)));
    showCursor();
}

void PlotFiguresTable::showCursor() {
    if (!isVisible())
        return;
    const PlotData& plotted = plot_.data();
    const std::optional<double> at = plot_.pointers().cursor;
    const PlotReading reading = readPlot(plotted, at.value_or(plotted.whole.from), text_, plot_.view().panels);
    for (std::size_t i = 0; i < reading.values.size() && static_cast<int>(i) < table_->rowCount(); ++i)
        setCell(static_cast<int>(i), kAtCursor, at ? toQt(reading.values[i].text) : QString());
    QString said;
    if (at && !plotted.panels.empty()) {
        said =
            reading.clock.empty() ? toQt(reading.place) : toQt(text(TextId::WithAside, reading.place, reading.clock));
        if (reading.band)
            said = tr("%1, %2", "a time and what was then").arg(said, toQt(reading.bandLabel));
        if (reading.event)
            said = tr("%1, %2", "a time and what was then")
                       .arg(said, toQt(plotEventName(plotted.events[*reading.event].kind)));
    }
    cursor_->setText(said);
}

} // namespace quobrix
