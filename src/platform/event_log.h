#pragma once

#include "base/mutex.h"
#include "base/shown_text.h"
#include "platform/log_file.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <string>
#include <thread>

namespace quobrix {

/// What happened in a run of the program, for whoever is asked for help: a log file that a thread of its own writes, so
/// that nobody waits for a disk. A line that cannot be written is left out. Any thread.
class EventLog {
public:
    /// The present time as it stands before an event.
    using TimeText = std::function<std::string()>;

    EventLog(LogFile file, TimeText time);
    /// Returns when everything is written, or cannot be.
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    /// Waits for nothing.
    void note(const ShownText& event) QUOBRIX_EXCLUDES(mutex_);

private:
    void write() QUOBRIX_EXCLUDES(mutex_);

    const LogFile file_;
    const TimeText time_;
    Mutex mutex_; // never held while the file is written
    std::condition_variable wake_;
    std::deque<std::string> lines_ QUOBRIX_GUARDED_BY(mutex_);
    bool ending_ QUOBRIX_GUARDED_BY(mutex_) = false;
    std::jthread thread_; // last: everything above exists while it runs
};

} // namespace quobrix
