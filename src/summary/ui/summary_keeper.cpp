#include "summary/ui/summary_keeper.h"

#include <algorithm>
#include <utility>

namespace quobrix {

SummaryKeeper::SummaryKeeper(std::filesystem::path database, FileSystem& files, Times times, QObject* parent)
    : QObject(parent), database_(std::move(database)), files_(files), times_(times), thread_([this] { work(); }) {}

SummaryKeeper::~SummaryKeeper() {
    {
        const MutexLock lock(mutex_);
        ending_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void SummaryKeeper::read() {
    {
        const MutexLock lock(mutex_);
        read_ = true;
    }
    wake_.notify_one();
}

void SummaryKeeper::count(std::vector<SummaryRecord> trips, bool again) {
    if (!trips.empty() && !database_.empty())
        ask({.trips = std::move(trips), .removed = {}, .again = again});
}

void SummaryKeeper::remove(std::vector<SummaryRecord> records, Done done) {
    ask({.trips = {}, .removed = std::move(records), .done = std::move(done)});
}

void SummaryKeeper::ask(Change change) {
    {
        const MutexLock lock(mutex_);
        changes_.insert(change.done ? changes_.begin() : changes_.end(), std::move(change)); // a person waits
    }
    wake_.notify_one();
}

void SummaryKeeper::work() {
    using Clock = std::chrono::steady_clock;
    auto notBefore = Clock::now();
    MutexLock lock(mutex_);
    for (;;) {
        if (std::exchange(read_, false) && !ending_) {
            const MutexUnlock unlocked(mutex_);
            doRead();
        } else if (!changes_.empty() && (ending_ || changes_.front().done || Clock::now() >= notBefore)) {
            Change change = std::move(changes_.front());
            changes_.pop_front();
            bool tryAgain = false;
            {
                const MutexUnlock unlocked(mutex_);
                const Result<void> done = doChange(change);
                tryAgain = !done && done.error().kind == ErrorKind::InUse && !change.done;
                if (change.done)
                    QMetaObject::invokeMethod(
                        this,
                        [tell = change.done, done,
                         problem = done ? ShownText() : summaryProblem(done.error(), database_)] {
                            tell(done, problem);
                        },
                        Qt::QueuedConnection);
            }
            if (tryAgain && !ending_) {
                changes_.push_front(std::move(change));
                notBefore = Clock::now() + times_.again;
            }
        } else if (ending_) {
            return;
        } else if (changes_.empty()) {
            lock.wait(wake_);
        } else {
            lock.waitUntil(wake_, notBefore);
        }
    }
}

void SummaryKeeper::doRead() {
    const Result<FileStatus> status = files_.status(database_);
    if (status && readAt_ == *status)
        return;
    SummaryDatabase database(files_);
    const Result<void> opened = database.open(database_, SummaryDatabase::Access::Read);
    Result<std::vector<SummaryRecord>> records = opened ? database.readAll() : opened.error();
    if (!records && records.error().kind == ErrorKind::NotFound)
        records = std::vector<SummaryRecord>();
    if (!records)
        return publish(nullptr, &records.error());
    readAt_ = status ? std::optional(*status) : std::nullopt;
    publish(std::make_shared<const std::vector<SummaryRecord>>(*std::move(records)), nullptr);
}

Result<void> SummaryKeeper::doChange(const Change& change) {
    SummaryLog log(files_);
    const auto run = [&]() -> Result<void> {
        QUOBRIX_TRY(log.open(database_, SummaryDatabase::Access::Write));
        if (!change.removed.empty()) // by what they hold: others may have come and gone since they were read
            return log.remove(recordsLike(change.removed, log.records()));
        if (change.again) {
            std::vector<SummaryKey> keys;
            for (const SummaryRecord& trip : change.trips)
                keys.push_back(keyOf(trip));
            QUOBRIX_TRY(log.forgetDeleted(keys));
        }
        const Result<CountedTrips> counted = log.count(change.trips);
        return counted ? Result<void>() : counted.error();
    };
    const Result<void> done = run();
    if (done || done.error().kind == ErrorKind::NotDurable) {
        readAt_.reset(); // whatever the file's time says
        publish(std::make_shared<const std::vector<SummaryRecord>>(log.takeRecords()), nullptr);
    } else if (!change.done) {
        publish(nullptr, &done.error());
    }
    return done;
}

/// On the window's thread. With an error the records that are known stay.
void SummaryKeeper::publish(Records records, const Error* error) {
    ShownText problem;
    if (error && error->kind != ErrorKind::InUse)
        problem = summaryProblem(*error, database_);
    QMetaObject::invokeMethod(
        this,
        [this, records = std::move(records), problem = std::move(problem)] {
            if (records)
                records_ = records;
            problem_ = problem;
            emit changed();
        },
        Qt::QueuedConnection);
}

} // namespace quobrix
