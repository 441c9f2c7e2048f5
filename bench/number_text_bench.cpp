// The text of a value with its unit, as every cell of every list needs it: ours against the toolkit's own way, over the
// same values in the same run. "allocations" counts operator new for one text; the toolkit's texts take memory
// otherwise.

#include "support/allocation_counter.h"
#include "units/unit_system.h"

#include <QLocale>
#include <QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <random>

namespace quobrix {
namespace {

constexpr std::size_t kValues = 4096;

struct Cell {
    UnitTypeId type;
    double base;
};

/// What a trip log shows: speeds, distances, temperatures and engine speeds of ordinary drives.
const std::array<Cell, kValues>& cells() {
    static const auto made = [] {
        std::array<Cell, kValues> result;
        std::mt19937 random(2009);
        const auto between = [&](double least, double greatest) {
            return std::uniform_real_distribution<double>(least, greatest)(random);
        };
        for (std::size_t i = 0; i < kValues; i += 4) {
            result[i] = {UnitTypeId::Speed, between(0, 45)};
            result[i + 1] = {UnitTypeId::Distance, between(0, 2e6)};
            result[i + 2] = {UnitTypeId::Temperature, between(240, 380)};
            result[i + 3] = {UnitTypeId::EngineSpeed, between(10, 110)};
        }
        return result;
    }();
    return made;
}

void chooseUnits(TUnitSystem& units) {
    units.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    units.setUnit(UnitTypeId::Distance, UnitId::Mile);
    units.setUnit(UnitTypeId::Temperature, UnitId::Fahrenheit);
    units.setUnit(UnitTypeId::EngineSpeed, UnitId::RevolutionPerMinute);
}

/// The toolkit's way, with all made ready that can be.
class LocaleText {
public:
    explicit LocaleText(const TUnitSystem& units) : units_(units) {
        for (const UnitTypeRecord& type : allUnitTypes()) {
            const std::string_view label = units.unitLabel(type.id);
            labels_[static_cast<std::size_t>(type.id)] =
                QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size()));
        }
    }
    QString text(const Cell& cell) const {
        const double shown = units_.toDisplay(cell.type, cell.base);
        return pattern_.arg(locale_.toString(shown, 'f', units_.decimals(cell.type)),
                            labels_[static_cast<std::size_t>(cell.type)]);
    }

private:
    const TUnitSystem& units_;
    const QLocale locale_{QLocale::English, QLocale::UnitedStates};
    const QString pattern_ = QStringLiteral("%1%2");
    std::array<QString, kUnitTypeCount> labels_;
};

/// Enters TEXT, the making of one text, under NAME: for one cell after the other.
template <class MakeText>
void enter(const char* name, const MakeText& makeText) {
    benchmark::RegisterBenchmark(name, [makeText](benchmark::State& state) {
        std::size_t next = 0;
        const std::uint64_t before = test::allocations();
        for (auto _ : state) {
            makeText(cells()[next]);
            next = (next + 1) % kValues;
        }
        const auto taken = static_cast<double>(test::allocations() - before);
        state.counters["allocations"] = taken / static_cast<double>(state.iterations());
    });
}

} // namespace
} // namespace quobrix

int main(int argc, char** argv) {
    using namespace quobrix;
    TUnitSystem units;
    chooseUnits(units);
    const LocaleText theirs(units);
    const auto same = [&](const Cell& cell) {
        return theirs.text(cell).toStdString() == units.formatValueWithUnits(cell.type, cell.base);
    };
    if (!std::ranges::all_of(cells(), same)) // or the comparison means nothing
        return 1;
    enter("intoBuffer", [&](const Cell& cell) {
        ValueText buffer;
        benchmark::DoNotOptimize(units.formatValueWithUnits(cell.type, cell.base, buffer).data());
        benchmark::ClobberMemory();
    });
    enter("asToolkitText", [&](const Cell& cell) {
        ValueText buffer;
        const std::string_view text = units.formatValueWithUnits(cell.type, cell.base, buffer);
        benchmark::DoNotOptimize(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    });
    enter("localeAndArg", [&](const Cell& cell) { benchmark::DoNotOptimize(theirs.text(cell)); });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
