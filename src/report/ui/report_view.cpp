#include "report/ui/report_view.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_painter.h"
#include "drawing/ui/drawing_view.h"
#include "report/render.h"
#include "ui/card.h"
#include "ui/fields.h"

#include <QAction>
#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr int kMargin = 20, kTightMargin = 6;
constexpr int kCellSpacing = 24, kTightCellSpacing = 8;
constexpr int kTwoColumnWidth = 860;
constexpr int kGreatestWidth = 1180;

QLabel* headingLabel(std::string_view text, FontRole role) {
    auto* label = new HeadingLabel(toQt(text), {});
    label->setFont(fontOf(role, label->font()));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setContextMenuPolicy(Qt::NoContextMenu); // the report has one
    return label;
}

QLabel* textLabel(std::string_view text) {
    auto* label = new QLabel(toQt(text));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

/// What names a value stands back behind it.
QLabel* nameLabel(std::string_view text) {
    QLabel* label = textLabel(text);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QGridLayout* cellLayout() {
    auto* layout = new QGridLayout;
    layout->setHorizontalSpacing(kCellSpacing);
    layout->setVerticalSpacing(4);
    return layout;
}

QPushButton* commandButton(QAction& command) {
    auto* button = new QPushButton(command.text());
    followAction(*button, command, promptWithKeys, Qt::QueuedConnection); // it may make another report of this one
    button->setObjectName(command.objectName() + QStringLiteral("Button"));
    button->setAutoDefault(true); // Enter presses it, as well as the space bar
    return button;
}

/// The card of a section.
class SectionCard final : public Card {
public:
    /// VIEW tells of links that are followed.
    SectionCard(const Section& section, ReportView& view) : view_(view), layout_(&content()) {
        layout_->setSpacing(10);
        if (section.heading) {
            setAccessibleName(toQt(section.heading->text));
            layout_->addWidget(headingLabel(section.heading->text, FontRole::Heading));
        }
        for (const Block& block : section.blocks)
            std::visit([this](const auto& what) { add(what); }, block);
        layout_->addStretch();
    }

    void addCommand(QPushButton* button) { layout_->insertWidget(layout_->count() - 1, button, 0, Qt::AlignLeft); }

private:
    void add(const Heading&) {} // sections() has taken them out

    void add(const Facts& facts) {
        QGridLayout* cells = cellLayout();
        cells->setColumnStretch(1, 1);
        int line = 0;
        for (const Facts::Fact& fact : facts.facts) {
            QLabel* name = nameLabel(fact.label);
            QWidget* value =
                fact.link
                    ? linkButton(fact.text, [view = &view_, link = *fact.link] { emit view->linkActivated(link); })
                    : factLabel(fact);
            value->setAccessibleName(toQt(fact.label + ": " + fact.text));
            cells->addWidget(name, line, 0, Qt::AlignTop);
            cells->addWidget(value, line++, 1, fact.link ? Qt::AlignLeft : Qt::Alignment());
        }
        layout_->addLayout(cells);
    }

    static QWidget* factLabel(const Facts::Fact& fact) {
        QLabel* value = textLabel(fact.text);
        value->setWordWrap(true);
        keepBesideName(*value);
        return value;
    }

    template <class Follow>
    QWidget* linkButton(std::string_view words, Follow follow) {
        auto* button = new QPushButton(toQt(words).replace(QLatin1Char('&'), QLatin1String("&&")));
        button->setObjectName(QStringLiteral("link"));
        button->setFlat(true);
        button->setAutoDefault(true); // Enter presses it, as well as the space bar
        button->setCursor(Qt::PointingHandCursor);
        button->setStyleSheet(QStringLiteral("QPushButton { border: 1px solid transparent; color: palette(link);"
                                             " text-decoration: underline; text-align: left; }"
                                             "QPushButton:focus { border-color: palette(link); }"));
        // Whoever follows it may make another report of this one, and with that end the button.
        QObject::connect(button, &QPushButton::clicked, &view_, follow, Qt::QueuedConnection);
        return button;
    }

    void add(const Grid& grid) {
        QGridLayout* cells = cellLayout();
        // Row by row, as it is read aloud.
        const auto add = [&](QLabel* label, int line, std::size_t column, std::size_t place) {
            const Qt::Alignment side = grid.columns[column].figures ? Qt::AlignRight : Qt::AlignLeft;
            label->setAlignment(side | Qt::AlignVCenter);
            cells->addWidget(label, line, static_cast<int>(place));
        };
        const std::size_t columns = grid.columns.size();
        // The bar of a row stands where its last cell would, and that behind it.
        const auto placeOf = [&](std::size_t column) {
            return !grid.shares.empty() && column + 1 == columns ? columns : column;
        };
        for (std::size_t column = 0; column < columns; ++column)
            add(nameLabel(grid.columns[column].heading), 0, column, placeOf(column));
        int line = 1;
        for (const std::vector<std::string>& row : grid.rows) {
            for (std::size_t column = 0; column < columns; ++column) {
                if (column == 0 && !grid.marks.empty()) {
                    cells->addWidget(markButton(grid, line), line, 0, Qt::AlignLeft | Qt::AlignVCenter);
                    continue;
                }
                QLabel* cell = textLabel(row[column]);
                // What sight tells from the place of the cell.
                const std::string& heading = grid.columns[column].heading;
                cell->setAccessibleDescription(toQt(column == 0 ? heading : row[0] + ", " + heading));
                if (placeOf(column) != column)
                    cells->addWidget(shareBar(row[0], grid.shares[static_cast<std::size_t>(line) - 1]), line,
                                     static_cast<int>(column), Qt::AlignVCenter);
                add(cell, line, column, placeOf(column));
            }
            ++line;
        }
        cells->setColumnStretch(static_cast<int>(grid.shares.empty() ? columns : columns - 1), 1);
        layout_->addLayout(cells);
    }

    /// The first cell of a line, which leads to the plot.
    QWidget* markButton(const Grid& grid, int line) {
        const auto row = static_cast<std::size_t>(line) - 1;
        QWidget* button = linkButton(grid.rows[row][0],
                                     [view = &view_, mark = grid.marks[row]] { emit view->plotMarkActivated(mark); });
        button->setObjectName(QStringLiteral("plotLink"));
        button->setToolTip(ReportView::tr("Shows this in the plot"));
        button->setAccessibleDescription(toQt(grid.columns[0].heading));
        return button;
    }

    static QWidget* shareBar(const std::string& label, double share) {
        return new DrawingView([label, share](Size room, const TextMeasure& measure) {
            return drawShare(label, share, room.width, measure);
        });
    }

    void add(const Picture& picture) { layout_->addWidget(new DrawingView(picture.draw)); }

    void add(const Paragraph& paragraph) {
        QLabel* text = textLabel(paragraph.text);
        text->setWordWrap(true);
        layout_->addWidget(text);
    }

    ReportView& view_;
    QVBoxLayout* layout_;
};

} // namespace

ReportView::ReportView(QWidget* parent) : QScrollArea(parent) {
    setFrameStyle(QFrame::NoFrame);
    setWidgetResizable(true);
}

void ReportView::setReport(Report report) {
    const int scrolled = report.title == report_.title ? verticalScrollBar()->value() : 0;
    report_ = std::move(report);

    auto* content = new QWidget;
    content->setMaximumWidth(kGreatestWidth);
    grid_ = new QGridLayout(content);
    grid_->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    grid_->setSpacing(14);
    QLabel* title = headingLabel(report_.title, FontRole::Title);
    title->setObjectName(QStringLiteral("reportTitle"));
    grid_->addWidget(title, 0, 0, 1, 2);
    cards_.clear();
    QPushButton* button = command_ ? commandButton(*command_) : nullptr;
    for (const Section& section : sections(report_)) {
        auto* card = new SectionCard(section, *this);
        cards_.push_back(card);
        if (button && section.heading && toQt(section.heading->text) == commandHeading_)
            card->addCommand(std::exchange(button, nullptr));
    }
    if (button)
        grid_->addWidget(button, static_cast<int>(cards_.size()) + 1, 0, Qt::AlignLeft);
    columns_ = 0;
    tight_ = false;
    leastWidth_ = 0;
    for (const QWidget* card : cards_)
        leastWidth_ = std::max(leastWidth_, 2 * kMargin + card->minimumSizeHint().width());
    arrange();
    setWidget(content);
    verticalScrollBar()->setValue(scrolled);
}

void ReportView::setSectionCommand(const QString& heading, QAction* command) {
    commandHeading_ = heading;
    command_ = command;
}

/// A window too narrow for the room between and around the cells has less of it, before it scrolls to the side.
void ReportView::tighten(bool tight) {
    if (std::exchange(tight_, tight) == tight)
        return;
    const int margin = tight ? kTightMargin : kMargin;
    grid_->setContentsMargins(margin, kMargin, margin, kMargin);
    for (const QWidget* card : cards_)
        for (QGridLayout* cells : card->findChildren<QGridLayout*>())
            cells->setHorizontalSpacing(tight ? kTightCellSpacing : kCellSpacing);
}

void ReportView::arrange() {
    if (grid_)
        tighten(viewport()->width() < leastWidth_);
    // Two, if nothing has to be scrolled to the side for it.
    int least = 2 * kMargin + (grid_ ? grid_->horizontalSpacing() : 0);
    for (std::size_t column = 0; column < 2; ++column) {
        int widest = 0;
        for (std::size_t i = column; i < cards_.size(); i += 2)
            widest = std::max(widest, cards_[i]->minimumSizeHint().width());
        least += widest;
    }
    const int columns = viewport()->width() >= std::max(kTwoColumnWidth, least) ? 2 : 1;
    if (!grid_ || columns == columns_)
        return;
    columns_ = columns;
    for (QWidget* card : cards_)
        grid_->removeWidget(card);
    int place = 0;
    for (QWidget* card : cards_) {
        grid_->addWidget(card, 1 + place / columns, place % columns);
        ++place;
    }
    for (int column = 0; column < 2; ++column)
        grid_->setColumnStretch(column, column < columns ? 1 : 0);
    grid_->setRowStretch(static_cast<int>(cards_.size()) + 2, 1);
}

void ReportView::copy() const { QGuiApplication::clipboard()->setText(toQt(renderText(report_))); }

void ReportView::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    arrange();
}

void ReportView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->key() == Qt::Key_Home || event->key() == Qt::Key_End)
        verticalScrollBar()->setValue(event->key() == Qt::Key_Home ? 0 : verticalScrollBar()->maximum());
    else
        QScrollArea::keyPressEvent(event);
}

} // namespace quobrix
