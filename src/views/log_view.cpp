#include "views/log_view.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "texts/text.h"
#include "units/unit_system.h"
#include "views/log_plot_view.h"
#include "views/log_record_view.h"
#include "views/log_table_view.h"
#include "views/record_commands.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

QToolButton* arrowButton(QAction* action, Qt::ArrowType arrow) {
    auto* result = new QToolButton;
    result->setDefaultAction(action);
    result->setArrowType(arrow);
    result->setAutoRaise(true);
    result->setObjectName(action->objectName() + QStringLiteral("Button"));
    result->setAccessibleName(action->text());
    return result;
}

/// "previousTrip" …
QString partName(const char* prefix, const LogSpec& spec) {
    QString name = toQt(spec.recordName);
    name[0] = name[0].toUpper();
    return QLatin1String(prefix) + name;
}

} // namespace

LogView::LogView(const ViewContext& context, const LogSpec& spec)
    : context_(context), spec_(spec), summary_(new LogList(context, spec)), tabs_(new QTabWidget) {
    setObjectName(toQt(spec.viewName("View")));
    setAccessibleName(toQt(text(spec.title)));
    tabs_->setObjectName(toQt(spec.recordName) + QStringLiteral("LogViews"));
    tabs_->setDocumentMode(true);
    for (const LogViewSpec& view : spec.views())
        addView(view);
    tabs_->setCornerWidget(makeNavigator());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);

    connect(summary_, &TSpreadsheet::currentRowChanged, this, &LogView::currentRecordChanged);
    connect(summary_, &TSpreadsheet::rowActivated, this, [this] { showView(LogViewKind::Report); });
    connect(summary_, &TSpreadsheet::orderChanged, this, &LogView::currentRecordChanged);
    connect(tabs_, &QTabWidget::currentChanged, this, [this] {
        showCurrentRecord();
        followSample(views_[static_cast<std::size_t>(std::exchange(lastTab_, tabs_->currentIndex()))].spec.kind);
        setFocusProxy(tabs_->currentWidget());
        focusView();
        emit placeChanged();
    });
    auto* back = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    back->setContext(Qt::WidgetWithChildrenShortcut);
    connect(back, &QShortcut::activated, this, [this] { showView(LogViewKind::Summary); });
    setFocusProxy(summary_);
    QAction& filter = summary_->recordCommands().action(RecordCommand::Filter);
    addAction(&filter); // from the other views, too
    connect(&filter, &QAction::triggered, this, [this] {
        showView(LogViewKind::Summary);
        summary_->openFilter();
    });
}

void LogView::addView(const LogViewSpec& spec) {
    RecordView* view = nullptr;
    if (spec.kind == LogViewKind::Report) {
        auto* report =
            new LogRecordView(context_, spec_, summary_->recordCommands().action(RecordCommand::EditComments));
        connect(report, &ReportView::linkActivated, this, &Page::linkFollowed);
        connect(report, &ReportView::plotMarkActivated, this, [this](const PlotMark& mark) {
            showView(LogViewKind::Plot);
            if (auto* plot = dynamic_cast<LogPlotView*>(tab().view))
                plot->showMark(mark);
        });
        view = report;
    } else if (spec.kind == LogViewKind::Table)
        view = new LogTableView(context_, spec_);
    else if (spec.kind == LogViewKind::Plot)
        view = new LogPlotView(context_, spec_);
    views_.push_back({spec, view});
    tabs_->addTab(view ? &view->widget() : summary_, toQt(text(spec.tab)));
}

QWidget* LogView::makeNavigator() {
    const auto action = [this](const char* name, const QString& text, Qt::Key key, int direction) {
        auto* result = new QAction(text.arg(toQt(quobrix::text(spec_.record))), this);
        result->setObjectName(partName(name, spec_));
        result->setShortcut(QKeySequence(Qt::ALT | key));
        result->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        result->setToolTip(
            QStringLiteral("%1 (%2)").arg(result->text(), result->shortcut().toString(QKeySequence::NativeText)));
        connect(result, &QAction::triggered, this, [this, direction] { step(direction); });
        addAction(result);
        return result;
    };
    previous_ = action("previous", tr("Previous %1"), Qt::Key_Up, -1);
    next_ = action("next", tr("Next %1"), Qt::Key_Down, 1);
    record_ = new QLabel;
    record_->setObjectName(partName("current", spec_));
    auto* navigator = new QWidget;
    auto* layout = new QHBoxLayout(navigator);
    layout->setContentsMargins(0, 0, 8, 0);
    layout->setSpacing(4);
    layout->addWidget(arrowButton(previous_, Qt::UpArrow));
    layout->addWidget(record_);
    layout->addWidget(arrowButton(next_, Qt::DownArrow));
    return navigator;
}

const LogView::Tab& LogView::tab() const { return views_[static_cast<std::size_t>(tabs_->currentIndex())]; }

const Table* LogView::log() const { return context_.document.log(spec_); }

std::vector<PathPart> LogView::path() const {
    using enum PathPart::Leads;
    const auto row = summary_->currentRow();
    const QStringList names =
        toQt(row ? viewTitle(spec_, tab().spec, context_.units.formatInteger(static_cast<std::int64_t>(*row) + 1))
                 : viewTitle(spec_, views_.front().spec, {}))
            .split(kPathSeparator);
    if (names.size() < 2)
        return {{names[0]}};
    const PagePlace here = place();
    const auto part = [&](const QString& name, LogViewKind kind) {
        const bool list = kind == LogViewKind::Summary;
        PagePlace there{views_[static_cast<std::size_t>(tabOf(kind))].spec.page, here.record, list};
        return PathPart{name, there.shows(here) ? Nowhere : ToPlace, std::move(there)};
    };
    std::vector<PathPart> path{{names[0], ToMenu, {}}, part(names[1], LogViewKind::Summary)};
    for (qsizetype i = 2; i + 1 < names.size(); ++i) // the record
        path.push_back(part(names[i], LogViewKind::Report));
    if (names.size() > 2)
        path.push_back({names.back()});
    return path;
}

PagePlace LogView::place() const {
    const std::optional<RecordKey> record = summary_->currentRow() ? summary_->current() : std::nullopt;
    return {tab().spec.page, record, tab().spec.kind == LogViewKind::Summary};
}

bool LogView::has(const PagePlace& place) const {
    return place.list || (log() && place.record && spec_.rowOf(*log(), *place.record));
}

void LogView::goTo(const PagePlace& place) {
    const auto row = log() && place.record ? spec_.rowOf(*log(), *place.record) : std::nullopt;
    // Only a record that is to be seen by itself is worth a filter.
    if (row && row != summary_->currentRow() && (!place.list || summary_->model().placeOf(*row)))
        summary_->setCurrentRow(*row);
    for (const Tab& tab : views_)
        if (tab.spec.page == place.view)
            showView(tab.spec.kind);
}

void LogView::showOnly(const DrivingChoice& choice) {
    showView(LogViewKind::Summary);
    summary_->filterBy(choice);
}

void LogView::refresh() { summary_->show(log()); }

/// What a report tells may be in other records, and in other logs.
void LogView::edited() {
    showRecordName();
    if (tab().spec.kind == LogViewKind::Report || tab().spec.kind == LogViewKind::Plot)
        showCurrentRecord();
}

void LogView::showCell(std::string_view columnKey, RowIndex row) {
    showView(LogViewKind::Summary);
    summary_->showCell(columnKey, row);
}

void LogView::showRecord(RowIndex row) {
    summary_->setCurrentRow(row);
    showView(LogViewKind::Report);
}

void LogView::unitsChanged() {
    retextTables(*this);
    edited();
    emit placeChanged();
}

std::optional<Report> LogView::printable(const std::optional<RecordRange>& range) const {
    const RecordView* view = tab().view;
    return view && summary_->currentRow() ? view->printable() : summary_->printable(range);
}

std::size_t LogView::printableRecords() const {
    return tab().spec.kind == LogViewKind::Summary && log() ? log()->rowCount() : 0;
}

bool LogView::canExport() const {
    if (tab().spec.kind == LogViewKind::Summary)
        return summary_->model().rowCount() > 0;
    return spec_.tables && summary_->currentRow();
}

std::optional<ExportContent> LogView::exported() {
    if (!canExport() || !log())
        return {};
    if (tab().spec.kind == LogViewKind::Summary)
        return exportedFrom(*summary_);
    if (auto* tables = dynamic_cast<LogTableView*>(tab().view))
        return tables->exported();
    const RowIndex row = *summary_->currentRow();
    const RecordTable table = spec_.tables(log(), row, context_.text()).front();
    ExportContent content = contentOf(table);
    content.title = tableTitle(spec_, *log(), row, table.title, context_.text());
    return content.rowCount() > 0 ? std::optional(std::move(content)) : std::nullopt;
}

void LogView::showView(LogViewKind kind) {
    if (const int tab = tabOf(kind); tab >= 0)
        tabs_->setCurrentIndex(tab);
}

/// -1 if there is none.
int LogView::tabOf(LogViewKind kind) const {
    const auto view = std::ranges::find(views_, kind, [](const Tab& tab) { return tab.spec.kind; });
    return view == views_.end() ? -1 : static_cast<int>(view - views_.begin());
}

void LogView::step(int direction) {
    const auto row = summary_->currentRow();
    if (const auto other = row ? summary_->neighbour(*row, direction) : std::nullopt)
        summary_->setCurrentRow(*other);
}

void LogView::currentRecordChanged() {
    const auto row = summary_->currentRow();
    for (std::size_t i = 0; i < views_.size(); ++i)
        if (views_[i].view)
            tabs_->setTabEnabled(static_cast<int>(i), row.has_value());
    if (!row)
        showView(LogViewKind::Summary);
    previous_->setEnabled(row && summary_->neighbour(*row, -1));
    next_->setEnabled(row && summary_->neighbour(*row, 1));
    showRecordName();
    showCurrentRecord();
    emit placeChanged();
}

void LogView::showRecordName() {
    const auto row = summary_->currentRow();
    const Table* table = log();
    record_->setText(row && table
                         ? tr("%1 of %2")
                               .arg(toQt(recordTitle(spec_, *table, *row, context_.text())),
                                    toQt(context_.units.formatInteger(static_cast<std::int64_t>(table->rowCount()))))
                         : toQt(text(TextId::NoRecord, text(spec_.records))));
}

void LogView::showCurrentRecord() {
    if (RecordView* view = tab().view)
        view->showRecord(log(), summary_->currentRow());
}

/// A sample that was gone to in the table is where the plot's cursor stands.
void LogView::followSample(LogViewKind from) {
    auto* plot = dynamic_cast<LogPlotView*>(tab().view);
    if (!plot || from != LogViewKind::Table)
        return;
    for (const Tab& other : views_)
        if (const auto* table = dynamic_cast<LogTableView*>(other.view))
            if (const auto sample = table->currentSample())
                plot->showSample(*sample);
}

/// Whoever opened a view by its tab stays on the tab.
void LogView::focusView() {
    if (!tabs_->tabBar()->hasFocus())
        tabs_->currentWidget()->setFocus();
}

} // namespace quobrix
