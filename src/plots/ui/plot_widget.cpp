#include "plots/ui/plot_widget.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_painter.h"
#include "drawing/ui/pixels.h"
#include "messages/message.h"
#include "plots/panel_choices.h"
#include "plots/plot_figures.h"
#include "plots/time_window.h"
#include "texts/text.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QStatusTipEvent>
#include <QToolTip>
#include <QTransform>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {
namespace {

constexpr double kZoomStep = 1.25;          // of a notch of the wheel
constexpr double kKeyZoomStep = 2;          // of a key
constexpr double kNotch = 120;              // of a wheel, in eighths of a degree
constexpr double kNotchPixels = 60;         // that a notch moves, and that of a touchpad zoom as much
constexpr double kPagePart = 0.1;           // of what is seen, that the cursor moves by
constexpr double kPagedPart = 0.9;          // of what is zoomed
constexpr int kLineRoom = 2, kMarkRoom = 2; // pixels around what is painted
constexpr int kBandAlpha = 48;
constexpr int kTitleRoom = 3;   // beside the title of the panel that is chosen
constexpr int kPlaceHeight = 3; // of the line that shows where a panel comes to stand

/// As much of a widget as DRAWING takes.
QRegion regionOf(const Drawing& drawing) {
    QRegion region;
    const auto add = [&](double left, double top, double right, double bottom, double room) {
        region += QRectF(QPointF(left, top), QPointF(right, bottom))
                      .normalized()
                      .adjusted(-room, -room, room, room)
                      .toAlignedRect();
    };
    for (const DrawingCommand& command : drawing.commands)
        if (const auto* segments = std::get_if<Segments>(&command)) {
            for (std::size_t i = 0; i + 1 < segments->points.size(); i += 2)
                add(segments->points[i].x, segments->points[i].y, segments->points[i + 1].x, segments->points[i + 1].y,
                    segments->stroke.width / 2 + kLineRoom);
        } else if (const auto* marks = std::get_if<Marks>(&command)) {
            for (const Point place : marks->places)
                add(place.x, place.y, place.x, place.y, marks->size / 2 + kMarkRoom);
        }
    return region;
}

QString nothingThere() { return QStringLiteral("–"); }

/// A row for each quantity and a column for each record: below each other they would cover the plot.
QString comparedRows(const PlotData& data, const PlotReading& reading) {
    const auto unbroken = [](const QString& text) {
        return text.toHtmlEscaped().replace(QLatin1Char(' '), QLatin1String("&nbsp;"));
    };
    const auto cell = [&](const QString& text) {
        return QStringLiteral("<td align=\"right\">&nbsp;&nbsp;%1</td>").arg(unbroken(text));
    };
    QString rows = QStringLiteral("<tr><td></td>");
    for (const ShownText& record : data.records)
        rows += cell(toQt(record));
    rows += QStringLiteral("</tr>");
    std::vector<std::size_t> panels; // the values of each follow one another
    for (const PlotReading::Value& value : reading.values)
        if (panels.empty() || panels.back() != value.panel)
            panels.push_back(value.panel);
    for (const std::size_t panel : panels) {
        rows += QStringLiteral("<tr><td>%1</td>").arg(unbroken(toQt(data.panels[panel].title)));
        for (std::size_t record = 0; record < data.records.size(); ++record) {
            const auto value = std::ranges::find_if(reading.values, [&](const PlotReading::Value& one) {
                return one.panel == panel && one.record == record;
            });
            rows += cell(value == reading.values.end() || value->text.empty() ? nothingThere() : toQt(value->text));
        }
        rows += QStringLiteral("</tr>");
    }
    return rows;
}

/// What is said of a place: a line for what it is, a row for each quantity.
QString tipOf(const PlotData& data, const PlotReading& reading) {
    QString tip = toQt(reading.place);
    if (!reading.clock.empty())
        tip = toQt(text(TextId::WithAside, reading.place, reading.clock));
    tip = QStringLiteral("<b>%1</b>").arg(tip.toHtmlEscaped());
    if (reading.event)
        tip += QStringLiteral("<br>") + toQt(plotEventName(data.events[*reading.event].kind)).toHtmlEscaped();
    tip += QStringLiteral("<table>");
    const auto row = [&](const QString& name, const QString& value) {
        tip += QStringLiteral("<tr><td>%1&nbsp;&nbsp;</td><td align=\"right\">%2</td></tr>")
                   .arg(name.toHtmlEscaped(), value.toHtmlEscaped());
    };
    if (data.compares())
        return tip + comparedRows(data, reading) + QStringLiteral("</table>");
    for (const PlotReading::Value& value : reading.values)
        row(toQt(value.title), value.text.empty() ? nothingThere() : toQt(value.text));
    if (reading.band)
        row(PlotWidget::tr("Speed band"), toQt(reading.bandLabel));
    return tip + QStringLiteral("</table>");
}

/// PARTS with a pause between them, some of which are sentences.
QString spokenOneByOne(const QStringList& parts) {
    QString said;
    for (const QString& part : parts)
        said += (said.isEmpty() ? "" : said.endsWith(QLatin1Char('.')) ? " " : ". ") + part;
    return said;
}

/// A chart whose value is where the cursor stands. Screen readers speak the name of what has the keyboard when it
/// changes, or else its value, depending on the system.
class PlotAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit PlotAccessible(PlotWidget& plot) : QAccessibleWidget(&plot, QAccessible::Chart), plot_(plot) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text what) const override {
        const QString spoken = plot_.spokenText();
        switch (what) {
        case QAccessible::Name:
            return spoken.isEmpty() ? plot_.accessibleName() : spokenOneByOne({spoken, plot_.accessibleName()});
        case QAccessible::Description:
            return plot_.describe();
        case QAccessible::Value:
            return spoken;
        default:
            return QAccessibleWidget::text(what);
        }
    }

    QVariant currentValue() const override { return plot_.pointers().cursor.value_or(plot_.data().whole.from); }
    void setCurrentValue(const QVariant& value) override {
        bool number = false;
        if (const double place = value.toDouble(&number); number && std::isfinite(place))
            plot_.moveCursor(place);
    }
    QVariant maximumValue() const override { return plot_.data().whole.to; }
    QVariant minimumValue() const override { return plot_.data().whole.from; }
    QVariant minimumStepSize() const override { return plot_.data().finest; }

private:
    PlotWidget& plot_;
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* plot = qobject_cast<PlotWidget*>(object);
    return plot ? new PlotAccessible(*plot) : nullptr;
}

} // namespace

PlotWidget::PlotWidget(const TextContext& text, QWidget* parent) : QWidget(parent), text_(text) {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    Q_UNUSED(installed)
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    data_.records.emplace_back();
    layOut();
}

// What is shown

void PlotWidget::setPlot(PlotData data, bool same) {
    endDrag();
    data_ = std::move(data);
    if (!same) {
        if (std::exchange(toldMaximum_, false))
            say({});
        view_.range.reset();
        pointers_ = {};
        fixed_.reset();
        anchor_.reset();
    }
    const auto there = [&](double place) { return std::clamp(place, data_.whole.from, data_.whole.to); };
    for (std::optional<double>* place : {&fixed_, &anchor_, &pointers_.cursor})
        if (*place)
            *place = there(**place);
    if (pointers_.range)
        pointers_.range = PlotRange{there(pointers_.range->from), there(pointers_.range->to)};
    if (pointers_.band && *pointers_.band >= data_.bands.size())
        pointers_.band.reset();
    setAccessibleName(toQt(plotTitle(data_, text_)));
    layOut();
    emit viewChanged();
    emit pointersChanged();
}

void PlotWidget::setOptions(const PlotOptions& options) {
    if (options == view_.options)
        return;
    view_.options = options;
    layOut();
}

void PlotWidget::setPanels(std::vector<PanelChoice> panels) {
    if (panels == view_.panels)
        return;
    view_.panels = std::move(panels);
    layOut();
    emit viewChanged();
}

std::optional<std::size_t> PlotWidget::chosenPanel() const {
    if (layout_.panels.empty())
        return {};
    const auto chosen = std::ranges::find_if(
        layout_.panels, [this](const PanelLayout& panel) { return data_.panels[panel.panel].key == chosen_; });
    return chosen == layout_.panels.end() ? layout_.panels.front().panel : chosen->panel;
}

/// Where that panel is; nothing where none is shown.
const PanelLayout* PlotWidget::chosenLayout() const {
    const std::optional<std::size_t> panel = chosenPanel();
    return panel ? &*std::ranges::find(layout_.panels, *panel, &PanelLayout::panel) : nullptr;
}

void PlotWidget::choosePanel(std::size_t panel) {
    chosen_ = data_.panels[panel].key;
    update();
    emit panelChosen();
}

void PlotWidget::tellPanel() {
    tellsPanel_ = true;
    speak();
}

/// Lays the plot out for the size that the widget has; it is painted when it is seen.
void PlotWidget::layOut() {
    const FontTextMeasure measure(font(), *this);
    const double pixel = 1 / devicePixelRatioF();
    const auto laidOut = [&](Size room) { return layOutPlot(data_, view_, text_, room, measure, pixel); };
    const Size least = laidOut({0, 0}).size;
    if (const QSize size(static_cast<int>(std::ceil(least.width)), static_cast<int>(std::ceil(least.height)));
        size != least_) {
        least_ = size;
        updateGeometry();
    }
    const Size room{static_cast<double>(width()), static_cast<double>(height())};
    layout_ = laidOut(room);
    if (view_.range) { // a wider plot, or one that was sampled less often, shows more at least
        const PlotRange range = zoomedTo(data_, *view_.range, layout_.width()).range;
        if (range != *view_.range) {
            view_.range = range == data_.whole ? std::nullopt : std::optional(range);
            layout_ = laidOut(room);
        }
    }
    outdated_ = true;
    pointed_ = regionOf(drawPlotPointers(data_, layout_, pointers_));
    update();
}

QSize PlotWidget::sizeHint() const { return least_.expandedTo({640, 320}); }

void PlotWidget::resizeEvent(QResizeEvent*) { layOut(); }

void PlotWidget::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::StyleChange)
        layOut();
}

void PlotWidget::paintPlot(QPainter& painter, const QRegion& region) {
    if (outdated_) {
        const Drawing plot = drawPlot(data_, view_, layout_);
        const Palette colours = screenPalette(palette());
        // What is painted anew as a whole need not be copied: the picture is for a cursor that moves.
        const QTransform device = painter.deviceTransform();
        if (region == QRegion(rect()) && Pixels::of(painter) && device.dx() == std::floor(device.dx()) &&
            device.dy() == std::floor(device.dy()))
            return paintDrawing(painter, plot, colours, font());
        outdated_ = false;
        const double scale = devicePixelRatioF();
        if (const QSize pixels = size() * scale; picture_.size() != pixels)
            picture_ = QImage(pixels, QImage::Format_RGB32);
        picture_.setDevicePixelRatio(scale);
        QPainter onPicture(&picture_);
        paintDrawing(onPicture, plot, colours, font());
    }
    painter.drawImage(QPoint(), picture_);
}

void PlotWidget::paintEvent(QPaintEvent* event) {
    if (layout_.pixel != 1 / devicePixelRatioF()) // it is on another screen
        layOut();
    QPainter painter(this); // which paints no more than what has to be painted anew
    paintPlot(painter, event->region());
    paintDrawing(painter, drawPlotPointers(data_, layout_, pointers_), screenPalette(palette()), font());
    if (const QRect band = rubberBand(); !band.isEmpty()) {
        QColor colour = palette().color(QPalette::Highlight);
        painter.setPen(colour);
        colour.setAlpha(kBandAlpha);
        painter.setBrush(colour);
        painter.drawRect(band.adjusted(0, 0, -1, -1));
    }
    painter.fillRect(placeOfDragged(), palette().color(QPalette::Highlight));
    if (hasFocus()) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
        if (const PanelLayout* chosen = chosenLayout(); chosen && layout_.panels.size() > 1)
            painter.drawRect(QRectF(chosen->grip.left - kTitleRoom, chosen->grip.top,
                                    chosen->grip.width + 2 * kTitleRoom, chosen->grip.height));
    }
}

// What of it is seen

void PlotWidget::show(PlotRange range) {
    const bool whole = range.from <= data_.whole.from && range.to >= data_.whole.to;
    const std::optional<PlotRange> wanted = whole ? std::nullopt : std::optional(range);
    if (wanted == view_.range)
        return;
    view_.range = wanted;
    layOut();
    if (std::exchange(toldMaximum_, false))
        say({});
    emit viewChanged();
}

void PlotWidget::zoomTo(PlotRange range) {
    if (layout_.panels.empty())
        return;
    const ZoomResult zoomed = zoomedTo(data_, range, layout_.width());
    show(zoomed.range);
    if (zoomed.maximumReached)
        tellMaximum();
}

void PlotWidget::zoomBy(double factor, double at) {
    const ZoomResult zoomed = zoomedAt(data_, seen(), at, factor, layout_.width());
    show(zoomed.range);
    if (zoomed.maximumReached)
        tellMaximum();
}

void PlotWidget::unzoom() { show(data_.whole); }

/// By whole pixels of the device, so that the curve is the same one elsewhere.
void PlotWidget::pan(double units) {
    if (!zoomed() || layout_.panels.empty())
        return;
    const double pixels = std::round(units / layout_.pixel) * layout_.pixel;
    show(panned(data_, seen(), pixels * seen().length() / layout_.width()));
}

void PlotWidget::centreOn(double place) {
    place = std::clamp(place, data_.whole.from, data_.whole.to);
    show(centred(data_, seen(), place));
    goTo(place, false);
}

// What is pointed at and marked

void PlotWidget::point(PlotPointers pointers) {
    if (pointers == pointers_)
        return;
    pointers_ = std::move(pointers);
    tellsPanel_ = false;
    QRegion now = regionOf(drawPlotPointers(data_, layout_, pointers_));
    update(now + pointed_);
    pointed_ = std::move(now);
    emit pointersChanged();
}

void PlotWidget::moveCursor(double place) {
    if (data_.panels.empty())
        return;
    goTo(nearestSample(data_, std::clamp(place, data_.whole.from, data_.whole.to)), false);
}

/// Moves the cursor to PLACE, into view; the range from where it was is marked as well if it MARKS.
void PlotWidget::goTo(double place, bool marks) {
    PlotPointers pointers = pointers_;
    if (marks) {
        if (!anchor_)
            anchor_ = nearestSample(data_, fixed_.value_or(place));
        pointers.range = PlotRange{std::min(*anchor_, place), std::max(*anchor_, place)};
    } else {
        anchor_.reset();
    }
    fixed_ = place;
    pointers.cursor = place;
    if (place < seen().from || place > seen().to)
        show(centred(data_, seen(), place));
    point(pointers);
    speak();
}

void PlotWidget::markRange(std::optional<PlotRange> range) {
    PlotPointers pointers = pointers_;
    pointers.range = range;
    anchor_.reset();
    point(pointers);
}

void PlotWidget::markBand(std::optional<std::size_t> band) {
    PlotPointers pointers = pointers_;
    pointers.band = band && *band < data_.bands.size() ? band : std::nullopt;
    point(pointers);
}

// The mouse

bool PlotWidget::over(QPointF point) const {
    return layout_.placeAt(point.x()) && point.y() >= layout_.panels.front().scale.top &&
           point.y() <= layout_.panels.back().scale.bottom;
}

/// That between two panels which show something: what shows nothing stays as low as can be.
std::optional<std::size_t> PlotWidget::borderAt(QPointF point) const {
    const auto border = layout_.borderAt({point.x(), point.y()});
    const auto shows = [&](std::size_t panel) {
        return panel < layout_.panels.size() && !layout_.panels[panel].ticks.empty();
    };
    return border && shows(*border) && shows(*border + 1) ? border : std::nullopt;
}

double PlotWidget::placeNear(double x) const {
    return std::clamp(layout_.axis.placeAt(std::clamp(x, layout_.axis.left, layout_.axis.right)), data_.whole.from,
                      data_.whole.to);
}

/// Between where the button was pressed and the pointer; empty unless that is to be zoomed.
QRect PlotWidget::rubberBand() const {
    if (drag_ != Drag::Zoom || layout_.panels.empty() ||
        std::abs(last_.x() - pressed_.x()) < QApplication::startDragDistance())
        return {};
    const auto x = [&](double at) { return std::clamp(at, layout_.axis.left, layout_.axis.right); };
    return QRectF(QPointF(x(pressed_.x()), layout_.panels.front().scale.top),
                  QPointF(x(last_.x()), layout_.panels.back().scale.bottom))
        .normalized()
        .toAlignedRect();
}

/// The line between panels where the one that is dragged comes to stand; empty while it stays where it is.
QRect PlotWidget::placeOfDragged() const {
    if (drag_ != Drag::Panel || panel_ >= layout_.panels.size())
        return {};
    const std::size_t place = layout_.placeOfPanel(last_.y());
    if (place == panel_ || place == panel_ + 1)
        return {};
    const double y =
        place < layout_.panels.size() ? layout_.panels[place].grip.top : layout_.panels.back().scale.bottom;
    return {0, static_cast<int>(y) - kPlaceHeight / 2, width(), kPlaceHeight};
}

/// Moves the panel in the place PANEL above that in PLACE, or below all others.
void PlotWidget::placePanel(std::size_t panel, std::size_t place) {
    if (panel >= layout_.panels.size() || place == panel || place == panel + 1)
        return;
    const auto before = place < layout_.panels.size() ? std::optional(layout_.panels[place].panel) : std::nullopt;
    setPanels(withPlaced(data_, view_.panels, layout_.panels[panel].panel, before));
    emit panelsChanged(view_.panels);
}

void PlotWidget::setCursorAt(QPointF point) {
    setCursor(borderAt(point) ? Qt::SplitVCursor
              : gripAt(point) ? Qt::OpenHandCursor
              : over(point)   ? Qt::CrossCursor
                              : Qt::ArrowCursor);
}

void PlotWidget::mousePressEvent(QMouseEvent* event) {
    if (drag_ != Drag::None)
        return endDrag();
    const QPointF point = event->position();
    if (layout_.panels.empty())
        return event->ignore();
    const auto title = gripAt(point);
    if (const auto border = borderAt(point); border && event->button() == Qt::LeftButton) {
        drag_ = Drag::Border;
        border_ = *border;
    } else if (title && event->button() == Qt::LeftButton) {
        drag_ = Drag::Panel;
        panel_ = *title;
        setCursor(Qt::ClosedHandCursor);
    } else if (!layout_.placeAt(point.x())) {
        return event->ignore();
    } else if (event->button() == Qt::MiddleButton) {
        drag_ = Drag::Pan;
        setCursor(Qt::ClosedHandCursor);
    } else if (event->button() == Qt::LeftButton) {
        drag_ = event->modifiers().testFlag(Qt::ShiftModifier) ? Drag::Range : Drag::Zoom;
    } else {
        return event->ignore();
    }
    pressed_ = last_ = point;
    if (const auto panel = title ? title : layout_.panelAt({point.x(), point.y()}))
        choosePanel(layout_.panels[*panel].panel);
}

void PlotWidget::mouseMoveEvent(QMouseEvent* event) {
    const QPointF point = event->position();
    if (drag_ != Drag::None)
        follow(point);
    else
        setCursorAt(point);
    last_ = point;
    hover(point, event->modifiers());
}

/// What is dragged comes along to POINT.
void PlotWidget::follow(QPointF point) {
    switch (drag_) {
    case Drag::Zoom: {
        const QRect before = rubberBand();
        last_ = point;
        update(before | rubberBand());
        break;
    }
    case Drag::Range: {
        const double from = nearestSample(data_, placeNear(pressed_.x()));
        const double to = nearestSample(data_, placeNear(point.x()));
        markRange(PlotRange{std::min(from, to), std::max(from, to)});
        break;
    }
    case Drag::Pan:
        pan(last_.x() - point.x());
        break;
    case Drag::Border:
        if (border_ + 1 < layout_.panels.size())
            setPanels(withBorder(data_, view_.panels, layout_, border_, point.y() - last_.y()));
        break;
    case Drag::Panel: {
        const QRect before = placeOfDragged();
        last_ = point;
        update(before);
        update(placeOfDragged());
        break;
    }
    case Drag::None:
        break;
    }
}

void PlotWidget::mouseReleaseEvent(QMouseEvent* event) {
    const Drag drag = drag_;
    const QPointF point = event->position();
    const QRect band = rubberBand();
    endDrag();
    if (drag == Drag::Zoom && !band.isEmpty())
        zoomTo({std::min(placeNear(pressed_.x()), placeNear(point.x())),
                std::max(placeNear(pressed_.x()), placeNear(point.x()))});
    else if (drag == Drag::Zoom) { // a click
        const auto touched = layout_.eventAt(data_, view_.options, {point.x(), point.y()});
        goTo(touched ? data_.events[*touched].at : nearestSample(data_, placeNear(point.x())), false);
    } else if (drag == Drag::Border)
        emit panelsChanged(view_.panels);
    else if (drag == Drag::Panel)
        placePanel(panel_, layout_.placeOfPanel(point.y()));
    else if (drag == Drag::Range && pointers_.range && !(pointers_.range->length() > 0))
        markRange({});
}

void PlotWidget::endDrag() {
    const QRegion shown = QRegion(rubberBand()) + placeOfDragged();
    if (const Drag drag = std::exchange(drag_, Drag::None); drag == Drag::Pan || drag == Drag::Panel)
        setCursorAt(last_);
    update(shown);
}

void PlotWidget::hover(QPointF point, Qt::KeyboardModifiers modifiers) {
    PlotPointers pointers = pointers_;
    pointers.cursor = over(point) ? std::optional(placeNear(point.x())) : fixed_;
    this->point(pointers);
    showTip(point, modifiers);
}

/// What is told of POINT: how a panel is moved on its title, else what was there.
QString PlotWidget::tipAt(QPointF point, Qt::KeyboardModifiers modifiers) const {
    if (drag_ == Drag::None && gripAt(point))
        return tr("Drag the title to move this quantity, or the line below it to make it higher. The menu of the right "
                  "mouse button hides it.");
    const bool wanted = !view_.options.coordinatesOnCtrl || modifiers.testFlag(Qt::ControlModifier);
    if (!wanted || !over(point) || (drag_ != Drag::None && drag_ != Drag::Range))
        return {};
    const auto touched = layout_.eventAt(data_, view_.options, {point.x(), point.y()});
    const double place = touched ? data_.events[*touched].at : placeNear(point.x());
    return tipOf(data_, readPlot(data_, place, text_, view_.panels));
}

/// Hides it where there is nothing to tell.
void PlotWidget::showTip(QPointF point, Qt::KeyboardModifiers modifiers) {
    QToolTip::showText(mapToGlobal(point.toPoint()), tipAt(point, modifiers), this, rect());
}

void PlotWidget::leaveEvent(QEvent*) {
    PlotPointers pointers = pointers_;
    pointers.cursor = fixed_;
    point(pointers);
    QToolTip::hideText();
}

void PlotWidget::wheelEvent(QWheelEvent* event) {
    if (!over(event->position()) || drag_ != Drag::None)
        return event->ignore(); // what the plot stands on may scroll
    event->accept();
    const QPoint pixels = event->pixelDelta(), angle = event->angleDelta();
    const bool smooth = !pixels.isNull() && event->phase() != Qt::NoScrollPhase;
    double across = smooth ? pixels.x() : angle.x() / kNotch * kNotchPixels;
    double along = smooth ? pixels.y() : angle.y() / kNotch * kNotchPixels;
    if (event->modifiers().testFlag(Qt::ShiftModifier))
        across += std::exchange(along, 0);
    if (std::abs(across) > std::abs(along))
        pan(-across);
    else if (along != 0)
        zoomBy(std::pow(kZoomStep, along / kNotchPixels), placeNear(event->position().x()));
    hover(event->position(), event->modifiers());
}

bool PlotWidget::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto& gesture = *static_cast<QNativeGestureEvent*>(event);
        if (gesture.gestureType() == Qt::ZoomNativeGesture && over(gesture.position())) {
            zoomBy(std::clamp(1 + gesture.value(), 1 / kKeyZoomStep, kKeyZoomStep), placeNear(gesture.position().x()));
            return true;
        }
    } else if (event->type() == QEvent::ShortcutOverride) {
        // Escape is the parent's once there is nothing to give up.
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
            (drag_ != Drag::None || pointers_.range || pointers_.band || zoomed())) {
            event->accept();
            return true;
        }
    } else if (event->type() == QEvent::ToolTip) {
        return true; // it follows the pointer
    }
    return QWidget::event(event);
}

void PlotWidget::contextMenuEvent(QContextMenuEvent* event) {
    endDrag();
    QPoint place = event->globalPos();
    QPointF at = event->pos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        at = QPointF(pointers_.cursor ? layout_.axis.x(*pointers_.cursor) : width() / 2.0,
                     layout_.panels.empty() ? height() / 2.0 : chosenLayout()->area.top);
        place = mapToGlobal(at.toPoint());
    }
    std::optional<std::size_t> panel = layout_.panelAt({at.x(), at.y()});
    if (!panel)
        panel = titleAt(at);
    emit menuRequested(place, panel ? std::optional(layout_.panels[*panel].panel) : std::nullopt);
}

// The keyboard

void PlotWidget::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control && underMouse())
        showTip(mapFromGlobal(QCursor::pos()), event->modifiers() | Qt::ControlModifier);
    if (event->key() == Qt::Key_Escape ? giveUp() : choosePanelByKey(*event) || moveByKey(*event) || zoomByKey(*event))
        return;
    QWidget::keyPressEvent(event);
}

void PlotWidget::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control && view_.options.coordinatesOnCtrl)
        QToolTip::hideText();
    QWidget::keyReleaseEvent(event);
}

void PlotWidget::focusOutEvent(QFocusEvent* event) {
    endDrag();
    QWidget::focusOutEvent(event);
}

bool PlotWidget::choosePanelByKey(const QKeyEvent& event) {
    const int step = event.key() == Qt::Key_Up ? -1 : event.key() == Qt::Key_Down ? 1 : 0;
    const PanelLayout* chosen = chosenLayout();
    if (step == 0 || !chosen || event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier))
        return false;
    const auto place =
        std::clamp<std::ptrdiff_t>(chosen - layout_.panels.data() + step, 0, std::ssize(layout_.panels) - 1);
    choosePanel(layout_.panels[static_cast<std::size_t>(place)].panel);
    tellPanel();
    return true;
}

bool PlotWidget::moveByKey(const QKeyEvent& event) {
    if (layout_.panels.empty() || event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const double here = fixed_.value_or(pointers_.cursor.value_or((seen().from + seen().to) / 2));
    double to = here;
    const auto step = [&](int direction) {
        const double sample = sampleBeside(data_, here, direction);
        const double pixel = seen().length() / layout_.width();
        return std::abs(sample - here) >= pixel ? sample : nearestSample(data_, here + direction * pixel);
    };
    const auto page = [&](int direction) {
        const double by = direction * seen().length() * (zoomed() ? kPagedPart : kPagePart);
        if (zoomed())
            show(panned(data_, seen(), by));
        return nearestSample(data_, std::clamp(here + by, data_.whole.from, data_.whole.to));
    };
    switch (event.key()) {
    case Qt::Key_Left:
        to = step(-1);
        break;
    case Qt::Key_Right:
        to = step(1);
        break;
    case Qt::Key_PageUp:
        to = page(-1);
        break;
    case Qt::Key_PageDown:
        to = page(1);
        break;
    case Qt::Key_Home:
        to = nearestSample(data_, data_.whole.from);
        break;
    case Qt::Key_End:
        to = nearestSample(data_, data_.whole.to);
        break;
    default:
        return false;
    }
    if (!fixed_)
        fixed_ = here;
    goTo(to, event.modifiers().testFlag(Qt::ShiftModifier));
    return true;
}

bool PlotWidget::zoomByKey(const QKeyEvent& event) {
    if (layout_.panels.empty() || event.modifiers() & (Qt::AltModifier | Qt::MetaModifier))
        return false;
    const double middle = (seen().from + seen().to) / 2;
    const double at = pointers_.cursor && *pointers_.cursor >= seen().from && *pointers_.cursor <= seen().to
                          ? *pointers_.cursor
                          : middle;
    switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key without Shift, on many keyboards
        zoomBy(kKeyZoomStep, at);
        return true;
    case Qt::Key_Minus:
        zoomBy(1 / kKeyZoomStep, at);
        return true;
    case Qt::Key_0:
        unzoom();
        return true;
    default:
        return false;
    }
}

/// What a person did last goes first; false if there is nothing.
bool PlotWidget::giveUp() {
    if (drag_ != Drag::None) {
        endDrag();
    } else if (pointers_.range || pointers_.band) {
        PlotPointers pointers = pointers_;
        pointers.range.reset();
        pointers.band.reset();
        anchor_.reset();
        point(pointers);
    } else if (zoomed()) {
        unzoom();
    } else {
        return false;
    }
    return true;
}

// What is told

/// Until another part of the axis is seen.
void PlotWidget::tellMaximum() {
    toldMaximum_ = true;
    say(toQt(makeMessage(MessageId::MaximumZoom).text));
}

void PlotWidget::say(const QString& text) {
    QStatusTipEvent tip(text);
    QApplication::sendEvent(this, &tip);
}

QString PlotWidget::spokenRange() const {
    return pointers_.range && !data_.panels.empty()
               ? toQt(rangeText(data_, figuresOf(data_, *pointers_.range, text_), true, text_))
               : QString();
}

/// "Engine Speed (2 of 5)", and what it does.
QString PlotWidget::spokenPanel() const {
    const PanelLayout* chosen = chosenLayout();
    if (!chosen)
        return {};
    const PlotPanel& panel = data_.panels[chosen->panel];
    QStringList said{toQt(text(TextId::PlotPanelPlace, panel.title,
                               static_cast<std::size_t>(chosen - layout_.panels.data()) + 1, layout_.panels.size()))};
    for (const ShownText& sentence : sentencesOf(data_, panel, pointers_.range.value_or(seen()), text_))
        said << toQt(sentence);
    return spokenOneByOne(said);
}

QString PlotWidget::spokenText() const {
    if (tellsPanel_)
        return spokenPanel();
    QStringList spoken;
    if (pointers_.cursor && !data_.panels.empty())
        spoken << toQt(spokenReading(data_, readPlot(data_, *pointers_.cursor, text_, view_.panels)));
    if (const QString range = spokenRange(); !range.isEmpty())
        spoken << range;
    return spokenOneByOne(spoken);
}

QString PlotWidget::describe() const {
    QStringList all;
    if (const QString range = spokenRange(); !range.isEmpty()) {
        all << range + QLatin1Char('.');
        for (const PanelLayout& panel : layout_.panels)
            for (const ShownText& sentence : sentencesOf(data_, data_.panels[panel.panel], *pointers_.range, text_))
                all << toQt(sentence);
    }
    all << toQt(plotDescription(data_, layout_, text_));
    return all.join(QLatin1Char(' '));
}

/// Only where a key has moved the cursor: the mouse would never stop talking.
void PlotWidget::speak() {
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent name(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&name);
    QAccessibleValueChangeEvent value(this, spokenText());
    QAccessible::updateAccessibility(&value);
}

} // namespace quobrix
