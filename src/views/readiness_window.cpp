#include "views/readiness_window.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "model/readiness_report.h"
#include "report/ui/report_view.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/windows.h"
#include "views/report_buttons.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr const char* kReadinessSection = "Readiness";
constexpr qint64 kReadingSlice = 20; // ms

} // namespace

ReadinessWindow::ReadinessWindow(const ViewContext& context, std::vector<Monitor> monitors, QWidget* parent)
    : QDialog(parent), context_(context), monitors_(std::move(monitors)), vehicle_(new QComboBox),
      progress_(new QLabel), report_(new ReportView), next_(new QTimer(this)) {
    setObjectName(QLatin1String(kReadinessSection));
    setWindowFlags(Qt::Window);
    setWindowTitle(toQt(text(TextId::Readiness)));
    vehicle_->setObjectName(QStringLiteral("readinessVehicle"));
    vehicle_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    vehicle_->addItem(tr("All vehicles"));
    connect(vehicle_, &QComboBox::currentIndexChanged, this, [this] { showReport(); });
    progress_->setObjectName(QStringLiteral("readinessProgress"));
    next_->setSingleShot(true);
    connect(next_, &QTimer::timeout, this, &ReadinessWindow::readSome);
    auto* fields = new QHBoxLayout;
    fields->addWidget(fieldLabel(tr("&Vehicle:"), *vehicle_));
    fields->addWidget(vehicle_);
    fields->addStretch();
    fields->addWidget(progress_);

    auto* box = new QDialogButtonBox(QDialogButtonBox::Close);
    addReportButtons(*box, *this, "readiness", context_, [this] { return printable(); });
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(report_, 1);
    layout->addWidget(box);
    context_.document.edits().addListener(*this);
    context_.units.addListener(*this);
    read();
    if (!quobrix::restoreGeometry(*this, context_.settings, kReadinessSection))
        resize(QSize(fontMetrics().averageCharWidth() * 150, fontMetrics().lineSpacing() * 44)
                   .boundedTo(screen()->availableSize() * 9 / 10));
    report_->setFocus();
}

ReadinessWindow::~ReadinessWindow() {
    context_.units.removeListener(*this);
    context_.document.edits().removeListener(*this);
    rememberGeometry(*this, context_.settings, kReadinessSection);
}

std::optional<Report> ReadinessWindow::printable() { return reader_ ? std::nullopt : std::optional(report_->report()); }

/// From the first trip on. What is shown stays until all are read.
void ReadinessWindow::read() {
    reader_ = std::make_unique<ReadinessReader>(context_.document);
    next_->start(0);
}

void ReadinessWindow::readSome() {
    QElapsedTimer slice;
    slice.start();
    while (slice.elapsed() < kReadingSlice)
        if (!reader_->readNext()) {
            vehicles_ = std::exchange(reader_, nullptr)->vehicles();
            progress_->clear();
            const QVariant wanted = vehicle_->currentData();
            {
                const QSignalBlocker quiet(vehicle_);
                while (vehicle_->count() > 1)
                    vehicle_->removeItem(1);
                for (const VehicleReadiness& vehicle : vehicles_) {
                    const TVehicleNamesTable& names = context_.document.vehicles();
                    const RowIndex row = names.find(vehicle.vehicle);
                    vehicle_->addItem(toQt(row < names.rowCount() ? names.choiceName(row) : vehicle.vehicle),
                                      toQt(vehicle.vehicle));
                }
                vehicle_->setCurrentIndex(wanted.isValid() ? std::max(0, vehicle_->findData(wanted)) : 0);
            }
            return showReport();
        }
    progress_->setText(tr("The trips are being read: %1").arg(toQt(shareText(reader_->progress()))));
    next_->start(0);
}

std::vector<VehicleReadiness> ReadinessWindow::chosen() const {
    std::vector<VehicleReadiness> wanted = vehicles_;
    if (const QVariant vehicle = vehicle_->currentData(); vehicle.isValid())
        std::erase_if(wanted, [key = vehicle.toString().toStdString()](const VehicleReadiness& each) {
            return each.vehicle != key;
        });
    return wanted;
}

void ReadinessWindow::showReport() {
    report_->setReport(readinessReport(chosen(), monitors_, context_.document.vehicles(), context_.text()));
}

} // namespace quobrix
