#include "app/disk_work.h"

#include <QCursor>
#include <QEventLoop>
#include <QGuiApplication>

#include <chrono>
#include <future>
#include <thread>

namespace quobrix {

Result<void> runWhilePainting(const std::function<Result<void>()>& work) {
    std::packaged_task<Result<void>()> task(work);
    std::future<Result<void>> result = task.get_future();
    QEventLoop loop;
    std::jthread thread([&] {
        task();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    if (result.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        QGuiApplication::restoreOverrideCursor();
    }
    return result.get();
}

} // namespace quobrix
