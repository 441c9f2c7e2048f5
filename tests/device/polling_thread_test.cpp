#include "device/polling_thread.h"

#include "support/fake_logger_library.h"

#include <gtest/gtest.h>

#include <future>
#include <set>

namespace quobrix::testing {
namespace {

using namespace std::chrono_literals;

/// The latest status that was published, and how to wait for one.
class Published {
public:
    TPollingThread::Publish publish() {
        return [this](std::shared_ptr<const LoggerStatus> status) {
            const std::lock_guard lock(mutex_);
            latest_ = std::move(status);
            ++count_;
            changed_.notify_all();
        };
    }
    template <class Condition>
    bool waitFor(Condition condition) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 20s, [&] { return latest_ && condition(*latest_); });
    }
    int count() {
        const std::lock_guard lock(mutex_);
        return count_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::shared_ptr<const LoggerStatus> latest_;
    int count_ = 0;
};

class Polling : public ::testing::Test {
protected:
    Polling() { fake_.loggers["COM1"] = "K-0042-B"; }

    /// Runs JOB on the worker and waits for it.
    void await(TPollingThread& worker, const TPollingThread::Job& job) {
        std::promise<void> done;
        ASSERT_TRUE(worker.submit(job, [&] { done.set_value(); }));
        done.get_future().wait();
    }

    FakeLoggerLibrary fake_;
    LoggerLink link_{FakeLoggerLibrary::library()};
    Published published_;
    const TPollingThread::Times quick_{1ms, 0ms};
};

TEST_F(Polling, StartsSuspendedAndProbesOnceResumed) {
    TPollingThread worker(link_, published_.publish(), quick_);
    await(worker, [](LockedLogger& logger) { logger.openPort("COM1"); });
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(published_.count(), 1) << "the job's own";
    worker.resume();
    EXPECT_TRUE(published_.waitFor([](const LoggerStatus& s) { return s.loggerPresent() && s.serialNumber == 42; }));
    {
        const LockedLogger locked(link_); // the fake is the worker's but for this
        fake_.loggers.clear();
    }
    EXPECT_TRUE(published_.waitFor([](const LoggerStatus& s) { return s.probe == QUOBRIX_TIMEOUT; }));
}

TEST_F(Polling, SuspensionsAreCounted) {
    TPollingThread worker(link_, published_.publish(), quick_);
    worker.resume();
    worker.suspend();
    worker.suspend();
    worker.resume();
    int before = 0, after = 0;
    await(worker, [&](LockedLogger&) { before = fake_.count("GetSerialNumberAndTime"); });
    std::this_thread::sleep_for(20ms);
    await(worker, [&](LockedLogger&) { after = fake_.count("GetSerialNumberAndTime"); });
    EXPECT_EQ(before, after);
    worker.resume();
    EXPECT_TRUE(published_.waitFor([](const LoggerStatus& s) { return s.probe == QUOBRIX_PORT_NOT_OPENED; }));
}

TEST_F(Polling, AWaitingJobCutsAProbeShort) {
    std::promise<void> probing, submitted;
    fake_.during = [&, first = true](const std::string& function) mutable {
        if (function == "GetSerialNumberAndTime" && std::exchange(first, false)) {
            probing.set_value();
            submitted.get_future().wait();
        }
    };
    LockedLogger(link_).openPort("COM1");
    TPollingThread worker(link_, published_.publish(), quick_);
    worker.resume();
    probing.get_future().wait();
    std::promise<std::string> callBefore;
    worker.submit([&](LockedLogger&) { callBefore.set_value(fake_.calls.back()); });
    submitted.set_value();
    EXPECT_EQ(callBefore.get_future().get(), "GetSerialNumberAndTime")
        << "neither configuration nor identity came first";
    EXPECT_TRUE(published_.waitFor([](const LoggerStatus& s) { return s.newerModel; })) << "it is made anew afterwards";
}

TEST_F(Polling, JobsRunInOrder) {
    std::vector<int> order;
    std::set<std::thread::id> threads;
    std::vector<int> publishedWhenDone;
    fake_.during = [&](const std::string&) { threads.insert(std::this_thread::get_id()); };
    {
        TPollingThread worker(link_, published_.publish(), quick_);
        for (int i = 0; i < 50; ++i)
            worker.submit(
                [&, i](LockedLogger& logger) {
                    logger.probe();
                    order.push_back(i);
                },
                [&] { publishedWhenDone.push_back(published_.count()); });
    } // the end waits for all of them
    ASSERT_EQ(order.size(), 50u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(publishedWhenDone.front(), 1);
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_FALSE(threads.count(std::this_thread::get_id()));
}

TEST_F(Polling, StoppingFinishesTheJobs) {
    TPollingThread worker(link_, published_.publish(), {1h, 30ms});
    worker.resume();
    bool ran = false;
    worker.submit([&](LockedLogger& logger) {
        logger.openPort("COM1");
        ran = true;
    });
    const auto start = std::chrono::steady_clock::now();
    worker.stop();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms) << "the port's rest";
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s) << "the sleep between two probes is cut short";
    EXPECT_TRUE(ran);
    EXPECT_EQ(fake_.openPort, "");
    EXPECT_EQ(fake_.calls.back(), "ClosePort");
    EXPECT_FALSE(worker.submit([](LockedLogger&) { FAIL(); }));
    worker.stop();
}

// For the thread sanitizer above all: everything at once, and the end in the middle of it.
TEST_F(Polling, CommandsWhileItStops) {
    std::atomic<int> accepted = 0, done = 0;
    {
        TPollingThread worker(link_, published_.publish(), {0ms, 0ms});
        worker.resume();
        std::vector<std::jthread> callers;
        for (int caller = 0; caller < 4; ++caller)
            callers.emplace_back([&] {
                for (int i = 0; i < 200; ++i) {
                    worker.suspend();
                    accepted += worker.submit([](LockedLogger& logger) { logger.openPort("COM1"); }, [&] { ++done; });
                    worker.resume();
                    const LockedLogger direct(link_); // as the command line calls, without the worker
                    (void)link_.probeBusy();
                }
            });
        std::this_thread::sleep_for(5ms);
        worker.stop();
    }
    EXPECT_EQ(accepted, done) << "each job that was taken is told to be done";
}

} // namespace
} // namespace quobrix::testing
