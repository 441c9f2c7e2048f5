#include "device/ui/worker_calls.h"

#include "base/mutex.h"
#include "base/ui/qt_text.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <condition_variable>

namespace quobrix {
namespace {

constexpr int kStepWidth = 100; // of the bar's units

QString minutes(qint64 milliseconds) {
    const qint64 seconds = milliseconds / 1000;
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

/// When the worker is done, seen from both threads. Shared, since the worker leaves finish() after the waiting one
/// woke.
struct WorkerCalls::Completion {
    Mutex mutex;
    std::condition_variable changed;
    bool done QUOBRIX_GUARDED_BY(mutex) = false;
    QEventLoop* loop QUOBRIX_GUARDED_BY(mutex) = nullptr; // to be left when it runs

    void finish() {
        const MutexLock lock(mutex);
        done = true;
        changed.notify_all();
        if (loop)
            QMetaObject::invokeMethod(loop, &QEventLoop::quit, Qt::QueuedConnection);
    }
    bool isDone() {
        const MutexLock lock(mutex);
        return done;
    }
};

/// Keeps the windows from taking input, so it stays until the wait is over.
class WorkerCalls::Dialog final : public QDialog {
public:
    Dialog(CallProgress& progress, const QElapsedTimer& since, QWidget* window)
        : QDialog(window), progress_(progress), since_(since), what_(new QLabel), how_(new QLabel), time_(new QLabel),
          bar_(new QProgressBar), buttons_(new QDialogButtonBox(QDialogButtonBox::Cancel)) {
        setObjectName(QStringLiteral("LoggerWait"));
        setWindowTitle(QStringLiteral("Quobrix"));
        setWindowModality(Qt::ApplicationModal);
        what_->setObjectName(QStringLiteral("LoggerWaitText"));
        how_->setObjectName(QStringLiteral("LoggerWaitStep"));
        time_->setObjectName(QStringLiteral("LoggerWaitTime"));
        time_->setToolTip(QStringLiteral("Time since the beginning"));
        bar_->setObjectName(QStringLiteral("LoggerWaitBar"));
        bar_->setTextVisible(false);
        bar_->setMinimumWidth(fontMetrics().averageCharWidth() * 52);
        connect(buttons_, &QDialogButtonBox::rejected, this, &Dialog::reject);
        auto* below = new QHBoxLayout;
        below->addWidget(how_, 1);
        below->addWidget(time_);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(what_);
        layout->addWidget(bar_);
        layout->addLayout(below);
        layout->addWidget(buttons_);
        layout->setSizeConstraint(QLayout::SetFixedSize);
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, &Dialog::look);
        timer->start(100);
    }

    void show(const CallTitle& title) {
        title_ = title;
        what_->setText(toQt(title.what));
        bar_->setAccessibleName(what_->text());
        setAccessibleName(what_->text());
        buttons_->setVisible(title.cancellable);
        look();
        QDialog::show();
    }

    void reject() override {
        if (title_.cancellable)
            progress_.cancelled = true;
        look();
    }

private:
    void look() {
        const bool ofSeveral = title_.steps > 0;
        const int steps = ofSeveral ? title_.steps : progress_.total.load();
        const int done = ofSeveral ? title_.step : progress_.done.load();
        const bool moves = !ofSeveral && done == 0; // the first step is the long one
        bar_->setRange(0, moves ? 0 : steps * kStepWidth);
        bar_->setValue(done * kStepWidth);
        QString how = toQt(title_.where);
        if (steps > 0)
            how += QStringLiteral("%1step %2 of %3")
                       .arg(how.isEmpty() ? "" : ", ")
                       .arg(std::min(done + 1, steps))
                       .arg(steps);
        if (progress_.cancelled)
            how = QStringLiteral("Cancelling when the Quobrix has answered...");
        else if (!how.isEmpty())
            how[0] = how[0].toUpper();
        how_->setText(how);
        time_->setText(minutes(since_.elapsed()));
        buttons_->button(QDialogButtonBox::Cancel)->setEnabled(!progress_.cancelled);
    }

    CallProgress& progress_;
    const QElapsedTimer& since_;
    CallTitle title_;
    QLabel* what_;
    QLabel* how_;
    QLabel* time_;
    QProgressBar* bar_;
    QDialogButtonBox* buttons_;
};

struct WorkerCalls::Wait {
    CallProgress progress;
    QElapsedTimer since;
    std::unique_ptr<Dialog> dialog;
};

WorkerCalls::WorkerCalls(TPollingThread& worker, QWidget& window, Times times)
    : worker_(worker), window_(window), times_(times) {}

WorkerCalls::~WorkerCalls() = default;

bool WorkerCalls::run(const CallTitle& title, const Call& call) {
    if (!wait_) {
        wait_ = std::make_unique<Wait>();
        wait_->since.start();
    }
    CallProgress& progress = wait_->progress;
    if (progress.cancelled)
        return false;
    progress.done = progress.total = 0;
    ++running_;
    const auto completion = std::make_shared<Completion>();
    const bool taken = worker_.submit(
        [&](LockedLogger& logger) {
            logger.follow(progress);
            if (!progress.cancelled) // while it waited for a call of the monitoring probe
                call(logger);
        },
        [completion] { completion->finish(); });
    if (taken)
        await(*completion, title);
    --running_;
    const bool counts = taken && !progress.cancelled; // not taken: the program is ending
    endWait();
    return counts;
}

void WorkerCalls::await(Completion& completion, const CallTitle& title) {
    MutexLock lock(completion.mutex);
    const auto blink = std::chrono::steady_clock::now() + times_.blink;
    while (!completion.done && lock.waitUntil(completion.changed, blink))
        ;
    if (completion.done)
        return;
    QEventLoop loop;
    completion.loop = &loop;
    waitInLoop(completion, loop, title);
    completion.loop = nullptr;
}

void WorkerCalls::waitInLoop(Completion& completion, QEventLoop& loop, const CallTitle& title) {
    const MutexUnlock unlocked(completion.mutex);
    const auto waited = std::chrono::milliseconds(wait_->since.elapsed());
    if (!wait_->dialog && waited < times_.patience) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        QTimer::singleShot(times_.patience - waited, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        QApplication::restoreOverrideCursor();
    }
    if (!completion.isDone()) {
        if (!wait_->dialog) {
            QWidget* modal = QApplication::activeModalWidget();
            wait_->dialog = std::make_unique<Dialog>(wait_->progress, wait_->since, modal ? modal : &window_);
        }
        wait_->dialog->show(title);
        while (!completion.isDone())
            loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void WorkerCalls::suspendPolling() {
    ++pauses_;
    worker_.suspend();
}

void WorkerCalls::resumePolling() {
    worker_.resume();
    --pauses_;
    endWait();
}

void WorkerCalls::endWait() {
    if (pauses_ == 0 && running_ == 0)
        wait_.reset();
}

} // namespace quobrix
