#include "views/trip_type_window.h"

#include "base/ui/qt_text.h"
#include "export/trip_type_rows.h"
#include "model/fuel_entries.h"
#include "model/quobrix_document.h"
#include "report/ui/report_view.h"
#include "settings/settings.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/windows.h"
#include "units/time_zone.h"
#include "views/report_buttons.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr const char *kReportSection = "TripTypeReport", *kPeriod = "Period";

QComboBox* choiceBox(const char* name) {
    auto* box = new QComboBox;
    box->setObjectName(QLatin1String(name));
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(8);
    return box;
}

/// Offers ENTRIES behind ANY, which has no data; what was chosen stays so if it is among them.
void fill(QComboBox& box, const QString& any, const std::vector<std::pair<QString, QString>>& entries) {
    const QVariant chosen = box.currentData();
    const QSignalBlocker quiet(box);
    box.clear();
    box.addItem(any);
    for (const auto& [text, data] : entries)
        box.addItem(text, data);
    for (int i = 1; i < box.count(); ++i)
        if (chosen.isValid() && box.itemData(i) == chosen)
            box.setCurrentIndex(i);
}

std::optional<std::string> chosenIn(const QComboBox& box) {
    const QVariant data = box.currentData();
    return data.isValid() ? std::optional(data.toString().toStdString()) : std::nullopt;
}

} // namespace

TripTypeWindow::TripTypeWindow(const ViewContext& context, TripTypes types, QWidget* parent)
    : QDialog(parent), context_(context), types_(std::move(types)), period_(choiceBox("typePeriod")),
      vehicle_(choiceBox("typeVehicle")), driver_(choiceBox("typeDriver")), type_(choiceBox("typeType")),
      report_(new ReportView) {
    setObjectName(QLatin1String(kReportSection));
    setWindowFlags(Qt::Window);
    setWindowTitle(toQt(text(TextId::TypeReport)));
    auto* fields = new QHBoxLayout;
    for (const auto& [label, box] : {std::pair(tr("&Period:"), period_), std::pair(tr("&Vehicle:"), vehicle_),
                                     std::pair(tr("D&river:"), driver_), std::pair(tr("&Type:"), type_)}) {
        fields->addWidget(fieldLabel(label, *box));
        fields->addWidget(box, 1);
        connect(box, &QComboBox::currentIndexChanged, this, [this] { refresh(); });
    }
    std::vector<std::pair<QString, QString>> all;
    for (const Period& period : periods())
        all.emplace_back(toQt(text(period.text)), toQt(period.name));
    fill(*period_, toQt(text(TextId::TypeReportAllTrips)), all);
    {
        const QSignalBlocker quiet(period_);
        period_->setCurrentIndex(
            std::max(0, period_->findData(toQt(context_.settings.getText(kReportSection, kPeriod, "-")))));
    }
    connect(period_, &QComboBox::activated, this,
            [this] { context_.settings.setText(kReportSection, kPeriod, chosenIn(*period_).value_or(std::string())); });

    list_ = new TSpreadsheet(context_.spreadsheet(), {.name = std::string(kReportSection) + " List",
                                                      .title = toQt(text(TextId::TypeReportTrips)),
                                                      .emptyText = toQt(text(TextId::TypeReportNoTrips)),
                                                      .use = SpreadsheetView::Use::Cells});
    auto* parts = new QSplitter(Qt::Vertical);
    parts->setObjectName(QStringLiteral("typeParts"));
    parts->setChildrenCollapsible(false);
    parts->addWidget(report_);
    parts->addWidget(list_);
    parts->setStretchFactor(0, 3);
    parts->setStretchFactor(1, 2);

    auto* box = new QDialogButtonBox(QDialogButtonBox::Close);
    addReportButtons(*box, *this, "type", context_, [this] {
        return finishEdit() ? std::optional(tripTypeReport(chosen(), context_.text())) : std::nullopt;
    });
    auto* exported = box->addButton(tr("&Export..."), QDialogButtonBox::ActionRole);
    exported->setObjectName(QStringLiteral("typeExport"));
    exported->setToolTip(tr("Writes the trips with their amounts to a file for other programs."));
    exported->setEnabled(context_.windows && context_.windows->exported);
    connect(exported, &QPushButton::clicked, this, [this] {
        if (finishEdit())
            context_.windows->exported(*list_);
    });
    for (QAbstractButton* button : box->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false); // Enter ends an entry, not the window
    connect(box, &QDialogButtonBox::rejected, this, [this] {
        if (finishEdit())
            reject();
    });
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(parts, 1);
    layout->addWidget(box);
    context_.document.edits().addListener(*this);
    context_.units.addListener(*this);
    showTypes();
    if (!quobrix::restoreGeometry(*this, context_.settings, kReportSection))
        resize(QSize(fontMetrics().averageCharWidth() * 170, fontMetrics().lineSpacing() * 50)
                   .boundedTo(screen()->availableSize() * 9 / 10));
    period_->setFocus();
}

TripTypeWindow::~TripTypeWindow() {
    context_.units.removeListener(*this);
    context_.document.edits().removeListener(*this);
    rememberGeometry(*this, context_.settings, kReportSection);
    delete std::exchange(list_, nullptr); // which shows the columns
}

void TripTypeWindow::setTypes(TripTypes types) {
    types_ = std::move(types);
    showTypes();
}

/// The columns of the list compute with the types; all else follows edits by itself.
void TripTypeWindow::showTypes() {
    const TableRows all{&context_.document.trips(), {}};
    ExportContent content = tripTypeContent({&all, 1}, types_.types, context_.zone);
    std::vector<ShownColumn> columns;
    for (const ExportColumn& column : content.records.front().columns)
        columns.push_back({column.column, toQt(column.heading)});
    list_->setColumns(std::move(columns));
    content_ = std::move(content); // only now are the columns of the one before shown no more
    refresh();
}

std::optional<Report> TripTypeWindow::printable() {
    const TripTypeReport all = chosen();
    return all.trips.front().rows.empty() ? std::nullopt : std::optional(tripTypeReport(all, context_.text()));
}

/// Not before all windows know of the edit.
void TripTypeWindow::historyChanged() {
    QMetaObject::invokeMethod(
        this, [this] { refresh(); }, Qt::QueuedConnection);
}

void TripTypeWindow::unitsChanged(UnitsChange, std::optional<UnitTypeId>) {
    list_->unitsChanged();
    refresh();
}

/// What the boxes offer follows the document and the types.
void TripTypeWindow::offer() {
    const TTripLogTable& trips = context_.document.trips();
    const auto names = [&](RecordName what) {
        std::vector<std::pair<QString, QString>> entries;
        for (const OccurringName& name : namesIn(logSpec(LogId::Trips), trips, what, context_.text()))
            entries.emplace_back(name.key.empty() ? toQt(text(TextId::StatisticsUnknown)) : toQt(name.shown),
                                 toQt(name.key));
        std::ranges::sort(entries, [](const auto& a, const auto& b) {
            return a.second.isEmpty() != b.second.isEmpty() ? b.second.isEmpty()
                                                            : a.first.localeAwareCompare(b.first) < 0;
        });
        return entries;
    };
    fill(*vehicle_, tr("All vehicles"), names(RecordName::Vehicle));
    fill(*driver_, tr("All drivers"), names(RecordName::Driver));
    std::vector<std::pair<QString, QString>> types;
    const TableRows all{&trips, allRows(trips)};
    for (const std::string& name : occurringTypes({&all, 1}, types_.types))
        types.emplace_back(toQt(name), toQt(name));
    types.emplace_back(toQt(text(TextId::TypeReportNone)), QString());
    fill(*type_, tr("All types"), types);
}

TripTypeReport TripTypeWindow::chosen() const {
    const auto period = std::ranges::find(periods(), chosenIn(*period_).value_or(std::string()), &Period::name);
    const TTripLogTable& trips = context_.document.trips();
    TripTypeReport result{.types = types_.types};
    result.period = period != periods().end() ? text(period->text) : text(TextId::TypeReportAllTrips);
    if (period != periods().end())
        result.time = rangeOf(*period, currentTime(), context_.zone);
    std::vector<RowIndex> rows = findRecords(
        logSpec(LogId::Trips), trips, {},
        {.time = result.time, .vehicle = chosenIn(*vehicle_), .driver = chosenIn(*driver_)}, context_.text());
    if (const auto type = chosenIn(*type_))
        keepType(rows, trips, *type);
    result.trips.push_back({&trips, std::move(rows)});
    result.readings = odometerReadings(result.trips);
    return result;
}

void TripTypeWindow::refresh() {
    if (!finishEdit())
        return;
    offer();
    TripTypeReport report = chosen();
    list_->setFilter(
        [rows = report.trips.front().rows](RowIndex row) { return std::ranges::binary_search(rows, row); });
    report.eachTrip = false;
    report_->setReport(tripTypeReport(report, context_.text()));
}

} // namespace quobrix
