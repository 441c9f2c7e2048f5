/// A plot of eight hours, 28,800 samples of each of five quantities, in a window of 1600 by 900: drawn at another zoom
/// each time, and the cursor moved over it, beside QCustomPlot with the same samples, pens, labels and layers.
#include "ratios.h"

#include "plots/ui/plot_widget.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QApplication>
#include <QWindow>

#include <fmt/format.h>
#include <qcustomplot.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace quobrix::bench {
namespace {

constexpr int kHours = 8, kSamples = kHours * 3600, kQuantities = 5;
constexpr int kWidth = 1600, kHeight = 900;
constexpr int kZooms = 97; // different ones

/// The same drive, sampled FINER times a second.
std::vector<double> samplesOf(int quantity, int finer) {
    std::mt19937 random(static_cast<unsigned>(quantity + 1));
    std::vector<double> values;
    double value = 20;
    for (int i = 0; i < kSamples; ++i) {
        const double next = std::clamp(value + static_cast<double>(random() % 2001) / 1000 - 1, 0.0, 40.0);
        for (int part = 0; part < finer; ++part)
            values.push_back(value + (next - value) * part / finer);
        value = next;
    }
    return values;
}

std::string titleOf(int quantity) { return quantity == 0 ? "Speed" : fmt::format("Quantity {}", quantity); }

PlotData plotOf(int finer) {
    PlotData data;
    data.records = {ShownText::asItIs("Trip 1")};
    data.whole = {0, kSamples - 1};
    data.finest = 1.0 / finer;
    for (int i = 0; i < kQuantities; ++i) {
        PlotPanel& panel = data.panels.emplace_back();
        panel.key = titleOf(i);
        panel.title = ShownText::asItIs(titleOf(i));
        panel.curves.push_back({0, PlotSamples(0, data.finest, samplesOf(i, finer))});
    }
    return data;
}

/// The zoom after ROUND others: from the whole to half an hour of it, where samples are as many as pixels, here and
/// there.
PlotRange zoom(int round) {
    const double length = (kSamples - 1) * std::pow(0.5 / kHours, (round * 31 % kZooms) / double(kZooms));
    const double from = (kSamples - 1 - length) * (round * 57 % kZooms) / kZooms;
    return {from, from + length};
}
double cursor(int round) { return (kSamples - 1) * (round * 57 % kZooms) / double(kZooms); }

/// Nothing is painted before the window system says that WINDOW is there.
void showWindow(QWidget& window) {
    window.resize(kWidth, kHeight);
    window.setVisible(true);
    while (!window.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// Paints what of WINDOW is to be painted, which waits for the window system otherwise.
void paint(QWidget& window) {
    QEvent request(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(&window, &request);
}

class Ours {
public:
    Ours(int finer, bool lines) : widget_(TextContext{units_, zone_}) {
        PlotOptions options;
        options.lines = lines;
        widget_.setOptions(options);
        widget_.setPlot(plotOf(finer), false);
        showWindow(widget_);
    }
    void showZoom(int round) {
        const PlotRange range = zoom(round);
        widget_.zoomTo(range);
        paint(widget_);
    }
    void showCursor(int round) {
        widget_.moveCursor(cursor(round));
        paint(widget_);
    }
    QPixmap picture() { return widget_.grab(); }

private:
    TUnitSystem units_;
    TimeZone zone_;
    PlotWidget widget_;
};

class Peer {
public:
    explicit Peer(bool lines) {
        plot_.plotLayout()->clear();
        auto* title = new QCPTextElement(&plot_, QStringLiteral("Trip 1"), plot_.font());
        plot_.plotLayout()->addElement(0, 0, title);
        auto* sides = new QCPMarginGroup(&plot_);
        plot_.addLayer(QStringLiteral("cursor"));
        layer_ = plot_.layer(QStringLiteral("cursor"));
        layer_->setMode(QCPLayer::lmBuffered);
        plot_.setAntialiasedElements(QCP::aePlottables);
        const QSharedPointer<QCPAxisTickerTime> time(new QCPAxisTickerTime);
        time->setTimeFormat(QStringLiteral("%h:%m:%s"));
        QFont small = plot_.font();
        small.setPointSizeF(small.pointSizeF() * 0.9);
        for (int i = 0; i < kQuantities; ++i) {
            auto* area = new QCPAxisRect(&plot_);
            plot_.plotLayout()->addElement(i + 1, 0, area);
            area->setMarginGroup(QCP::msLeft | QCP::msRight, sides);
            QCPAxis* axis = area->axis(QCPAxis::atBottom);
            QCPAxis* values = area->axis(QCPAxis::atLeft);
            for (QCPAxis* each : {axis, values})
                each->setTickLabelFont(small);
            axis->setTicker(time);
            axis->setTickLabels(i + 1 == kQuantities);
            if (i + 1 == kQuantities)
                axis->setLabel(QStringLiteral("Elapsed Time"));
            values->setLabel(QString::fromStdString(titleOf(i)));
            axes_.push_back(axis);
            QCPGraph* graph = plot_.addGraph(axis, values);
            graph->setPen(QPen(QColor(0x0b, 0x5c, 0xad), 1));
            if (!lines)
                graph->setBrush(QColor(0xd6, 0xe5, 0xf7));
            const std::vector<double> samples = samplesOf(i, 1);
            QVector<double> keys, all;
            for (int k = 0; k < kSamples; ++k) {
                keys.push_back(k);
                all.push_back(samples[static_cast<std::size_t>(k)]);
            }
            graph->setData(keys, all, true);
            graph->rescaleAxes();
            auto* line = new QCPItemStraightLine(&plot_);
            line->setClipAxisRect(area);
            line->setLayer(layer_);
            line->point1->setAxes(axis, values);
            line->point2->setAxes(axis, values);
            lines_.push_back(line);
            auto* dot = new QCPItemTracer(&plot_);
            dot->setClipAxisRect(area);
            dot->setLayer(layer_);
            dot->setGraph(graph);
            dot->setStyle(QCPItemTracer::tsCircle);
            dots_.push_back(dot);
        }
        showWindow(plot_);
        showZoom(0);
    }
    void showZoom(int round) {
        const PlotRange range = zoom(round);
        for (QCPAxis* axis : axes_)
            axis->setRange(range.from, range.to);
        plot_.replot(QCustomPlot::rpQueuedRefresh);
        paint(plot_);
    }
    void showCursor(int round) {
        for (QCPItemStraightLine* line : lines_) {
            line->point1->setCoords(cursor(round), 0);
            line->point2->setCoords(cursor(round), 1);
        }
        for (QCPItemTracer* dot : dots_)
            dot->setGraphKey(cursor(round));
        layer_->replot();
        paint(plot_);
    }
    QPixmap picture() { return plot_.grab(); }

private:
    QCustomPlot plot_;
    QCPLayer* layer_ = nullptr;
    std::vector<QCPAxis*> axes_;
    std::vector<QCPItemStraightLine*> lines_;
    std::vector<QCPItemTracer*> dots_;
};

/// Measures what WORK does with one of PLOT, made when it is needed.
template <class Plot, class... Arguments>
void enter(const char* name, void (Plot::*work)(int), Arguments... arguments) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        Plot plot(arguments...);
        plot.showZoom(0);
        int round = 0;
        for (auto _ : state)
            (plot.*work)(++round);
    })->Unit(benchmark::kMillisecond);
}

int run(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (const QByteArray folder = qgetenv("QUOBRIX_BENCH_PICTURES"); !folder.isEmpty()) { // to see that they are alike
        Ours(1, false).picture().save(QString::fromLocal8Bit(folder) + QStringLiteral("/ours.png"));
        Peer(false).picture().save(QString::fromLocal8Bit(folder) + QStringLiteral("/peer.png"));
        return 0;
    }
    enter("Zoom, areas/ours", &Ours::showZoom, 1, false);
    enter("Zoom, areas/QCustomPlot", &Peer::showZoom, false);
    enter("Zoom, lines/ours", &Ours::showZoom, 1, true);
    enter("Zoom, lines/QCustomPlot", &Peer::showZoom, true);
    enter("Zoom, areas, ten times the samples/ours", &Ours::showZoom, 10, false);
    enter("Zoom, lines, ten times the samples/ours", &Ours::showZoom, 10, true);
    enter("Cursor/ours", &Ours::showCursor, 1, false);
    enter("Cursor/QCustomPlot", &Peer::showCursor, false);
    return runAndCompare(
        argc, argv,
        {{"Another zoom, areas", "Zoom, areas/ours", "Zoom, areas/QCustomPlot", 0.5},
         {"Another zoom, lines", "Zoom, lines/ours", "Zoom, lines/QCustomPlot", 0.5},
         {"The cursor moves", "Cursor/ours", "Cursor/QCustomPlot", 0.5},
         {"Ten times the samples, areas", "Zoom, areas, ten times the samples/ours", "Zoom, areas/ours", 1.2},
         {"Ten times the samples, lines", "Zoom, lines, ten times the samples/ours", "Zoom, lines/ours", 1.2}});
}

} // namespace
} // namespace quobrix::bench

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return quobrix::bench::run(argc, argv);
}
