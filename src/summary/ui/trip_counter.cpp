#include "summary/ui/trip_counter.h"

#include "model/parameter_thresholds.h"

#include <initializer_list>
#include <utility>

namespace quobrix {
namespace {

constexpr int kSlice = 10;        // ms that the window stands still
constexpr int kBusyPause = 100;   // ms
constexpr int kAfterEdit = 1'000; // ms
constexpr qint64 kPatience = 500; // ms that nobody needs to be told about

} // namespace

TripCounter::TripCounter(TQuobrixDocument& document, const Settings& settings, SummaryKeeper& keeper, QObject* parent)
    : QObject(parent), document_(document), settings_(settings), keeper_(keeper) {
    step_.setSingleShot(true);
    edited_.setSingleShot(true);
    edited_.setInterval(kAfterEdit);
    connect(&step_, &QTimer::timeout, this, &TripCounter::step);
    connect(&edited_, &QTimer::timeout, this, [this] { begin(again_); });
    document_.edits().addListener(*this);
}

TripCounter::~TripCounter() { document_.edits().removeListener(*this); }

void TripCounter::documentReplacing() {
    step_.stop();
    edited_.stop();
    summaries_.reset();
    sampled_.clear();
    trips_.clear();
    again_ = false;
}

/// What a trip owns, which is long to read, is read again only if it may be another.
void TripCounter::tableChanged(const TableChange& change) {
    const auto is = [&](const Table* table) { return table && table->id() == change.table; };
    if (change.kind == TableChange::Kind::Cells && is(&document_.trips())) {
        for (const RowRun& run : change.rows)
            sampled_.erase(sampled_.lower_bound(run.first), sampled_.lower_bound(run.end()));
        return;
    }
    if (change.kind != TableChange::Kind::Objects)
        for (const Table* other : std::initializer_list<const Table*>{
                 &document_.vehicles(), &document_.loggers(), &document_.drivers(), document_.fuelEntries(),
                 document_.log(logSpec(LogId::Troubles)), document_.log(logSpec(LogId::Accidents))})
            if (is(other))
                return;
    sampled_.clear();
}

void TripCounter::historyChanged() {
    step_.stop(); // rows may have moved
    summaries_.reset();
    edited_.start();
}

void TripCounter::begin(bool again) {
    step_.stop();
    edited_.stop();
    summaries_.reset();
    if (document_.isExample())
        return;
    again_ = again;
    trips_.clear();
    std::vector<double> thresholds;
    for (std::int32_t parameter = 1; parameter <= kParameterCount; ++parameter)
        thresholds.push_back(parameterThreshold(settings_, parameter));
    if (thresholds != std::exchange(thresholds_, thresholds))
        sampled_.clear();
    next_ = 0;
    since_.start();
    step_.start(0);
}

void TripCounter::step() {
    if (busy_ && busy_())
        return step_.start(kBusyPause);
    if (!summaries_)
        summaries_ = std::make_unique<TripSummaries>(document_, settings_, &sampled_);
    QElapsedTimer slice;
    slice.start();
    for (; next_ < summaries_->count() && slice.elapsed() < kSlice; ++next_)
        if (std::optional<SummaryRecord> trip = summaries_->record(next_))
            trips_.push_back(*trip);
    if (next_ < summaries_->count()) {
        step_.start(0);
    } else {
        summaries_.reset();
        keeper_.count(std::exchange(trips_, {}), std::exchange(again_, false));
    }
    emit progressed();
}

std::optional<double> TripCounter::progress() const {
    if (!summaries_ || since_.elapsed() < kPatience)
        return {};
    return static_cast<double>(next_) / static_cast<double>(summaries_->count());
}

} // namespace quobrix
