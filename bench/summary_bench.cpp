/// The summary of 100,000 trips, opened, sorted and filtered, beside a plain table view with a sorting and filtering
/// proxy over an item model that has been filled with the same texts and values; and the memory that the summary takes.
#include "ratios.h"

#include "model/quobrix_document.h"
#include "model/record_filter.h"
#include "settings/settings.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"
#include "views/log_list.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>

#include <fmt/format.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

namespace quobrix::bench {
namespace {

constexpr RowIndex kTrips = 100'000;
constexpr double kMostBytes = 600; // a trip
constexpr QSize kSize{1200, 800};
const LogSpec& kLog = logSpec(LogId::Trips);

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Ten years of a fleet: 40 vehicles, 60 drivers, 45 loggers.
void fill(TQuobrixDocument& document) {
    TTripLogTable& trips = document.trips();
    trips.insertRows(0, kTrips);
    std::vector<std::string> vehicles, loggers, drivers;
    for (int i = 0; i < 60; ++i) {
        vehicles.push_back(fmt::format("1HGCM82633A{:06}", i % 40));
        loggers.push_back(fmt::format("K-{:04}-B", i % 45));
        drivers.push_back(std::to_string(i + 1));
    }
    document.vehicles().addMissing(vehicles);
    document.loggers().nameAll(document.loggers().addMissing(loggers), "Quobrix");
    for (const std::string& driver : document.drivers().addMissing(drivers))
        document.drivers().nameAll(std::vector{driver}, "Driver " + driver);
    for (RowIndex row = 0; row < kTrips; ++row) {
        const std::size_t any = row * 7919 % 100'003;
        const auto start = static_cast<std::int32_t>(1'300'000'000 + row * 3000);
        trips.column<TTripLogVinColumn>().set(row, vehicles[any % 40]);
        trips.column<TTripLogQuobrixSerialNumberColumn>().set(row, loggers[any % 45]);
        trips.column<TTripLogDriverIDColumn>().set(row, static_cast<std::int32_t>(any % 60 + 1));
        trips.column<TTripLogStartTimeColumn>().set(row, start);
        trips.column<TTripLogEndTimeColumn>().set(row, start + static_cast<std::int32_t>(any % 7200));
        trips.column<TTripLogDistanceColumn>().set(row, static_cast<double>(any));
        trips.column<TTripLogMaximumSpeedColumn>().set(row, static_cast<double>(any % 50));
        trips.column<TTripLogHardBrakesColumn>().set(row, static_cast<std::int32_t>(any % 7));
        trips.column<TTripLogPanicBrakesColumn>().set(row, static_cast<std::int32_t>(any % 3));
        trips.column<TTripLogHardAccelerationsColumn>().set(row, static_cast<std::int32_t>(any % 5));
        trips.column<TTripLogPanicAccelerationsColumn>().set(row, static_cast<std::int32_t>(any % 2));
        trips.column<TTripLogTimeInTopSpeedBandColumn>().set(row, static_cast<std::int32_t>(any % 600));
        if (any % 10 == 0)
            trips.column<TTripLogCommentsColumn>().set(row, fmt::format("Delivery {} by the coast", any));
    }
}

double bytesInUse() { return static_cast<double>(mallinfo2().uordblks); }

QString toQString(const std::string& text) { return QString::fromStdString(text); }

QVariant toVariant(const Column& column, RowIndex row, const QString& text) {
    const Value value = column.value(row);
    if (column.kind() == ColumnKind::Text || column.kind() == ColumnKind::Selection)
        return text;
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return qlonglong(*number);
    return {};
}

/// Both windows over the same document.
class Contest {
public:
    Contest() {
        {
            TQuobrixDocument made;
            fill(made);
            require(static_cast<bool>(made.saveAs(folder_ / "Fleet.car")));
        }
        require(static_cast<bool>(document_.open(folder_ / "Fleet.car", TDocument::Access::Read)));
        const double before = bytesInUse();
        ours_ = open();
        const double opened = bytesInUse();
        const TTripLogTable& trips = document_.trips();
        for (const PersistentType* type : kLog.summary)
            columns_.push_back(&trips.columnOf(*type));
        ours_->view().sortByColumn(kDistance, Qt::DescendingOrder);
        filterOurs("coast");
        filterOurs("");
        const double used = bytesInUse();
        fmt::print("Memory a trip, of {} at most: {:.0f} bytes when opened, {:.0f} once sorted and filtered\n\n",
                   kMostBytes, (opened - before) / kTrips, (used - before) / kTrips);

        for (std::size_t i = 0; i < columns_.size(); ++i)
            for (RowIndex row = 0; row < kTrips; ++row) {
                const QString text = toQString(columns_[i]->text(row, context_.text()));
                auto* item = new QStandardItem(text);
                item->setData(toVariant(*columns_[i], row, text), Qt::UserRole);
                plainModel_.setItem(static_cast<int>(row), static_cast<int>(i), item);
            }
        proxy_ = std::make_unique<QSortFilterProxyModel>();
        prepare(*proxy_);
        plain_.setModel(proxy_.get());
        plain_.resize(kSize);
        plain_.show();
        QApplication::processEvents();
    }

    std::vector<Ratio> enter() {
        add(
            "Open", 1, [this] { openPlain(); }, [this] { open()->grab(); });
        addSorting("Sort by a figure, down and up", kDistance);
        addSorting("Sort by a date, down and up", kStart);
        addSorting("Sort by vehicles, down and up", kVehicle);
        addSorting("Sort by comments, down and up", static_cast<int>(kLog.summary.size()) - 1);
        addFilter("Filter by what many read", "driver 5");
        addFilter("Filter by what few read", "delivery 77");
        addFilter("Filter by a figure", "77777");
        addFilter("Filter by what none reads", "no such remark");
        enter("Filter by time, vehicle and driver", [this] {
            filterOurs({.time = {1'400'000'000, 1'500'000'000}, .vehicle = "Unknown #7", .driver = "Driver 7"});
        });
        return ratios_;
    }

private:
    using Work = std::function<void()>;

    static void enter(const std::string& name, const Work& work, const Work& before = {}) {
        benchmark::RegisterBenchmark(name.c_str(), [work, before](benchmark::State& state) {
            for (auto _ : state) {
                if (before) {
                    state.PauseTiming();
                    before();
                    state.ResumeTiming();
                }
                work();
            }
        })->Unit(benchmark::kMillisecond);
    }
    void add(const std::string& label, double aim, const Work& plain, const Work& ours, const Work& beforePlain = {},
             const Work& beforeOurs = {}) {
        enter(label + "/plain", plain, beforePlain);
        enter(label + "/summary", ours, beforeOurs);
        ratios_.push_back({label, label + "/summary", label + "/plain", aim});
    }
    /// Of all rows, which are in another order.
    void addSorting(const char* label, int column) {
        const auto both = [column](QTableView& view) {
            view.sortByColumn(column, Qt::DescendingOrder);
            view.sortByColumn(column, Qt::AscendingOrder);
        };
        add(
            label, 0.5, [=, this] { both(plain_); }, [=, this] { both(ours_->view()); },
            [this] {
                proxy_->setFilterFixedString({});
                plain_.sortByColumn(kDriver, Qt::AscendingOrder);
            },
            [this] { // which forgets the texts of the last time
                filterOurs("");
                ours_->view().sortByColumn(kDriver, Qt::AscendingOrder);
            });
    }
    /// From all rows, in their stored order.
    void addFilter(const char* label, const char* words) {
        add(
            label, 0.5,
            [=, this] {
                proxy_->setFilterFixedString(QString::fromLatin1(words));
                QApplication::processEvents();
            },
            [=, this] { filterOurs(words); },
            [this] {
                plain_.sortByColumn(-1, Qt::AscendingOrder);
                proxy_->setFilterFixedString({});
            },
            [this] {
                ours_->view().sortByColumn(-1, Qt::AscendingOrder);
                filterOurs("");
            });
    }

    std::unique_ptr<LogList> open() {
        auto list = std::make_unique<LogList>(context_, kLog);
        list->show(&document_.trips());
        list->resize(kSize);
        list->QWidget::show();
        QApplication::processEvents();
        return list;
    }
    static void prepare(QSortFilterProxyModel& proxy, QAbstractItemModel& model) {
        proxy.setSourceModel(&model);
        proxy.setSortRole(Qt::UserRole);
        proxy.setFilterKeyColumn(-1);
        proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    }
    void prepare(QSortFilterProxyModel& proxy) { prepare(proxy, plainModel_); }
    void openPlain() {
        QSortFilterProxyModel proxy;
        prepare(proxy);
        QTableView view;
        view.setModel(&proxy);
        view.resize(kSize);
        view.show();
        QApplication::processEvents();
        view.grab();
    }
    /// As a person does, with the footer's totals.
    void filterOurs(const char* words) {
        ours_->findChild<QLineEdit*>(QStringLiteral("filterWords"))->setText(QString::fromLatin1(words));
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(ours_->findChild<QWidget*>(QStringLiteral("FilterBar")), &enter);
        QApplication::processEvents();
    }
    void filterOurs(const RecordCriteria& criteria) {
        const TTripLogTable& trips = document_.trips();
        auto wanted = std::make_shared<std::vector<bool>>(trips.rowCount());
        for (const RowIndex row : findRecords(kLog, trips, columns_, criteria, context_.text()))
            (*wanted)[row] = true;
        ours_->setFilter([wanted](RowIndex row) { return (*wanted)[row]; });
    }

    static constexpr int kStart = 1, kVehicle = 4, kDriver = 5, kDistance = 7; // columns of the summary

    test::TemporaryFolder folder_;
    TQuobrixDocument document_;
    Settings settings_{std::make_unique<MemorySettings>()};
    TUnitSystem units_;
    const TimeZone zone_;
    const ViewContext context_{document_, settings_, units_, zone_};
    std::unique_ptr<LogList> ours_;
    std::vector<const Column*> columns_;
    QStandardItemModel plainModel_{static_cast<int>(kTrips), static_cast<int>(kLog.summary.size())};
    std::unique_ptr<QSortFilterProxyModel> proxy_;
    QTableView plain_;
    std::vector<Ratio> ratios_;
};

} // namespace
} // namespace quobrix::bench

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    quobrix::bench::Contest contest;
    const int result = quobrix::bench::runAndCompare(argc, argv, contest.enter());
    std::fflush(nullptr);
    std::_Exit(result); // the item model takes long to be taken apart
}
