/// A spreadsheet of 100,000 rows and 20 columns beside a plain table view over an item model that has been filled with
/// the same texts and values.
#include "ratios.h"

#include "settings/settings.h"
#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/find_text.h"
#include "tables/ui/spreadsheet.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QApplication>
#include <QScrollBar>
#include <QStandardItemModel>

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

namespace quobrix::bench {
namespace {

constexpr RowIndex kRows = 100'000;
constexpr int kPages = 200;
constexpr int kLogger = 6; // a column
constexpr int kDeleted = 10'000;

#define BENCH_COLUMN(Name, Base, Unit) QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, #Name, "", Optional)
BENCH_COLUMN(Trip, RowNumberColumn, D0)
BENCH_COLUMN(Start, DateTimeColumn, D0)
BENCH_COLUMN(End, DateTimeColumn, D0)
BENCH_COLUMN(Duration, ElapsedTimeColumn, D0)
BENCH_COLUMN(Vehicle, TextColumn, D0)
BENCH_COLUMN(Driver, TextColumn, D0)
BENCH_COLUMN(Logger, TextColumn, D0)
BENCH_COLUMN(Distance, RealColumn, Distance)
BENCH_COLUMN(Maximum, RealColumn, Speed)
BENCH_COLUMN(Average, RealColumn, Speed)
BENCH_COLUMN(HardBrakes, IntegerColumn, D0)
BENCH_COLUMN(ExtremeBrakes, IntegerColumn, D0)
BENCH_COLUMN(HardAccelerations, IntegerColumn, D0)
BENCH_COLUMN(ExtremeAccelerations, IntegerColumn, D0)
BENCH_COLUMN(BrakeThreshold, RealColumn, Acceleration)
BENCH_COLUMN(AccelerationThreshold, RealColumn, Acceleration)
BENCH_COLUMN(TopBand, ElapsedTimeColumn, D0)
BENCH_COLUMN(Coolant, RealColumn, Temperature)
BENCH_COLUMN(Disconnected, BooleanColumn, D0)
BENCH_COLUMN(Comments, TextColumn, D0)

class BenchTable final : public Table {
public:
    static constexpr PersistentType kType{"BenchTable"};
    const TableSpec& spec() const override {
        static constexpr TableSpec spec{
            kType,
            kTypesOf<Trip, Start, End, Duration, Vehicle, Driver, Logger, Distance, Maximum, Average, HardBrakes,
                     ExtremeBrakes, HardAccelerations, ExtremeAccelerations, BrakeThreshold, AccelerationThreshold,
                     TopBand, Coolant, Disconnected, Comments>,
            {},
            SourceText("Bench"),
            {.editable = true}};
        return spec;
    }

    BenchTable() {
        insertRows(0, kRows);
        for (std::size_t i = 0; i < columnCount(); ++i)
            fill(column(i), i);
    }

private:
    static void fill(Column& column, std::size_t index) {
        for (RowIndex row = 0; row < kRows; ++row) {
            const auto scattered = static_cast<std::int32_t>((row * 7919 + index * 104'729) % 100'003);
            if (auto* texts = dynamic_cast<TextColumn*>(&column))
                texts->set(row, index == 19 ? fmt::format("Remark {} on the way", scattered)
                                            : fmt::format("Unknown #{}", scattered % 50));
            else if (auto* reals = dynamic_cast<RealColumn*>(&column))
                reals->set(row, scattered / 1000.0);
            else if (auto* flags = dynamic_cast<BooleanColumn*>(&column))
                flags->set(row, static_cast<std::uint8_t>(scattered % 2));
            else if (auto* times = dynamic_cast<DateTimeColumn*>(&column))
                times->set(row, 1'000'000'000 + scattered * 3600);
            else if (auto* numbers = dynamic_cast<ArrayColumn<std::int32_t>*>(&column))
                numbers->set(row, scattered);
        }
    }
};

QString toQString(const std::string& text) { return QString::fromStdString(text); }

QVariant toVariant(const Value& value) {
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return qlonglong(*number);
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag;
    if (const auto* text = std::get_if<std::string>(&value))
        return toQString(*text);
    return {};
}

void fillPlain(QStandardItemModel& model, const BenchTable& table, const TextContext& context) {
    for (std::size_t i = 0; i < table.columnCount(); ++i) {
        const Column& column = table.column(i);
        model.setHorizontalHeaderItem(static_cast<int>(i), new QStandardItem(toQString(plainHeading(column.spec()))));
        for (RowIndex row = 0; row < kRows; ++row) {
            auto* item = new QStandardItem(toQString(column.text(row, context)));
            item->setData(toVariant(column.value(row)), Qt::UserRole);
            model.setItem(static_cast<int>(row), static_cast<int>(i), item);
        }
    }
    model.setSortRole(Qt::UserRole);
}

void scroll(QTableView& view) {
    QScrollBar& bar = *view.verticalScrollBar();
    for (int page = 0; page < kPages; ++page) {
        bar.setValue(page * bar.maximum() / kPages);
        view.viewport()->repaint();
    }
}

void sortBothWays(QTableView& view, int column) {
    view.sortByColumn(column, Qt::DescendingOrder);
    view.sortByColumn(column, Qt::AscendingOrder);
}

/// Both windows over the same data.
class Contest {
public:
    Contest() {
        for (std::size_t i = 0; i < table_.columnCount(); ++i)
            columns_.push_back({&table_.column(i)});
        for (const ShownColumn& shown : columns_)
            searched_.push_back(shown.column);
        fillPlain(plainModel_, table_, text_);
        plain_.setModel(&plainModel_);
        spreadsheet_.setColumns(columns_);
        for (QWidget* window : std::initializer_list<QWidget*>{&plain_, &spreadsheet_}) {
            window->resize(kSize);
            window->show();
        }
        QApplication::processEvents();
    }

    std::vector<Ratio> enter() {
        add(
            "First paint", 1, [this] { paintPlain(); }, [this] { paintSpreadsheet(); });
        add(
            "Scroll through 200 pages", 1, [this] { scroll(plain_); }, [this] { scroll(spreadsheet_.view()); });
        addSorting("Sort by a figure, down and up", 7);
        addSorting("Sort by a date, down and up", 1);
        addSorting("Sort by names, down and up", 4);
        addSorting("Sort by texts that all differ, down and up", 19);
        addFinding("Find what is nowhere", "no such remark", false);
        addFinding("Find a figure that is nowhere", "77777777", false);
        addFinding("Find what is in the last cell", table_.column(19).text(kRows - 1, text_), true);
        enter("Delete 10,000 rows that lie apart, and take it back", [this] { deleteAndTakeBack(); });
        return ratios_;
    }

private:
    using Work = std::function<void()>;

    static void enter(const std::string& name, const Work& work, const Work& prepare = {}) {
        benchmark::RegisterBenchmark(name.c_str(), [work, prepare](benchmark::State& state) {
            for (auto _ : state) {
                if (prepare) {
                    state.PauseTiming();
                    prepare();
                    state.ResumeTiming();
                }
                work();
            }
        })->Unit(benchmark::kMillisecond);
    }
    void add(const std::string& label, double aim, const Work& plain, const Work& spreadsheet,
             const Work& prepare = {}) {
        enter(label + "/plain", plain);
        enter(label + "/spreadsheet", spreadsheet, prepare);
        ratios_.push_back({label, label + "/spreadsheet", label + "/plain", aim});
    }
    void addSorting(const char* label, int column) {
        add(
            label, 0.5, [this, column] { sortBothWays(plain_, column); },
            [this, column] { sortBothWays(spreadsheet_.view(), column); },
            [this] { spreadsheet_.view().sortByColumn(kLogger, Qt::AscendingOrder); }); // forgets the last texts
    }
    void addFinding(const char* label, const std::string& needle, bool hit) {
        add(
            label, 0.5, [=, this] { require(findInPlain(needle) == hit); },
            [=, this] {
                require(findText(searched_, spreadsheet_.model().rows(), text_, needle, {}, {}).has_value() == hit);
            });
    }
    static void require(bool condition) {
        if (!condition)
            std::abort();
    }

    void paintPlain() {
        QTableView view;
        view.setModel(&plainModel_);
        view.resize(kSize);
        view.show();
        view.grab();
    }
    void paintSpreadsheet() {
        TSpreadsheet spreadsheet(context_, spec_);
        spreadsheet.setColumns(columns_);
        spreadsheet.resize(kSize);
        spreadsheet.show();
        spreadsheet.grab();
    }
    void deleteAndTakeBack() {
        std::vector<RowIndex> rows;
        for (RowIndex row = kDeleted * 2; row > 0; row -= 2)
            rows.push_back(row);
        require(edits_.removeRows(kNoObject, rows).ok());
        edits_.undo();
        edits_.clear();
    }
    bool findInPlain(const std::string& needle) {
        for (int column = 0; column < plainModel_.columnCount(); ++column)
            if (!plainModel_
                     .match(plainModel_.index(0, column), Qt::DisplayRole, toQString(needle), 1, Qt::MatchContains)
                     .isEmpty())
                return true;
        return false;
    }

    static constexpr QSize kSize{1200, 800};

    BenchTable table_;
    TableEdits edits_{table_};
    const TUnitSystem units_;
    const TimeZone zone_;
    const TextContext text_{units_, zone_};
    Settings settings_{std::make_unique<MemorySettings>()};
    const SpreadsheetContext context_{text_, settings_, &edits_};
    const SpreadsheetSpec spec_{"Bench", QStringLiteral("Bench"), {}};
    std::vector<ShownColumn> columns_;
    std::vector<const Column*> searched_;
    QStandardItemModel plainModel_{static_cast<int>(kRows), static_cast<int>(table_.columnCount())};
    QTableView plain_;
    TSpreadsheet spreadsheet_{context_, spec_};
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
    std::_Exit(result); // a sorted QStandardItemModel takes many minutes to be taken apart
}
