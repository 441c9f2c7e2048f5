#include "tables/ui/spreadsheet_layout.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"
#include "tables/ui/spreadsheet_model.h"

#include <QHeaderView>
#include <QStringList>
#include <QTableView>

#include <algorithm>

namespace quobrix {
namespace {

constexpr int kWidestFirst = 320;
constexpr int kRemarkCharacters = 24; // that a column for people's own remarks has room for from the beginning

bool takesRemarks(const Column& column) {
    return column.kind() == ColumnKind::Text && column.editable() && column.requirements().need == Need::Optional;
}

} // namespace

SpreadsheetLayout::SpreadsheetLayout(Settings& settings, std::string section, QTableView& view,
                                     const SpreadsheetModel& model)
    : settings_(settings), section_(std::move(section)), view_(view), model_(model) {
    const auto changed = [this] { changed_ = restored_; };
    const QHeaderView* header = view.horizontalHeader();
    QObject::connect(header, &QHeaderView::sectionResized, &view, [this](int column, int before, int after) {
        if (after == 0)
            hiddenWidths_[column] = before;
        changed_ = restored_;
    });
    QObject::connect(header, &QHeaderView::sectionMoved, &view, changed);
    QObject::connect(header, &QHeaderView::sortIndicatorChanged, &view, changed);
}

void SpreadsheetLayout::fitToTexts() {
    view_.resizeColumnsToContents();
    const int remark = std::min(view_.fontMetrics().averageCharWidth() * kRemarkCharacters, kWidestFirst);
    for (int i = 0; i < view_.horizontalHeader()->count(); ++i)
        view_.setColumnWidth(
            i, std::clamp(view_.columnWidth(i) + 8, takesRemarks(model_.column(i)) ? remark : 0, kWidestFirst));
}

void SpreadsheetLayout::restore() {
    QHeaderView& header = *view_.horizontalHeader();
    for (int i = 0; i < header.count(); ++i)
        header.showSection(i);
    fitToTexts();
    int place = 0;
    for (const QString& entry : toQt(settings_.getText(section_, "Columns")).split(QLatin1Char(' '))) {
        const QStringList parts = entry.split(QLatin1Char(':'));
        const int column = model_.indexOf(parts.front().toStdString());
        if (column < 0 || parts.size() != 2)
            continue;
        header.moveSection(header.visualIndex(column), place++);
        const int width = parts[1].toInt();
        if (width != 0)
            view_.setColumnWidth(column, std::abs(width));
        header.setSectionHidden(column, width < 0);
    }
    if (header.count() > 0 && header.hiddenSectionCount() == header.count())
        header.showSection(header.logicalIndex(0)); // nobody could find their way back from a list without columns
    const QString sort = toQt(settings_.getText(section_, "Sort"));
    const bool downward = sort.startsWith(QLatin1Char('-'));
    const int sorted = model_.indexOf(sort.mid(downward ? 1 : 0).toStdString());
    view_.sortByColumn(sorted, downward ? Qt::DescendingOrder : Qt::AscendingOrder);
    restored_ = true;
    changed_ = false;
}

void SpreadsheetLayout::remember() {
    if (!changed_)
        return;
    const QHeaderView& header = *view_.horizontalHeader();
    const auto key = [&](int column) { return std::string(model_.spec(column).key); };
    int last = header.count() - 1; // the last one in view is stretched: its width is not its own
    while (last >= 0 && header.isSectionHidden(header.logicalIndex(last)))
        --last;
    std::string columns;
    for (int place = 0; place < header.count(); ++place) {
        const int column = header.logicalIndex(place);
        int width = place == last ? 0 : view_.columnWidth(column);
        if (header.isSectionHidden(column))
            width = -std::max(hiddenWidths_[column], header.minimumSectionSize());
        columns += (columns.empty() ? "" : " ") + key(column) + ':' + std::to_string(width);
    }
    settings_.setText(section_, "Columns", columns);
    const int sorted = header.sortIndicatorSection();
    const bool downward = header.sortIndicatorOrder() == Qt::DescendingOrder;
    settings_.setText(section_, "Sort",
                      sorted < 0 || sorted >= header.count() ? "" : (downward ? "-" : "") + key(sorted));
    changed_ = false;
}

void SpreadsheetLayout::reset() {
    QHeaderView& header = *view_.horizontalHeader();
    for (int column = 0; column < header.count(); ++column) {
        header.showSection(column);
        header.moveSection(header.visualIndex(column), column);
    }
    fitToTexts();
    view_.sortByColumn(-1, Qt::AscendingOrder);
    changed_ = restored_;
}

} // namespace quobrix
