#include "ui/splitter.h"

#include "settings/settings.h"

#include <algorithm>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "TSplitter";
constexpr std::string_view kShare = "aspectRatio";
constexpr double kFirstShare = 0.16;
constexpr int kUnits = 10'000; // of the whole width, which the base class brings to its own

} // namespace

Splitter::Splitter(QWidget* first, QWidget* second, const Settings& settings)
    : share_(std::clamp(settings.getReal(kSection, kShare, kFirstShare), 0.0, 1.0)) {
    setObjectName(QStringLiteral("TSplitter"));
    setChildrenCollapsible(false);
    addWidget(first);
    addWidget(second);
    connect(this, &QSplitter::splitterMoved, this, [this] {
        const QList<int> widths = sizes();
        share_ = static_cast<double>(widths[0]) / std::max(1, widths[0] + widths[1]);
    });
}

void Splitter::remember(Settings& settings) const { settings.setReal(kSection, kShare, share_); }

void Splitter::resizeEvent(QResizeEvent* event) {
    const auto first = static_cast<int>(share_ * kUnits);
    setSizes({first, kUnits - first});
    QSplitter::resizeEvent(event);
}

} // namespace quobrix
