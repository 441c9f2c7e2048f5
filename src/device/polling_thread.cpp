#include "device/polling_thread.h"

#include <utility>

namespace quobrix {

TPollingThread::TPollingThread(LoggerLink& link, Publish publish, Times times)
    : link_(link), publish_(std::move(publish)), times_(times), thread_([this] { work(); }) {}

bool TPollingThread::submit(Job job, std::function<void()> done) {
    {
        const MutexLock lock(mutex_);
        if (stopping_)
            return false;
        tasks_.push_back({std::move(job), std::move(done)});
    }
    wake_.notify_one();
    return true;
}

void TPollingThread::suspend() {
    const MutexLock lock(mutex_);
    ++suspensions_;
}

void TPollingThread::resume() {
    {
        const MutexLock lock(mutex_);
        --suspensions_;
    }
    wake_.notify_one();
}

void TPollingThread::stop() {
    {
        const MutexLock lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void TPollingThread::work() {
    auto nextProbe = std::chrono::steady_clock::now();
    MutexLock lock(mutex_);
    for (;;) {
        if (!tasks_.empty()) {
            const Task task = std::move(tasks_.front());
            tasks_.pop_front();
            const MutexUnlock unlocked(mutex_);
            if (runTask(task))
                nextProbe = std::chrono::steady_clock::now();
        } else if (stopping_) {
            break;
        } else if (suspensions_ > 0) {
            lock.wait(wake_);
        } else if (std::chrono::steady_clock::now() < nextProbe) {
            lock.waitUntil(wake_, nextProbe);
        } else {
            const MutexUnlock unlocked(mutex_);
            if (probe()) // one that was cut short is made anew when the jobs are done
                nextProbe = std::chrono::steady_clock::now() + times_.interval;
        }
    }
    const MutexUnlock unlocked(mutex_);
    LockedLogger(link_).closePort();
    std::this_thread::sleep_for(times_.closingPause);
}

bool TPollingThread::runTask(const Task& task) {
    {
        LockedLogger logger(link_);
        task.job(logger);
    }
    const bool stale = publishStatus()->readingsStale;
    if (task.done)
        task.done();
    return stale;
}

bool TPollingThread::probe() {
    {
        LockedLogger logger(link_);
        if (!monitor_.run(logger, [this] { return probeMustYield(); }))
            return false;
    }
    publishStatus();
    return true;
}

bool TPollingThread::probeMustYield() {
    const MutexLock lock(mutex_);
    return !tasks_.empty() || suspensions_ > 0 || stopping_;
}

std::shared_ptr<const LoggerStatus> TPollingThread::publishStatus() {
    std::shared_ptr<const LoggerStatus> status;
    {
        const LockedLogger logger(link_);
        status = std::make_shared<const LoggerStatus>(logger.status());
    }
    publish_(status);
    return status;
}

} // namespace quobrix
