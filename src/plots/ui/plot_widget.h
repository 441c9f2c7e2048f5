#pragma once

#include "plots/plot_drawing.h"
#include "tables/column.h"

#include <QImage>
#include <QRegion>
#include <QWidget>

#include <optional>

namespace quobrix {

/// A plot that is looked into by mouse and keyboard.
///
/// A drag zooms, the wheel does so at the pointer, the middle button and a wheel that tilts move along the axis. A drag
/// with Shift, and the keys that move the cursor with Shift, mark a range. Arrows move the cursor by a sample, or by a
/// pixel where there are more of them; Page Up and Down by a tenth, or along what is zoomed; Home and End to the ends;
/// +, - and 0 zoom; Up and Down choose the panel that commands are about. Escape gives up the range, then the zoom, and
/// is then left to the parent. The border between two panels can be moved, and a panel by its title.
///
/// Nothing is drawn while the pointer moves but what follows it: the plot is kept as a picture.
class PlotWidget final : public QWidget {
    Q_OBJECT
public:
    /// What TEXT refers to must outlive the widget.
    explicit PlotWidget(const TextContext& text, QWidget* parent = nullptr);

    /// Shows DATA. If it is of the SAME record, what is seen of the axis and what is marked stay.
    void setPlot(PlotData data, bool same);
    void setOptions(const PlotOptions& options);
    void setPanels(std::vector<PanelChoice> panels);

    const PlotData& data() const { return data_; }
    const PlotView& view() const { return view_; }
    const PlotLayout& plotLayout() const { return layout_; }
    const PlotPointers& pointers() const { return pointers_; }
    bool zoomed() const { return view_.range.has_value(); }
    /// What is seen of the axis.
    PlotRange seen() const { return view_.range.value_or(data_.whole); }

    /// Shows RANGE, or more of the axis if that is too little; then the status bar says so.
    void zoomTo(PlotRange range);
    void unzoom();
    /// Moves the cursor to PLACE and brings it into the middle.
    void centreOn(double place);
    void moveCursor(double place);
    void markRange(std::optional<PlotRange> range);
    /// The panel of the data that commands are about: the one that was chosen, or the first that is shown. None where
    /// none is shown.
    std::optional<std::size_t> chosenPanel() const;
    void choosePanel(std::size_t panel);
    /// Lets assistive technology say what the chosen panel shows.
    void tellPanel();
    /// Marks a speed band of the data.
    void markBand(std::optional<std::size_t> band);

    /// What the cursor stands at, to be heard; empty without a cursor.
    QString spokenText() const;
    /// What the panels show, in words.
    QString describe() const;
    /// What is selected, with its length; empty if nothing is.
    QString spokenRange() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return least_; }

signals:
    /// Another part of the axis is seen, or other panels are.
    void viewChanged();
    void panelChosen();
    void pointersChanged();
    /// A person has changed the panels.
    void panelsChanged(const std::vector<quobrix::PanelChoice>& panels);
    void menuRequested(const QPoint& place, std::optional<std::size_t> panel);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    /// What the button that is held down does.
    enum class Drag { None, Zoom, Range, Pan, Border, Panel };

    bool over(QPointF point) const;
    std::optional<std::size_t> borderAt(QPointF point) const;
    std::optional<std::size_t> titleAt(QPointF point) const { return layout_.titleAt({point.x(), point.y()}); }
    /// The same, where there is another panel beside which it can be moved.
    std::optional<std::size_t> gripAt(QPointF point) const {
        return layout_.panels.size() > 1 ? titleAt(point) : std::nullopt;
    }
    void setCursorAt(QPointF point);
    /// The place under X, or the nearest one that is seen.
    double placeNear(double x) const;
    void layOut();
    /// Paints the plot where REGION has to be painted, without what follows the pointer.
    void paintPlot(QPainter& painter, const QRegion& region);
    void show(PlotRange range);
    void zoomBy(double factor, double at);
    void pan(double units);
    void point(PlotPointers pointers);
    void hover(QPointF point, Qt::KeyboardModifiers modifiers);
    QString tipAt(QPointF point, Qt::KeyboardModifiers modifiers) const;
    void showTip(QPointF point, Qt::KeyboardModifiers modifiers);
    void follow(QPointF point);
    void endDrag();
    bool moveByKey(const QKeyEvent& event);
    bool choosePanelByKey(const QKeyEvent& event);
    QString spokenPanel() const;
    const PanelLayout* chosenLayout() const;
    bool zoomByKey(const QKeyEvent& event);
    bool giveUp();
    void goTo(double place, bool marks);
    void say(const QString& text);
    void tellMaximum();
    void speak();
    QRect rubberBand() const;
    QRect placeOfDragged() const;
    void placePanel(std::size_t panel, std::size_t place);

    TextContext text_;
    PlotData data_;
    PlotView view_;
    PlotLayout layout_;
    QSize least_;
    QImage picture_;       ///< of the panels, made when a part of them is painted anew
    bool outdated_ = true; ///< the picture is
    PlotPointers pointers_;
    QRegion pointed_;              ///< where they are painted
    std::optional<double> fixed_;  ///< the cursor, where the mouse is elsewhere
    std::optional<double> anchor_; ///< the other end of the range that keys mark
    Drag drag_ = Drag::None;
    QPointF pressed_, last_;
    std::size_t border_ = 0;   ///< that is moved: of the panel in this place and the next one
    std::size_t panel_ = 0;    ///< that is moved, by its place
    std::string chosen_;       ///< the key of a panel
    bool tellsPanel_ = false;  ///< it was chosen last
    bool toldMaximum_ = false; ///< the status bar says that more cannot be seen
};

} // namespace quobrix
