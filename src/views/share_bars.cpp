#include "views/share_bars.h"

#include "base/ui/qt_text.h"

#include <QAccessibleWidget>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

constexpr int kGap = 12;
constexpr int kLeastBarWidth = 80;
constexpr double kLeastFilled = 3; // or a short time would look like none

/// A part above nothing is never shown as nothing.
QString percent(double share) {
    const int whole = static_cast<int>(std::lround(share * 100));
    return whole == 0 && share > 0 ? QStringLiteral("<1%") : QStringLiteral("%1%").arg(whole);
}

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* bars = qobject_cast<ShareBars*>(object);
    return bars ? new QAccessibleWidget(bars, QAccessible::Chart) : nullptr;
}

int widest(const QFontMetrics& metrics, const std::vector<Report::Bar>& bars, const std::string Report::Bar::*text) {
    int width = 0;
    for (const Report::Bar& bar : bars)
        width = std::max(width, metrics.horizontalAdvance(toQt(bar.*text)));
    return width;
}

} // namespace

ShareBars::ShareBars(const QString& name, std::vector<Report::Bar> bars, QWidget* parent)
    : QWidget(parent), bars_(std::move(bars)) {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    Q_UNUSED(installed)
    QStringList parts;
    for (const Report::Bar& bar : bars_)
        parts += QStringLiteral("%1: %2 (%3)").arg(toQt(bar.label), toQt(bar.text), percent(bar.share));
    setAccessibleName(name);
    setAccessibleDescription(parts.join(QStringLiteral(", ")));
    setObjectName(QStringLiteral("ShareBars"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

int ShareBars::rowHeight() const { return fontMetrics().height() + 10; }

QSize ShareBars::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    const int texts = widest(metrics, bars_, &Report::Bar::label) + widest(metrics, bars_, &Report::Bar::text) +
                      metrics.horizontalAdvance(QStringLiteral("100%"));
    return {texts + 3 * kGap + kLeastBarWidth, rowHeight() * static_cast<int>(bars_.size())};
}

void ShareBars::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QFontMetrics metrics = fontMetrics();
    const int labels = widest(metrics, bars_, &Report::Bar::label);
    const int texts = widest(metrics, bars_, &Report::Bar::text);
    const int percents = metrics.horizontalAdvance(QStringLiteral("100%"));
    const double room = width() - labels - texts - percents - 3 * kGap;
    for (std::size_t i = 0; i < bars_.size(); ++i) {
        const Report::Bar& bar = bars_[i];
        const QRect row(0, static_cast<int>(i) * rowHeight(), width(), rowHeight());
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, toQt(bar.label));
        painter.drawText(row.adjusted(0, 0, -percents - kGap, 0), Qt::AlignRight | Qt::AlignVCenter, toQt(bar.text));
        painter.drawText(row, Qt::AlignRight | Qt::AlignVCenter, percent(bar.share));

        const double height = metrics.height() * 0.8;
        QRectF track(labels + kGap, row.center().y() + 0.5 - height / 2, room, height);
        painter.setPen(Qt::NoPen);
        QColor ground = palette().color(QPalette::WindowText);
        ground.setAlphaF(0.08F);
        painter.setBrush(ground);
        painter.drawRoundedRect(track, 3, 3);
        if (bar.share > 0) {
            track.setWidth(std::max(kLeastFilled, room * bar.share));
            painter.setBrush(palette().color(QPalette::Highlight));
            painter.drawRoundedRect(track, 3, 3);
        }
    }
}

} // namespace quobrix
