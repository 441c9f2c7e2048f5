#include "views/months_chart.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_painter.h"
#include "drawing/ui/drawing_view.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>
#include <QVBoxLayout>

#include <utility>

namespace quobrix {
namespace {

/// Lies over the bar, which is painted below it.
class BarButton final : public QAbstractButton {
public:
    BarButton(const QString& name, QWidget* parent) : QAbstractButton(parent) {
        setObjectName(name);
        setCursor(Qt::PointingHandCursor);
        setFocusPolicy(Qt::ClickFocus);
    }

    void setTabStop(bool stop) { setFocusPolicy(stop ? Qt::StrongFocus : Qt::ClickFocus); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        if (hasFocus() || underMouse()) {
            painter.setPen(QPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid), hasFocus() ? 2 : 1));
            painter.drawRect(rect().adjusted(1, 1, -1, -1));
        }
    }
    void keyPressEvent(QKeyEvent* event) override {
        const int step = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
        if (step == 0)
            return QAbstractButton::keyPressEvent(event);
        const QList<QAbstractButton*> bars = parentWidget()->findChildren<QAbstractButton*>();
        for (qsizetype i = bars.indexOf(this) + step; i >= 0 && i < bars.size(); i += step)
            if (!bars[i]->isHidden())
                return bars[i]->setFocus(Qt::OtherFocusReason);
    }
    /// Tab comes back to the one that was left.
    void focusInEvent(QFocusEvent* event) override {
        QAbstractButton::focusInEvent(event);
        for (QAbstractButton* bar : parentWidget()->findChildren<QAbstractButton*>())
            static_cast<BarButton*>(bar)->setTabStop(bar == this);
        update();
    }
    void enterEvent(QEnterEvent* event) override {
        QAbstractButton::enterEvent(event);
        update();
    }
    void leaveEvent(QEvent* event) override {
        QAbstractButton::leaveEvent(event);
        update();
    }
};

} // namespace

MonthsChart::MonthsChart(const QString& name, Make make, std::function<void(std::size_t)> chosen)
    : make_(std::move(make)),
      picture_(new DrawingView([this](Size room, const TextMeasure& measure) { return make_(room, measure).drawing; })),
      chosen_(std::move(chosen)) {
    setObjectName(name);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(picture_);
    placeBars();
}

void MonthsChart::redraw() {
    picture_->redraw();
    placeBars();
}

void MonthsChart::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeBars();
}

void MonthsChart::placeBars() {
    const MonthsPicture picture =
        make_({static_cast<double>(width()), kUnlimited}, FontTextMeasure(picture_->font(), *picture_));
    while (bars_.size() < picture.months.size()) {
        const std::size_t month = bars_.size();
        bars_.push_back(new BarButton(objectName() + QStringLiteral("Bar%1").arg(month + 1), this));
        connect(bars_.back(), &QAbstractButton::clicked, this, [this, month] { chosen_(month); });
    }
    bool stop = false;
    for (std::size_t i = bars_.size(); i-- > 0;) { // Tab comes to the newest
        auto& bar = static_cast<BarButton&>(*bars_[i]);
        const bool there = i < picture.months.size() && !picture.months[i].text.empty();
        bar.setVisible(there);
        if (!there)
            continue;
        const MonthPlace& month = picture.months[i];
        bar.setGeometry(QRectF(month.box.left, month.box.top, month.box.width, month.box.height).toAlignedRect());
        const QString value = tr("%1: %2").arg(toQt(month.name), toQt(month.text));
        bar.setAccessibleName(toQt(picture.drawing.title) + QStringLiteral(", ") + value);
        bar.setToolTip(value);
        if (!bar.hasFocus())
            bar.setTabStop(!stop);
        stop = true;
    }
}

} // namespace quobrix
