#pragma once

#include "base/mutex.h"
#include "device/logger_library.h"
#include "device/logger_status.h"
#include "device/record_blocks.h"
#include "platform/event_log.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace quobrix {

/// What a call came to and what it handed back; the value means something only after success.
template <class T>
struct Reply {
    ResultCode code = QUOBRIX_OK;
    T value{};
    bool ok() const { return code == QUOBRIX_OK; }
};

/// A finished call with all that a message about it needs, so that the library need not be asked again.
struct LoggerOutcome {
    ResultCode code = QUOBRIX_OK;
    std::string port;        ///< the current port
    std::string description; ///< the library's words for CODE; for kNoLibrary what is wrong with the library
    bool ok() const { return code == QUOBRIX_OK; }
};

/// What the library's log buffers are asked for.
enum class LogMode : std::int32_t { Ordinary = -1, Diagnostic = 1 };

/// The computer's time, s since 1970-01-01 00:00 UTC.
using WallClock = std::function<std::int64_t()>;
inline std::int64_t wallClock() { return static_cast<std::int64_t>(std::time(nullptr)); }

/// What an operation on the logger and the person who waits for it tell each other meanwhile. Any thread.
struct CallProgress {
    /// Steps that are over, of how many; of 0 where that is not known.
    std::atomic<int> done = 0, total = 0;
    /// The person does not want it any more. The operation ends when the library call under way returns.
    std::atomic<bool> cancelled = false;
};

/// The library, the device lock and the state kept beside them, once per process. The functions are reached through
/// LockedLogger only. Outlives everything that refers to it.
class LoggerLink {
public:
    /// Without a library the link still works: every call results in kNoLibrary. EVENTS (if given) is told of calls
    /// that fail, and of loggers that come; it must outlive the link.
    explicit LoggerLink(Result<LoggerLibrary> library, WallClock clock = wallClock, EventLog* events = nullptr);
    LoggerLink(const LoggerLink&) = delete;
    LoggerLink& operator=(const LoggerLink&) = delete;

    bool hasLibrary() const { return libraryProblem_.empty(); }
    /// One sentence on what is wrong with the library; empty when it is there.
    const std::string& libraryProblem() const { return libraryProblem_; }
    /// What the library's file says of itself; empty without one.
    const std::string& libraryVersion() const { return libraryVersion_; }
    /// A monitoring probe is under way, so the device lock may take a while. Any thread, without the lock.
    bool probeBusy() const { return probeBusy_; }

private:
    friend class LockedLogger;
    friend class MonitoringProbe;

    Mutex deviceLock_;
    LoggerLibrary library_ QUOBRIX_GUARDED_BY(deviceLock_);
    LoggerStatus status_ QUOBRIX_GUARDED_BY(deviceLock_);
    std::string libraryProblem_, libraryVersion_;
    WallClock clock_;
    EventLog* events_;
    std::map<std::string, ResultCode> noted_ QUOBRIX_GUARDED_BY(deviceLock_); ///< latest results, see noted()
    std::string notedLogger_ QUOBRIX_GUARDED_BY(deviceLock_);                 ///< none while none is there
    std::atomic<bool> probeBusy_ = false;
};

/// The logger while the device lock is held: making one enters the lock, and nothing else calls the library. Pass it on
/// to operations built of others. Never ask the user anything, nor wait for another thread, while there is one.
class QUOBRIX_SCOPED_LOCK LockedLogger {
public:
    explicit LockedLogger(LoggerLink& link) QUOBRIX_ACQUIRE(link.deviceLock_) : link_(link), lock_(link.deviceLock_) {}
    ~LockedLogger() QUOBRIX_RELEASE() {}
    LockedLogger(const LockedLogger&) = delete;
    LockedLogger& operator=(const LockedLogger&) = delete;

    const LoggerStatus& status() const {
        held();
        return link_.status_;
    }
    const std::string& libraryProblem() const { return link_.libraryProblem(); }
    LoggerOutcome outcome(ResultCode code) const;
    /// The library's words for CODE, or those of this program for its own codes.
    std::string describe(ResultCode code) const;
    std::int64_t now() const { return link_.clock_(); }
    /// EVENT is for the event log.
    void note(const ShownText& event) const;

    /// PROGRESS, which must outlive this object, is somebody's who waits for what follows.
    void follow(CallProgress& progress) { progress_ = &progress; }
    /// Asked between two library calls of an operation: the rest of it is to be left out.
    bool cancelled() const { return progress_ && progress_->cancelled; }
    void progress(int done, int total) {
        if (progress_) {
            progress_->total = total;
            progress_->done = done;
        }
    }

    /// Makes PORT the current port and opens it; any open port is closed first.
    ResultCode openPort(const std::string& port);
    void closePort();
    /// Makes PORT the current port without a call: the monitoring probe will open it.
    void expectPort(const std::string& port);

    /// Asks who is there and what time it has; the status tells. A failure other than a time-out closes the port: after
    /// a time-out the logger may still be plugged in later. A serial number of another form is such a failure.
    ResultCode probe();
    /// The number of the logger that the last probe found, into the status.
    ResultCode convertLastSerialNumber();
    Reply<std::int32_t> serialNumberToInt(const std::string& text) const;
    /// Exactly 8 characters.
    Reply<std::string> serialNumberToText(std::int32_t number) const;
    /// Also tells the status what family the logger is of.
    Reply<LoggerIdentity> identity();

    /// Also keeps the option flag in the status.
    Reply<LoggerConfiguration> configuration();
    ResultCode setConfiguration(const LoggerConfiguration& configuration);

    /// TIME: s since 1970-01-01 00:00 UTC. Clears the logger's memory, so that nothing is left to be downloaded.
    ResultCode setTime(std::int32_t time);
    ResultCode enableLed(bool enable);
    Reply<bool> ledIsEnabled();
    ResultCode enableVinMode(bool enable);
    /// A logger that does not answer the question has it disabled: that is no failure.
    Reply<bool> vinModeIsEnabled();
    /// 0 disables the alarm.
    ResultCode setBeepVolume(std::int32_t volume);
    Reply<std::int32_t> beepVolume();
    Reply<bool> beepIsEnabled();
    ResultCode setCarType(std::int32_t carType);
    Reply<std::int32_t> carType();
    /// Whether it is armed, see arm(): that is what its trouble byte tells.
    Reply<bool> isArmed();

    ResultCode clearLogs();
    /// The library arms and disarms through its ClearTroubleCodes.
    ResultCode arm(bool armed);
    ResultCode clearAccidentLogs();
    Reply<MemoryInformation> memoryInformation();

    /// How many readings there are.
    static constexpr int kReadings = 6;
    /// Asks for the reading WHICH, from 0, and keeps it in the status; without it where the logger does not tell.
    void takeReading(int which);

    /// Reads the logger's logs. A part of them that could not be parsed is no failure, but named in the value; the logs
    /// are then doubtful.
    Reply<RecordBlocks> readLogs(LogMode mode);
    /// All that was read of the logs of SERIAL_TEXT, when there had been so many GAPS, is in the document. They are
    /// current unless there has been another gap, in which something may have been recorded.
    void noteLogsCurrent(const std::string& serialText, std::uint32_t gaps);
    /// It is not, or not any more.
    void noteLogsDoubtful() { state().logsCurrent = false; }
    /// Reads a log file that the library wrote. A PATH of more than 260 bytes, which the library cannot take, is
    /// refused like a file that is none.
    Reply<RecordBlocks> readLogFile(const std::string& path);

private:
    friend class MonitoringProbe;

    /// Calls a function of the library and notes its failure.
    template <auto Function, class... Arguments>
    ResultCode call(Arguments... arguments) const;
    /// Asks it for one value.
    template <auto Function, class Value>
    Reply<Value> ask() const;
    /// CODE is what FUNCTION came to. What is tried again and again is noted only when that changes.
    ResultCode noted(const char* function, ResultCode code) const;
    void noteLogger(ResultCode probe) const;

    /// Whoever has this object has been handed the lock.
    void held() const QUOBRIX_HOLDS(link_.deviceLock_) {}
    const LoggerFunctions& library() const {
        held();
        return link_.library_.functions;
    }
    LoggerStatus& state() {
        held();
        return link_.status_;
    }
    void noteProbe(ResultCode code);
    void goTo(const std::string& port);
    void noteLogsCurrent();
    ResultCode changed(ResultCode code); // of a call that changes what a reading tells

    LoggerLink& link_;
    MutexLock lock_;
    CallProgress* progress_ = nullptr;
    bool monitoring_ = false; ///< nobody has asked for the calls
};

} // namespace quobrix
