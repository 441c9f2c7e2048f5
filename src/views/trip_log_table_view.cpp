#include "views/trip_log_table_view.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "model/trip_report.h"

namespace quobrix {
namespace {

std::vector<ShownColumn> sampleColumns(const TTripLogSampleTable& samples) {
    std::vector<ShownColumn> columns{{&samples.column<TTripLogSampleRecordColumn>()},
                                     {&samples.column<TTripLogSampleElapsedTimeColumn>()},
                                     {&samples.speed()}};
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        if (const ParameterSeriesColumn& series = samples.series(i); series.parameter() != 0)
            columns.push_back({&series, toQt(seriesHeading(series))});
    return columns;
}

} // namespace

TTripLogTableView::TTripLogTableView(const ViewContext& context, QWidget* parent)
    : QTabWidget(parent), context_(context), samples_(addTable("TTripLogSampleTable", QStringLiteral("Samples"))),
      bands_(addTable("TTripLogSpeedBandsTable", QStringLiteral("Speed Bands"))),
      parameters_(addTable("TTripLogParametersTable", QStringLiteral("Parameters"))) {
    setObjectName(QStringLiteral("TTripLogTableView"));
    setAccessibleName(QStringLiteral("Trip Tables"));
    setTabPosition(QTabWidget::South);
    setDocumentMode(true);
}

TSpreadsheet* TTripLogTableView::addTable(const char* name, const QString& title) {
    auto* view = new TSpreadsheet(context_.spreadsheet(), {name, title, {}});
    addTab(view, title);
    return view;
}

void TTripLogTableView::showTrip(std::optional<RowIndex> row) {
    const TTripLogTable& trips = context_.document.trips();
    const auto* samples = row ? trips.column<TTripLogSampleTableColumn>().object(*row) : nullptr;
    samples_->setColumns(samples ? sampleColumns(*samples) : std::vector<ShownColumn>());

    std::vector<ShownColumn> columns;
    SpreadsheetModel::RowTitle bandName;
    if (const auto* bands = row ? trips.column<TTripLogSpeedBandsTableColumn>().object(*row) : nullptr) {
        columns = {{&bands->column<TTripLogSpeedBandFromColumn>()}, {&bands->column<TTripLogSpeedBandToColumn>()}};
        if (const auto* times = trips.column<TTripLogTimePerSpeedBandColumnColumn>().object(*row))
            columns.push_back({times});
        bandName = [bands, text = context_.text()](RowIndex band) { return toQt(speedBandLabel(*bands, band, text)); };
    }
    bands_->setColumns(std::move(columns), std::move(bandName));

    columns.clear();
    if (const auto* parameters = row ? trips.column<TTripLogParametersTableColumn>().object(*row) : nullptr)
        columns = {{&parameters->column<TTripLogParameterColumn>()},
                   {&parameters->column<TTripLogParameterSamplingIntervalColumn>()}};
    parameters_->setColumns(std::move(columns));

    const auto explain = [&](TSpreadsheet* table, const Column& cells, const char* nothing, const char* unreadable) {
        table->view().setEmptyText(QString::fromUtf8(row && !cells.replaceable(*row) ? unreadable : nothing));
    };
    explain(samples_, trips.column<TTripLogSampleTableColumn>(), "No samples were recorded during this trip.",
            "The samples of this trip cannot be read.");
    explain(bands_, trips.column<TTripLogSpeedBandsTableColumn>(), "No speed bands are known of this trip.",
            "The speed bands of this trip cannot be read.");
    explain(parameters_, trips.column<TTripLogParametersTableColumn>(), "No parameters were recorded during this trip.",
            "The parameters of this trip cannot be read.");
}

std::vector<Block> TTripLogTableView::printable() const {
    std::vector<Block> blocks;
    for (int i = 0; i < count(); ++i)
        if (Grid grid = shownCells(static_cast<TSpreadsheet&>(*widget(i))); !grid.rows.empty()) {
            blocks.push_back(Heading{tabText(i).toStdString()});
            blocks.push_back(std::move(grid));
        }
    return blocks;
}

} // namespace quobrix
