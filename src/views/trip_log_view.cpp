#include "views/trip_log_view.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "units/unit_system.h"
#include "views/trip_log_record_view.h"
#include "views/trip_log_summary_view.h"
#include "views/trip_log_table_view.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>

namespace quobrix {
namespace {

constexpr int place(TTripLogView::View view) { return static_cast<int>(view); }

QToolButton* button(QAction* action, Qt::ArrowType arrow) {
    auto* result = new QToolButton;
    result->setDefaultAction(action);
    result->setArrowType(arrow);
    result->setAutoRaise(true);
    result->setObjectName(action->objectName() + QStringLiteral("Button"));
    result->setAccessibleName(action->text());
    return result;
}

} // namespace

TTripLogView::TTripLogView(const ViewContext& context)
    : context_(context), summary_(new TTripLogSummaryView(context)), report_(new TTripLogRecordView(context)),
      table_(new TTripLogTableView(context)), tabs_(new QTabWidget) {
    setObjectName(QStringLiteral("TTripLogView"));
    setAccessibleName(QStringLiteral("Trip Log"));
    tabs_->setObjectName(QStringLiteral("tripLogViews"));
    tabs_->setDocumentMode(true);
    tabs_->addTab(summary_, QStringLiteral("S&ummary"));
    tabs_->addTab(report_, QStringLiteral("&Report"));
    tabs_->addTab(new QWidget, QStringLiteral("&Plot"));
    tabs_->addTab(table_, QStringLiteral("Ta&ble"));
    tabs_->setTabEnabled(place(View::Plot), false);
    tabs_->setTabToolTip(place(View::Plot), QStringLiteral("This is not available yet."));
    tabs_->setCornerWidget(makeNavigator());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);

    connect(summary_, &TSpreadsheet::currentRowChanged, this, &TTripLogView::currentTripChanged);
    connect(summary_, &TSpreadsheet::rowActivated, this, [this] { showView(View::Report); });
    connect(summary_, &TSpreadsheet::orderChanged, this, &TTripLogView::currentTripChanged);
    // Names and comments are edited elsewhere, too.
    connect(&summary_->model(), &QAbstractItemModel::dataChanged, this, [this] {
        showTripName();
        if (view() == View::Report)
            report_->showTrip(summary_->currentRow());
    });
    connect(tabs_, &QTabWidget::currentChanged, this, [this] {
        showCurrentTrip();
        setFocusProxy(tabs_->currentWidget());
        focusView();
        emit titleChanged();
    });
    auto* back = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    back->setContext(Qt::WidgetWithChildrenShortcut);
    connect(back, &QShortcut::activated, this, [this] { showView(View::Summary); });
    setFocusProxy(summary_);
}

QWidget* TTripLogView::makeNavigator() {
    const auto action = [this](const char* name, const QString& text, Qt::Key key, int direction) {
        auto* result = new QAction(text, this);
        result->setObjectName(QLatin1String(name));
        result->setShortcut(QKeySequence(Qt::ALT | key));
        result->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        result->setToolTip(QStringLiteral("%1 (%2)").arg(text, result->shortcut().toString(QKeySequence::NativeText)));
        connect(result, &QAction::triggered, this, [this, direction] { step(direction); });
        addAction(result);
        return result;
    };
    previous_ = action("previousTrip", QStringLiteral("Previous trip"), Qt::Key_Left, -1);
    next_ = action("nextTrip", QStringLiteral("Next trip"), Qt::Key_Right, 1);
    trip_ = new QLabel;
    trip_->setObjectName(QStringLiteral("currentTrip"));
    auto* navigator = new QWidget;
    auto* layout = new QHBoxLayout(navigator);
    layout->setContentsMargins(0, 0, 8, 0);
    layout->setSpacing(4);
    layout->addWidget(button(previous_, Qt::LeftArrow));
    layout->addWidget(trip_);
    layout->addWidget(button(next_, Qt::RightArrow));
    return navigator;
}

TTripLogView::View TTripLogView::view() const { return static_cast<View>(tabs_->currentIndex()); }

QString TTripLogView::title() const {
    const QString log = QStringLiteral("View / Trip Log");
    static constexpr const char* kNames[] = {"", " / Report", " / Plot", " / Table"};
    const auto row = summary_->currentRow();
    if (view() == View::Summary || !row)
        return log + QStringLiteral(" / Summary");
    return log + QStringLiteral(" / Record ") +
           toQt(context_.units.formatInteger(static_cast<std::int64_t>(*row) + 1)) +
           QLatin1String(kNames[place(view())]);
}

void TTripLogView::refresh() { summary_->show(&context_.document.trips()); }

void TTripLogView::showCell(std::string_view columnKey, RowIndex row) {
    showView(View::Summary);
    summary_->showCell(columnKey, row);
}

void TTripLogView::unitsChanged() {
    retextTables(*this);
    emit titleChanged();
}

std::optional<Report> TTripLogView::printable(const std::optional<RecordRange>& range) const {
    const auto row = summary_->currentRow();
    if (view() == View::Summary || !row)
        return summary_->printable(range);
    if (view() == View::Report)
        return report_->report();
    return Report{recordTitle(logSpec(LogId::Trips), context_.document.trips(), *row, context_.text()),
                  table_->printable()};
}

void TTripLogView::showView(View view) { tabs_->setCurrentIndex(place(view)); }

void TTripLogView::step(int direction) {
    const auto row = summary_->currentRow();
    if (const auto other = row ? summary_->neighbour(*row, direction) : std::nullopt)
        summary_->setCurrentRow(*other);
}

void TTripLogView::currentTripChanged() {
    const auto row = summary_->currentRow();
    tabs_->setTabEnabled(place(View::Report), row.has_value());
    tabs_->setTabEnabled(place(View::Table), row.has_value());
    if (!row)
        showView(View::Summary);
    previous_->setEnabled(row && summary_->neighbour(*row, -1));
    next_->setEnabled(row && summary_->neighbour(*row, 1));
    showTripName();
    showCurrentTrip();
    emit titleChanged();
}

void TTripLogView::showTripName() {
    const auto row = summary_->currentRow();
    const TTripLogTable& trips = context_.document.trips();
    trip_->setText(row ? QStringLiteral("%1 of %2")
                             .arg(toQt(recordTitle(logSpec(LogId::Trips), trips, *row, context_.text())),
                                  toQt(context_.units.formatInteger(static_cast<std::int64_t>(trips.rowCount()))))
                       : QStringLiteral("No trips"));
}

void TTripLogView::showCurrentTrip() {
    if (view() == View::Report)
        report_->showTrip(summary_->currentRow());
    if (view() == View::Table)
        table_->showTrip(summary_->currentRow());
}

/// Whoever opened a view by its tab stays on the tab.
void TTripLogView::focusView() {
    if (!tabs_->tabBar()->hasFocus())
        tabs_->currentWidget()->setFocus();
}

} // namespace quobrix
