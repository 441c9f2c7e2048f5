#include "views/trip_log_record_view.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "views/share_bars.h"

#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollBar>

namespace quobrix {
namespace {

constexpr int kReportMargin = 20;
constexpr int kTwoColumnWidth = 860;
constexpr int kReportWidth = 1180;

QLabel* textLabel(std::string_view text, Qt::Alignment alignment = Qt::AlignLeft) {
    auto* label = new QLabel(toQt(text));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAlignment(alignment | Qt::AlignVCenter);
    return label;
}

/// What names a value stands back behind it.
QLabel* nameLabel(std::string_view text, Qt::Alignment alignment = Qt::AlignLeft) {
    QLabel* label = textLabel(text, alignment);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* heading(std::string_view text, double scale) {
    QLabel* label = textLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLayout* rowsLayout(const std::vector<Report::Row>& rows) {
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(24);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    int line = 0;
    for (const Report::Row& row : rows) {
        QLabel* value = textLabel(row.text);
        value->setWordWrap(true);
        if (row.label.empty()) {
            grid->addWidget(value, line++, 0, 1, 2);
            continue;
        }
        QLabel* name = nameLabel(row.label, Qt::AlignLeft);
        name->setBuddy(value);
        value->setAccessibleName(toQt(row.label + ": " + row.text));
        grid->addWidget(name, line, 0, Qt::AlignTop);
        grid->addWidget(value, line++, 1);
    }
    return grid;
}

QLayout* gridLayout(const Report::Grid& table) {
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(24);
    grid->setVerticalSpacing(4);
    const auto alignment = [](int column) { return column == 0 ? Qt::AlignLeft : Qt::AlignRight; };
    const int columns = static_cast<int>(table.headings.size());
    for (int column = 0; column < columns; ++column)
        grid->addWidget(nameLabel(table.headings[static_cast<std::size_t>(column)], alignment(column)), 0, column);
    int line = 1;
    for (const auto& row : table.rows) {
        for (int column = 0; column < columns; ++column)
            grid->addWidget(textLabel(row[static_cast<std::size_t>(column)], alignment(column)), line, column);
        ++line;
    }
    grid->setColumnStretch(columns, 1);
    return grid;
}

QWidget* card(const Report::Section& section) {
    auto* frame = new QFrame;
    frame->setFrameStyle(QFrame::StyledPanel);
    frame->setBackgroundRole(QPalette::Base);
    frame->setAutoFillBackground(true);
    frame->setAccessibleName(toQt(section.heading));
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(16, 14, 16, 16);
    layout->setSpacing(10);
    layout->addWidget(heading(section.heading, 1.15));
    if (!section.bars.empty())
        layout->addWidget(new ShareBars(toQt(section.heading), section.bars));
    if (!section.rows.empty())
        layout->addLayout(rowsLayout(section.rows));
    if (!section.grid.rows.empty())
        layout->addLayout(gridLayout(section.grid));
    layout->addStretch();
    return frame;
}

} // namespace

TTripLogRecordView::TTripLogRecordView(const ViewContext& context, QWidget* parent)
    : QScrollArea(parent), context_(context) {
    setObjectName(QStringLiteral("TTripLogRecordView"));
    setAccessibleName(QStringLiteral("Trip Report"));
    setFrameStyle(QFrame::NoFrame);
    setWidgetResizable(true);
    showTrip(std::nullopt);
}

void TTripLogRecordView::showTrip(std::optional<RowIndex> row) {
    const int scrolled = verticalScrollBar()->value();
    const std::string before = report_.title;
    report_ = row ? tripReport(context_.document.trips(), *row, context_.text())
                  : Report{"No trip", {{"", {{"", "There are no trips in this file yet."}}, {}, {}}}};

    auto* content = new QWidget;
    content->setMaximumWidth(kReportWidth);
    grid_ = new QGridLayout(content);
    grid_->setContentsMargins(kReportMargin, kReportMargin, kReportMargin, kReportMargin);
    grid_->setSpacing(14);
    QLabel* title = heading(report_.title, 1.6);
    title->setObjectName(QStringLiteral("reportTitle"));
    grid_->addWidget(title, 0, 0, 1, 2);
    cards_.clear();
    for (const Report::Section& section : report_.sections)
        cards_.push_back(card(section));
    columns_ = 0;
    arrange();
    setWidget(content);
    if (report_.title == before) // the same trip in other units
        verticalScrollBar()->setValue(scrolled);
}

void TTripLogRecordView::arrange() {
    const int columns = viewport()->width() >= kTwoColumnWidth ? 2 : 1;
    if (columns == columns_)
        return;
    columns_ = columns;
    for (QWidget* widget : cards_)
        grid_->removeWidget(widget);
    int place = 0;
    for (QWidget* widget : cards_) {
        grid_->addWidget(widget, 1 + place / columns, place % columns);
        ++place;
    }
    for (int column = 0; column < 2; ++column)
        grid_->setColumnStretch(column, column < columns ? 1 : 0);
    grid_->setRowStretch(static_cast<int>(cards_.size()) + 2, 1);
}

void TTripLogRecordView::copy() const { QGuiApplication::clipboard()->setText(toQt(renderText(report_))); }

void TTripLogRecordView::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    arrange();
}

void TTripLogRecordView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        copy();
    else
        QScrollArea::keyPressEvent(event);
}

} // namespace quobrix
