#include "device/monitoring_probe.h"

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

/// Between two attempts to open a port, in s. Opening one can make a program wait that has it, so it is not done often.
constexpr std::int64_t kLongestPause = 30;

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
    logger.monitoring_ = true;
    const bool tried = openAgain(logger);
    const bool finished = !(tried && interrupted()) && look(logger, interrupted);
    planOpening(logger, tried);
    logger.monitoring_ = false;
    return finished;
}

bool MonitoringProbe::openAgain(LockedLogger& logger) {
    const LoggerStatus& status = logger.status();
    if (status.portOpen || status.port.empty())
        return false;
    if (opening_ && opening_->port == status.port) {
        const std::int64_t since = logger.now() - opening_->planned;
        if (since >= 0 && since < opening_->pause) // a time to come is that of a clock that was wrong
            return false;
    }
    logger.openPort(std::string(status.port));
    return true;
}

void MonitoringProbe::planOpening(const LockedLogger& logger, bool tried) {
    const LoggerStatus& status = logger.status();
    if (status.portOpen) {
        opening_.reset();
    } else if (!opening_ || opening_->port != status.port) {
        opening_ = {status.port, logger.now(), 1};
    } else if (tried) {
        opening_->pause = std::min(2 * opening_->pause, kLongestPause);
        opening_->planned = logger.now();
    }
}

bool MonitoringProbe::look(LockedLogger& logger, const std::function<bool()>& interrupted) {
    const bool seen = std::exchange(seen_, false);
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
    const bool watched = std::exchange(gaps_, status.gaps) == status.gaps;
    seen_ = true;
    const bool stale = std::exchange(status.readingsStale, false);
    if (!seen || !watched || stale)
        readingsDue_ = LockedLogger::kReadings;
    return takeReadings(logger, interrupted);
}

bool MonitoringProbe::takeReadings(LockedLogger& logger, const std::function<bool()>& interrupted) {
    do {
        if (interrupted())
            return false;
        logger.takeReading(nextReading_);
        nextReading_ = (nextReading_ + 1) % LockedLogger::kReadings;
        --readingsDue_;
    } while (readingsDue_ > 0);
    readingsDue_ = 0;
    return true;
}

} // namespace quobrix
