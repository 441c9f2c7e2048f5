#include "device/monitoring_probe.h"

#include <algorithm>

namespace quobrix {
namespace {

/// A longer gap in watching, in s, is time enough for the logger to have been away and recorded something.
constexpr std::int64_t kLongestGap = 30;

class BusyMark {
public:
    explicit BusyMark(std::atomic<bool>& busy) : busy_(busy) { busy_ = true; }
    ~BusyMark() { busy_ = false; }

private:
    std::atomic<bool>& busy_;
};

} // namespace

bool MonitoringProbe::run(LockedLogger& logger, const std::function<bool()>& interrupted) {
    const BusyMark busy(logger.link_.probeBusy_);
    if (logger.probe() != QUOBRIX_OK)
        return true;
    if (interrupted())
        return false;
    if (const ResultCode code = logger.configuration().code; code != QUOBRIX_OK) {
        logger.noteProbe(code);
        return true;
    }
    if (interrupted())
        return false;
    if (const ResultCode code = logger.identity().code; code != QUOBRIX_OK) {
        logger.noteProbe(code);
        return true;
    }
    logger.convertLastSerialNumber();

    LoggerStatus& status = logger.state();
    const Sighting now{status.serialNumber, logger.now()};
    const bool sameLogger = previous_ && previous_->serialNumber == now.serialNumber;
    // A download can take longer than the gap; the logger that it read was there all the while.
    const bool watched = sameLogger && now.time - std::max(previous_->time, status.logsReadTime) <= kLongestGap;
    if (!watched)
        status.logsCurrent = false;
    previous_ = now;
    return true;
}

} // namespace quobrix
