#include "device/ui/worker_calls.h"

#include "base/ui/qt_text.h"

#include <QObject>

#include <algorithm>

namespace quobrix {
namespace {

WaitState stateOf(const CallTitle& title, const CallProgress& progress) {
    const bool ofSeveral = title.steps > 0;
    const int steps = ofSeveral ? title.steps : progress.total.load();
    const int done = ofSeveral ? title.step : progress.done.load();
    WaitState state{.what = toQt(title.what), .how = toQt(title.where)};
    state.measurable = steps > 0 && (ofSeveral || done > 0); // the first step is the long one
    state.done = steps > 0 ? static_cast<double>(done) / steps : 0;
    if (steps > 0) {
        const QString step = QObject::tr("step %1 of %2").arg(std::min(done + 1, steps)).arg(steps);
        state.how = state.how.isEmpty() ? step : QObject::tr("%1, %2").arg(state.how, step);
    }
    if (progress.cancelled)
        state.how = QObject::tr("Cancelling when the Quobrix has answered...");
    else if (!state.how.isEmpty())
        state.how[0] = state.how[0].toUpper();
    state.cancel = !title.cancellable   ? WaitState::Cancel::NotOffered
                   : progress.cancelled ? WaitState::Cancel::NotNow
                                        : WaitState::Cancel::Offered;
    return state;
}

} // namespace

/// Of the calls of one operation, which a person takes for one wait.
struct WorkerCalls::Wait {
    CallProgress progress;
    Waiting waiting;

    Wait(QWidget& window, Waiting::Times times)
        : waiting(&window, "LoggerWait", times, [this] { progress.cancelled = true; }) {}
};

WorkerCalls::WorkerCalls(TPollingThread& worker, QWidget& window, Times times)
    : worker_(worker), window_(window), times_(times) {}

WorkerCalls::~WorkerCalls() = default;

bool WorkerCalls::run(const CallTitle& title, const Call& call) {
    if (!wait_)
        wait_ = std::make_unique<Wait>(window_, times_);
    CallProgress& progress = wait_->progress;
    if (progress.cancelled)
        return false;
    progress.done = progress.total = 0;
    ++running_;
    const auto completion = std::make_shared<Completion>(); // the worker leaves finish() after this one woke
    const bool taken = worker_.submit(
        [&](LockedLogger& logger) {
            logger.follow(progress);
            if (!progress.cancelled) // while it waited for a call of the monitoring probe
                call(logger);
        },
        [completion] { completion->finish(); });
    if (taken)
        wait_->waiting.until(*completion, [title, &progress] { return stateOf(title, progress); });
    --running_;
    const bool counts = taken && !progress.cancelled; // not taken: the program is ending
    endWait();
    return counts;
}

void WorkerCalls::suspendPolling() {
    ++pauses_;
    worker_.suspend();
}

void WorkerCalls::resumePolling() {
    worker_.resume();
    --pauses_;
    endWait();
}

void WorkerCalls::endWait() {
    if (pauses_ == 0 && running_ == 0)
        wait_.reset();
}

} // namespace quobrix
