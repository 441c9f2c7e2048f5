#pragma once

#include "base/mutex.h"
#include "summary/summary_log.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace quobrix {

/// The summary database as the window uses it: read and changed on a thread of its own, one thing after the other,
/// since its file may be locked or its disk slow. What another program keeps it from doing it tries again, in the same
/// order.
class SummaryKeeper final : public QObject {
    Q_OBJECT
public:
    using Records = std::shared_ptr<const std::vector<SummaryRecord>>;
    /// PROBLEM is what an error means to a person: a sentence.
    using Done = std::function<void(const Result<void>& done, const ShownText& problem)>;
    struct Times {
        std::chrono::milliseconds again{3'000}; ///< from one attempt to the next
    };

    SummaryKeeper(std::filesystem::path database, FileSystem& files, Times times, QObject* parent = nullptr);
    explicit SummaryKeeper(std::filesystem::path database, QObject* parent = nullptr)
        : SummaryKeeper(std::move(database), FileSystem::system(), Times{}, parent) {}
    /// Returns when everything that was asked for has been tried once more.
    ~SummaryKeeper() override;

    /// As they were when they were read last; none before the first time, and as long as there is a problem with that.
    const Records& records() const { return records_; }
    /// Why they cannot be read, or trips not be counted; empty if they can. Another program that has the file is none.
    const ShownText& problem() const { return problem_; }

    /// Reads the records, if they are others than when they were read last.
    void read();
    /// Counts TRIPS, which are all of a document; AGAIN: also those whose records a person has deleted.
    void count(std::vector<SummaryRecord> trips, bool again = false);
    /// Removes records that are like these. Not tried again: DONE tells on the window's thread what came of it.
    void remove(std::vector<SummaryRecord> records, Done done);

signals:
    /// records() or problem() are others.
    void changed();

private:
    struct Change {
        std::vector<SummaryRecord> trips, removed;
        bool again = false;
        Done done{};
    };

    void ask(Change change);
    void work();
    void doRead();
    Result<void> doChange(const Change& change);
    void publish(Records records, const Error* error);

    const std::filesystem::path database_;
    FileSystem& files_;
    const Times times_;
    Records records_;
    ShownText problem_;
    Mutex mutex_; // never held while the file is touched
    std::condition_variable wake_;
    std::deque<Change> changes_ QUOBRIX_GUARDED_BY(mutex_);
    bool read_ QUOBRIX_GUARDED_BY(mutex_) = false;
    bool ending_ QUOBRIX_GUARDED_BY(mutex_) = false;
    std::optional<FileStatus> readAt_; ///< the thread's; nothing: there was none, or it is to be read anyway
    std::jthread thread_;              // last: everything above exists while it runs
};

} // namespace quobrix
