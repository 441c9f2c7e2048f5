#pragma once

#include "base/mutex.h"
#include "device/logger_link.h"
#include "device/monitoring_probe.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <thread>

namespace quobrix {

/// The worker: the only thread of the window program that calls the logger library. It looks for the logger about once
/// a second, and runs the commands' calls as jobs, in the order of their submission and between two library calls: a
/// job that waits cuts a probe short, which is then made anew. Its functions may be called from any thread; none of
/// them may be called while holding the device lock.
class TPollingThread {
public:
    /// Takes note of a new status, on the worker and without the device lock.
    using Publish = std::function<void(std::shared_ptr<const LoggerStatus>)>;
    /// Must not throw, nor wait for another thread.
    using Job = std::function<void(LockedLogger&)>;

    struct Times {
        std::chrono::milliseconds interval{1000};     ///< from the end of a probe to the next one
        std::chrono::milliseconds closingPause{1000}; ///< the port's rest after it was closed at the end
    };

    /// Starts suspended: the first port scan resumes it.
    TPollingThread(LoggerLink& link, Publish publish, Times times);
    ~TPollingThread() { stop(); }
    TPollingThread(const TPollingThread&) = delete;
    TPollingThread& operator=(const TPollingThread&) = delete;

    /// Queues JOB, also while polling is suspended. After it the status is published, then DONE is called on the worker
    /// without the device lock. False, and nothing is queued, once the thread has been told to stop.
    bool submit(Job job, std::function<void()> done = {}) QUOBRIX_EXCLUDES(mutex_);

    /// Probing rests until every suspend() has had its resume(). Does not wait: the library call under way, if any, is
    /// the last one of its probe, and comes before every job submitted from now on.
    void suspend() QUOBRIX_EXCLUDES(mutex_);
    void resume() QUOBRIX_EXCLUDES(mutex_);

    /// Finishes the jobs that were submitted, closes the port, rests for the closing pause and ends the thread. Returns
    /// when all that is done; a second call does nothing.
    void stop() QUOBRIX_EXCLUDES(mutex_);

private:
    struct Task {
        Job job;
        std::function<void()> done;
    };

    void work();
    bool runTask(const Task& task); // whether what menus show is to be asked for now
    bool probe();                   // false when it was cut short
    bool probeMustYield() QUOBRIX_EXCLUDES(mutex_);
    std::shared_ptr<const LoggerStatus> publishStatus();

    LoggerLink& link_;
    const Publish publish_;
    const Times times_;
    MonitoringProbe monitor_; // the worker's own

    Mutex mutex_; // never held during a library call
    std::condition_variable wake_;
    std::deque<Task> tasks_ QUOBRIX_GUARDED_BY(mutex_);
    int suspensions_ QUOBRIX_GUARDED_BY(mutex_) = 1;
    bool stopping_ QUOBRIX_GUARDED_BY(mutex_) = false;

    std::jthread thread_; // last: everything above exists while it runs
};

} // namespace quobrix
