#include "ui/waiting.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace quobrix {
namespace {

using namespace std::chrono_literals;

constexpr auto kInterval = 100ms; // at which the dialog looks how it stands
constexpr int kSteps = 1000;      // of the bar

QString minutes(qint64 milliseconds) {
    const qint64 seconds = milliseconds / 1000;
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

void Completion::finish() {
    const MutexLock lock(mutex_);
    done_ = true;
    changed_.notify_all();
    if (loop_)
        QMetaObject::invokeMethod(loop_, &QEventLoop::quit, Qt::QueuedConnection);
}

bool Completion::isDone() {
    const MutexLock lock(mutex_);
    return done_;
}

bool Completion::waitFor(std::chrono::milliseconds time) {
    MutexLock lock(mutex_);
    const auto end = std::chrono::steady_clock::now() + time;
    while (!done_ && lock.waitUntil(changed_, end))
        ;
    return done_;
}

bool Completion::leaveWhenDone(QEventLoop* loop) {
    const MutexLock lock(mutex_);
    loop_ = loop;
    return done_;
}

/// Keeps the windows from taking input, so it stays until the wait is over.
class Waiting::Dialog final : public QDialog {
public:
    Dialog(const Waiting& wait, QWidget* parent)
        : QDialog(parent), wait_(wait), what_(new QLabel), how_(new QLabel), time_(new QLabel), bar_(new QProgressBar),
          buttons_(new QDialogButtonBox(QDialogButtonBox::Cancel)) {
        const QString name = QLatin1String(wait.name_);
        setObjectName(name);
        setWindowTitle(QStringLiteral("Quobrix"));
        setWindowModality(Qt::ApplicationModal);
        what_->setObjectName(name + QStringLiteral("Text"));
        how_->setObjectName(name + QStringLiteral("Step"));
        time_->setObjectName(name + QStringLiteral("Time"));
        time_->setToolTip(tr("Time since the beginning"));
        bar_->setObjectName(name + QStringLiteral("Bar"));
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
        timer->start(kInterval);
    }

    void show(Look how) {
        state_ = std::move(how);
        look();
        QDialog::show();
    }

    void reject() override {
        if (state_().cancel == WaitState::Cancel::Offered)
            wait_.cancel_();
        look();
    }

private:
    void look() {
        const WaitState now = state_();
        what_->setText(now.what);
        bar_->setAccessibleName(now.what);
        setAccessibleName(now.what);
        how_->setText(now.how);
        time_->setText(minutes(wait_.since_.elapsed()));
        bar_->setRange(0, now.measurable ? kSteps : 0);
        if (now.measurable)
            bar_->setValue(static_cast<int>(kSteps * std::clamp(now.done, 0.0, 1.0)));
        buttons_->setVisible(now.cancel != WaitState::Cancel::NotOffered);
        buttons_->button(QDialogButtonBox::Cancel)->setEnabled(now.cancel == WaitState::Cancel::Offered);
    }

    const Waiting& wait_;
    Look state_;
    QLabel* what_;
    QLabel* how_;
    QLabel* time_;
    QProgressBar* bar_;
    QDialogButtonBox* buttons_;
};

Waiting::Waiting(QWidget* window, const char* name, Times times, std::function<void()> cancel)
    : window_(window), name_(name), times_(times), cancel_(std::move(cancel)) {
    since_.start();
}

Waiting::~Waiting() = default;

void Waiting::until(Completion& work, Look look) {
    if (work.waitFor(times_.blink))
        return;
    QEventLoop loop;
    if (work.leaveWhenDone(&loop))
        return;
    const auto waited = std::chrono::milliseconds(since_.elapsed());
    if (!dialog_ && waited < times_.patience) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        QTimer::singleShot(times_.patience - waited, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        QApplication::restoreOverrideCursor();
    }
    if (!work.isDone()) {
        if (!dialog_) {
            QWidget* modal = QApplication::activeModalWidget();
            dialog_ = std::make_unique<Dialog>(*this, modal ? modal : window_);
        }
        dialog_->show(std::move(look));
        while (!work.isDone())
            loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    work.leaveWhenDone(nullptr);
}

} // namespace quobrix
