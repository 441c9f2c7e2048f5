#include "tables/ui/spreadsheet_layout.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"
#include "tables/ui/spreadsheet_model.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QStringList>
#include <QTableView>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace quobrix {
namespace {

constexpr int kWidestFirst = 320;
constexpr int kWidestLast = 3 * kWidestFirst;
constexpr int kSpare = 8;
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
        if (fitting_)
            return;
        if (after == 0)
            hiddenWidths_[column] = before;
        else if (before != 0 && restored_)
            resized_.insert(column);
        changed_ = restored_;
    });
    QObject::connect(header, &QHeaderView::sectionMoved, &view, changed);
    QObject::connect(header, &QHeaderView::sortIndicatorChanged, &view, changed);
}

void SpreadsheetLayout::fitToTexts() {
    const QScopedValueRollback fitting(fitting_, true);
    const QHeaderView& header = *view_.horizontalHeader();
    int last = header.count() - 1; // with nothing behind it, it may take more room
    while (last > 0 && header.isSectionHidden(header.logicalIndex(last)))
        --last;
    const int remark = std::min(view_.fontMetrics().averageCharWidth() * kRemarkCharacters, kWidestFirst);
    for (int column = 0; column < header.count(); ++column) {
        if (resized_.contains(column) || header.isSectionHidden(column))
            continue;
        view_.resizeColumnToContents(column);
        view_.setColumnWidth(column, std::clamp(view_.columnWidth(column) + kSpare,
                                                takesRemarks(model_.column(column)) ? remark : 0,
                                                header.visualIndex(column) == last ? kWidestLast : kWidestFirst));
    }
}

void SpreadsheetLayout::hideUnchosen() {
    for (int column = 0; column < model_.columnCount(); ++column)
        view_.setColumnHidden(column, model_.hiddenAtFirst(column));
}

void SpreadsheetLayout::restore() {
    QHeaderView& header = *view_.horizontalHeader();
    hideUnchosen();
    resized_.clear();
    std::vector<int> hidden;
    int place = 0;
    for (const QString& entry : toQt(settings_.getText(section_, "Columns")).split(QLatin1Char(' '))) {
        const QStringList parts = entry.split(QLatin1Char(':'));
        const int column = model_.indexOf(parts.front().toStdString());
        if (column < 0 || parts.size() != 2)
            continue;
        header.showSection(column);
        header.moveSection(header.visualIndex(column), place++);
        const int width = parts[1].toInt();
        if (std::abs(width) > 1) {
            view_.setColumnWidth(column, std::abs(width));
            resized_.insert(column);
        }
        if (width < 0)
            hidden.push_back(column);
    }
    fitToTexts();
    for (const int column : hidden)
        header.hideSection(column);
    if (header.count() > 0 && header.hiddenSectionCount() == header.count())
        header.showSection(header.logicalIndex(0)); // a list without columns would offer no way back
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
    std::string columns;
    for (int place = 0; place < header.count(); ++place) {
        const int column = header.logicalIndex(place);
        const bool resized = resized_.contains(column);
        int width = resized ? view_.columnWidth(column) : 0;
        if (header.isSectionHidden(column))
            width = resized ? -std::max(hiddenWidths_[column], header.minimumSectionSize()) : -1;
        columns += (columns.empty() ? "" : " ") + key(column) + ':' + std::to_string(width);
    }
    settings_.setText(section_, "Columns", columns);
    const int sorted = header.sortIndicatorSection();
    const bool downward = header.sortIndicatorOrder() == Qt::DescendingOrder;
    settings_.setText(section_, "Sort",
                      sorted < 0 || sorted >= header.count() ? "" : (downward ? "-" : "") + key(sorted));
    changed_ = false;
}

} // namespace quobrix
