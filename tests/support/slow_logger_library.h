#pragma once

#include "support/fake_logger_library.h"

#include <QApplication>
#include <QObject>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace quobrix::testing {

/// Makes every call of a logger library take until the event loop has turned three times, without any clock: who waits
/// for a call and keeps the event loop from turning waits for ever, which fails the test.
class SlowLoggerLibrary {
public:
    /// LOOK sees the dialog of each wait, again and again.
    explicit SlowLoggerLibrary(FakeLoggerLibrary& fake, std::function<void(QWidget&)> look = {})
        : look_(std::move(look)) {
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (look_ && modal && modal->objectName() == QLatin1String("LoggerWait"))
                look_(*modal);
            const std::lock_guard lock(mutex_);
            ++turns_;
            turned_.notify_all();
        });
        timer_.start(1);
        fake.during = [this](const std::string& function) {
            std::unique_lock lock(mutex_);
            const int enough = turns_ + 3;
            EXPECT_TRUE(turned_.wait_for(lock, std::chrono::seconds(20), [&] { return turns_ >= enough || over_; }))
                << "the window stands still during " << function;
        };
    }
    /// From now on calls take no time.
    void hurry() {
        const std::lock_guard lock(mutex_);
        over_ = true;
        turned_.notify_all();
    }
    ~SlowLoggerLibrary() { hurry(); }

private:
    std::function<void(QWidget&)> look_;
    QTimer timer_;
    std::mutex mutex_;
    std::condition_variable turned_;
    int turns_ = 0;
    bool over_ = false;
};

} // namespace quobrix::testing
