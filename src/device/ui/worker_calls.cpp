#include "device/ui/worker_calls.h"

#include <QCursor>
#include <QEventLoop>
#include <QGuiApplication>

#include <condition_variable>
#include <mutex>

namespace quobrix {
namespace {

// A call that takes longer shows the wait cursor and lets the window paint.
constexpr std::chrono::milliseconds kBlink(100);

/// When the worker is done, seen from both threads. Shared, since the worker leaves finish() after the waiting one
/// woke.
struct Completion {
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
    QEventLoop* loop = nullptr; // to be left when it runs

    void finish() {
        const std::lock_guard lock(mutex);
        done = true;
        changed.notify_all();
        if (loop)
            QMetaObject::invokeMethod(loop, &QEventLoop::quit, Qt::QueuedConnection);
    }
};

} // namespace

void WorkerCalls::run(const Call& call) {
    const auto completion = std::make_shared<Completion>();
    if (!worker_.submit([&call](LockedLogger& logger) { call(logger); }, [completion] { completion->finish(); }))
        return; // the program is ending
    std::unique_lock lock(completion->mutex);
    if (completion->changed.wait_for(lock, kBlink, [&] { return completion->done; }))
        return;
    QEventLoop loop;
    completion->loop = &loop;
    lock.unlock();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    QGuiApplication::restoreOverrideCursor();
    lock.lock();
    completion->changed.wait(lock, [&] { return completion->done; }); // the loop may have been left for another reason
    completion->loop = nullptr;
}

} // namespace quobrix
