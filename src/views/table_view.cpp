#include "views/table_view.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStringList>

#include <algorithm>

namespace quobrix {
namespace {

// Rows that are measured to find a column's first width.
constexpr int kMeasuredRows = 50;
constexpr int kWidestFirst = 320;

} // namespace

TableView::TableView(const TextContext& context, Settings& settings, std::string section, QString emptyText,
                     QWidget* parent)
    : QTableView(parent), settings_(settings), section_(std::move(section)), emptyText_(std::move(emptyText)),
      table_(context), sorted_(table_) {
    setModel(&sorted_);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    // A figure on the right must not touch the text on the left of the next column.
    setStyleSheet(QStringLiteral("QTableView::item { padding-left: 5px; padding-right: 5px; }"));
    setTabKeyNavigation(false); // Tab leaves the list, the arrow keys move in it
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    QHeaderView& header = *horizontalHeader();
    header.setSectionsMovable(true);
    header.setHighlightSections(false);
    header.setStretchLastSection(true);
    header.setResizeContentsPrecision(kMeasuredRows);
    header.setSortIndicatorClearable(true);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    setSortingEnabled(true);

    const auto changed = [this] { layoutChanged_ = layoutRestored_; };
    connect(&header, &QHeaderView::sectionResized, this, changed);
    connect(&header, &QHeaderView::sectionMoved, this, changed);
    connect(&header, &QHeaderView::sortIndicatorChanged, this, changed);
    connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex& cell) {
        emit rowActivated(static_cast<RowIndex>(sorted_.mapToSource(cell).row()));
    });
}

TableView::~TableView() {
    rememberLayout();
    setModel(nullptr); // which ends before this base does
}

void TableView::setColumns(std::vector<ShownColumn> columns, TableModel::RowTitle rowTitle) {
    // A reset of the model takes widths and order of the columns with it only when their number changes.
    if (layoutRestored_ && columns.size() != table_.columns().size()) {
        rememberLayout();
        layoutRestored_ = false;
    }
    verticalHeader()->setVisible(rowTitle != nullptr);
    table_.setColumns(std::move(columns), std::move(rowTitle));
    if (!layoutRestored_ && table_.rowCount() > 0)
        restoreLayout();
}

std::optional<RowIndex> TableView::currentRow() const {
    const QModelIndex cell = sorted_.mapToSource(currentIndex());
    return cell.isValid() ? std::optional(static_cast<RowIndex>(cell.row())) : std::nullopt;
}

void TableView::setCurrentRow(RowIndex row) {
    const QModelIndex cell = sorted_.mapFromSource(table_.index(static_cast<int>(row), 0));
    if (!cell.isValid())
        return;
    // The leftmost column in view, so that the list does not scroll sideways.
    const int column = std::max(0, horizontalHeader()->logicalIndexAt(1));
    setCurrentIndex(cell.siblingAtColumn(column));
    scrollTo(currentIndex());
}

std::optional<RowIndex> TableView::neighbour(RowIndex row, int step) const {
    const QModelIndex cell = sorted_.mapFromSource(table_.index(static_cast<int>(row), 0));
    const QModelIndex other = sorted_.index(cell.row() + step, 0);
    return cell.isValid() && other.isValid() ? std::optional(static_cast<RowIndex>(sorted_.mapToSource(other).row()))
                                             : std::nullopt;
}

void TableView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (const auto row = currentRow())
            emit rowActivated(*row);
        return;
    }
    QTableView::keyPressEvent(event);
}

void TableView::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (sorted_.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

void TableView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    if (current.row() != previous.row() || current.isValid() != previous.isValid())
        emit currentRowChanged();
}

// "Columns" holds key and width of each column from left to right; "Sort" the key of the sorted one, after a minus when
// it is sorted downward. A width of 0 leaves it to the texts.
void TableView::restoreLayout() {
    resizeColumnsToContents();
    QHeaderView& header = *horizontalHeader();
    for (int i = 0; i < header.count(); ++i)
        setColumnWidth(i, std::min(columnWidth(i) + 8, kWidestFirst));
    int place = 0;
    for (const QString& entry : toQt(settings_.getText(section_, "Columns")).split(QLatin1Char(' '))) {
        const QStringList parts = entry.split(QLatin1Char(':'));
        const int column = table_.indexOf(parts.front().toStdString());
        if (column < 0 || parts.size() != 2)
            continue;
        header.moveSection(header.visualIndex(column), place++);
        if (const int width = parts[1].toInt(); width > 0)
            setColumnWidth(column, width);
    }
    const QString sort = toQt(settings_.getText(section_, "Sort"));
    const bool downward = sort.startsWith(QLatin1Char('-'));
    const int sorted = table_.indexOf(sort.mid(downward ? 1 : 0).toStdString());
    sortByColumn(sorted, downward ? Qt::DescendingOrder : Qt::AscendingOrder);
    layoutRestored_ = true;
    layoutChanged_ = false;
}

void TableView::rememberLayout() {
    if (!layoutChanged_)
        return;
    const QHeaderView& header = *horizontalHeader();
    const auto key = [&](int column) { return std::string(table_.spec(column).key); };
    std::string columns;
    for (int place = 0; place < header.count(); ++place) {
        const int column = header.logicalIndex(place);
        const int width = place + 1 < header.count() ? columnWidth(column) : 0; // the last one is stretched
        columns += (columns.empty() ? "" : " ") + key(column) + ':' + std::to_string(width);
    }
    settings_.setText(section_, "Columns", columns);
    const int sorted = header.sortIndicatorSection();
    const bool downward = header.sortIndicatorOrder() == Qt::DescendingOrder;
    settings_.setText(section_, "Sort",
                      sorted < 0 || sorted >= header.count() ? "" : (downward ? "-" : "") + key(sorted));
    layoutChanged_ = false;
}

} // namespace quobrix
