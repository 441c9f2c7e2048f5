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
#include <memory>
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
            const std::lock_guard lock(state_->mutex);
            ++state_->turns;
            state_->turned.notify_all();
        });
        timer_.start(1);
        fake.during = [state = state_](const std::string& function) {
            std::unique_lock lock(state->mutex);
            const int enough = state->turns + 12; // on a busy computer, timers of the same length differ by several
            EXPECT_TRUE(state->turned.wait_for(lock, std::chrono::seconds(20),
                                               [&] { return state->turns >= enough || state->over; }))
                << "the window stands still during " << function;
        };
    }
    /// From now on calls take no time.
    void hurry() {
        const std::lock_guard lock(state_->mutex);
        state_->over = true;
        state_->turned.notify_all();
    }
    ~SlowLoggerLibrary() { hurry(); }

private:
    /// Probes go on calling the library after this object has ended.
    struct State {
        std::mutex mutex;
        std::condition_variable turned;
        int turns = 0;
        bool over = false;
    };

    std::function<void(QWidget&)> look_;
    QTimer timer_;
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace quobrix::testing
