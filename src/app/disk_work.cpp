#include "app/disk_work.h"

#include "base/ui/qt_text.h"
#include "texts/source_text.h"
#include "ui/waiting.h"

#include <future>
#include <thread>

namespace quobrix {
namespace {

constexpr Waiting::Times kTimes{.blink = std::chrono::milliseconds(100)}; // most saves are over by then

WaitState stateOf(const DiskProgress& progress) {
    const auto total = static_cast<double>(progress.total.load());
    WaitState state{.what = toQt(text(*progress.what.load()))};
    state.measurable = total > 0;
    state.done = total > 0 ? static_cast<double>(progress.done.load()) / total : 0;
    state.cancel = total > 0 && !progress.cancelled ? WaitState::Cancel::Offered : WaitState::Cancel::NotNow;
    return state;
}

} // namespace

Result<void> runWhilePainting(const DiskWork& work, QWidget* window) {
    DiskProgress progress;
    std::packaged_task<Result<void>()> task([&] { return work(progress); });
    std::future<Result<void>> result = task.get_future();
    Completion completion;
    const std::jthread thread([&] {
        task();
        completion.finish();
    });
    Waiting(window, "DiskProgress", kTimes, [&] { progress.cancelled = true; }).until(completion, [&] {
        return stateOf(progress);
    });
    return result.get();
}

} // namespace quobrix
