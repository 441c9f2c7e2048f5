#include "ui/background.h"

#include <new>

namespace quobrix {

Background::Background() : thread_([this] { loop(); }) {}

Background::~Background() {
    const MutexLock lock(mutex_);
    ending_ = true;
    wake_.notify_one();
}

void Background::add(std::function<void()> work) {
    const MutexLock lock(mutex_);
    work_.push_back(std::move(work));
    wake_.notify_one();
}

void Background::loop() {
    for (;;) {
        std::function<void()> next;
        {
            MutexLock lock(mutex_);
            while (work_.empty() && !ending_)
                lock.wait(wake_);
            if (ending_)
                return;
            next = std::move(work_.front());
            work_.pop_front();
        }
        try {
            next();
        } catch (const std::bad_alloc&) { // whoever waits for it asks again, or goes
        }
    }
}

} // namespace quobrix
