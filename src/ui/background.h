#pragma once

#include "base/mutex.h"

#include <QCoreApplication>
#include <QPointer>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

namespace quobrix {

/// Works on a thread of its own, on one thing after the other, for windows that go on meanwhile.
class Background final {
public:
    Background();
    /// Waits for the work under way; what has not begun is given up.
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Does WORK, and calls THEN with what it returns on the user-interface thread. Once RECEIVER, an object of that
    /// thread, has ended, neither happens any more. Work for which memory does not suffice has no outcome.
    template <class Work, class Then>
    void run(QObject& receiver, Work work, Then then) {
        add([there = QPointer<QObject>(&receiver), work = std::move(work), then = std::move(then)] {
            if (!there)
                return;
            const auto outcome = std::make_shared<std::invoke_result_t<const Work&>>(work());
            QMetaObject::invokeMethod(
                qApp,
                [there, then, outcome] {
                    if (there)
                        then(std::move(*outcome));
                },
                Qt::QueuedConnection);
        });
    }

private:
    void add(std::function<void()> work);
    void loop();

    Mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> work_ QUOBRIX_GUARDED_BY(mutex_);
    bool ending_ QUOBRIX_GUARDED_BY(mutex_) = false;
    std::jthread thread_; // last: everything above exists while it runs
};

} // namespace quobrix
