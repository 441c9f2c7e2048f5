#include "platform/event_log.h"

#include <utility>

namespace quobrix {
namespace {

constexpr std::size_t kMostWaiting = 1000; // lines, for a disk that hangs

} // namespace

EventLog::EventLog(LogFile file, TimeText time)
    : file_(std::move(file)), time_(std::move(time)), thread_([this] { write(); }) {}

EventLog::~EventLog() {
    {
        const MutexLock lock(mutex_);
        ending_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void EventLog::note(const ShownText& event) {
    std::string line = time_() + " " + event;
    {
        const MutexLock lock(mutex_);
        if (lines_.size() < kMostWaiting)
            lines_.push_back(std::move(line));
    }
    wake_.notify_one();
}

void EventLog::write() {
    MutexLock lock(mutex_);
    for (bool fails = false; !(ending_ && (fails || lines_.empty()));) {
        if (lines_.empty()) {
            lock.wait(wake_);
            continue;
        }
        const std::string line = std::move(lines_.front());
        lines_.pop_front();
        const MutexUnlock unlocked(mutex_);
        fails = !file_.append(line);
    }
}

} // namespace quobrix
