#include "views/trip_log_summary_view.h"

#include "model/trip_log.h"

namespace quobrix {
namespace {

constexpr auto kColumns =
    kTypesOf<TTripLogRecordColumn, TTripLogStartTimeColumn, TTripLogEndTimeColumn, TTripLogDurationSummaryColumn,
             TTripLogVinColumn, TTripLogDriverIDColumn, TTripLogQuobrixSerialNumberColumn, TTripLogDistanceColumn,
             TTripLogMaximumSpeedColumn, TTripLogAverageSpeedColumn, TTripLogHardBrakesSummaryColumn,
             TTripLogPanicBrakesSummaryColumn, TTripLogHardAccelerationsSummaryColumn,
             TTripLogPanicAccelerationsSummaryColumn, TTripLogTimeInTopSpeedBandColumn, TTripLogCommentsColumn>;
constexpr LogListSpec kTrips{"TTripLogSummaryView", "Trip Log", "trips", kColumns};

} // namespace

TTripLogSummaryView::TTripLogSummaryView(const ViewContext& context, QWidget* parent)
    : LogList(context, kTrips, parent) {}

} // namespace quobrix
