#include "app/disk_work.h"

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
#include <chrono>
#include <future>
#include <thread>

namespace quobrix {
namespace {

using namespace std::chrono_literals;

constexpr auto kFelt = 100ms;     // from here on the window paints, under a wait cursor
constexpr auto kLong = 400ms;     // later the dialog comes up
constexpr auto kInterval = 100ms; // at which it looks at the progress
constexpr int kSteps = 1000;

/// Shows a progress. It stays until the work is over, because it keeps the window from taking input.
class DiskProgressDialog final : public QDialog {
public:
    DiskProgressDialog(DiskProgress& progress, QWidget* window)
        : QDialog(window), progress_(progress), label_(new QLabel), bar_(new QProgressBar),
          buttons_(new QDialogButtonBox(QDialogButtonBox::Cancel)) {
        setObjectName(QStringLiteral("DiskProgress"));
        setWindowTitle(QStringLiteral("Quobrix"));
        setWindowModality(Qt::ApplicationModal);
        label_->setObjectName(QStringLiteral("DiskProgressText"));
        bar_->setObjectName(QStringLiteral("DiskProgressBar"));
        bar_->setMinimumWidth(fontMetrics().averageCharWidth() * 44);
        connect(buttons_, &QDialogButtonBox::rejected, this, &DiskProgressDialog::reject);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(label_);
        layout->addWidget(bar_);
        layout->addWidget(buttons_);
        layout->setSizeConstraint(QLayout::SetFixedSize);
        look();
    }

    void look() {
        const auto total = static_cast<double>(progress_.total.load());
        const QString what = QLatin1String(progress_.what.load());
        label_->setText(what + QStringLiteral("..."));
        bar_->setAccessibleName(what);
        bar_->setRange(0, total > 0 ? kSteps : 0); // 0: something moves
        if (total > 0)
            bar_->setValue(
                static_cast<int>(kSteps * std::min(1.0, static_cast<double>(progress_.done.load()) / total)));
        buttons_->button(QDialogButtonBox::Cancel)->setEnabled(total > 0 && !progress_.cancelled);
    }

    void reject() override {
        if (progress_.total > 0)
            progress_.cancelled = true;
        look();
    }

private:
    DiskProgress& progress_;
    QLabel* label_;
    QProgressBar* bar_;
    QDialogButtonBox* buttons_;
};

} // namespace

Result<void> runWhilePainting(const DiskWork& work, QWidget* window) {
    DiskProgress progress;
    std::packaged_task<Result<void>()> task([&] { return work(progress); });
    std::future<Result<void>> result = task.get_future();
    QEventLoop loop;
    std::jthread thread([&] {
        task();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    if (result.wait_for(kFelt) != std::future_status::ready) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        QTimer::singleShot(kLong, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        QApplication::restoreOverrideCursor();
    }
    if (result.wait_for(0ms) != std::future_status::ready) {
        QWidget* modal = QApplication::activeModalWidget();
        DiskProgressDialog dialog(progress, modal ? modal : window);
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &dialog, &DiskProgressDialog::look);
        timer.start(kInterval);
        dialog.show();
        while (result.wait_for(0ms) != std::future_status::ready)
            loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return result.get();
}

} // namespace quobrix
