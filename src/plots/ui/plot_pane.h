#pragma once

#include "plots/ui/plot_widget.h"
#include "report/report.h"

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QScrollArea;

namespace quobrix {

class PlotFiguresTable;
class Settings;

/// What a plot is shown through; all of it outlives the pane.
struct PlotPaneContext {
    TextContext text;
    Settings& settings;
    std::function<void()> unitSystems{}; ///< none: not available yet
    std::function<void(Report)> save{};  ///< as a file that a person chooses; likewise
    std::function<void()> help{};        ///< likewise
};

/// A plot with its figures below, and the menu of both. How plots are drawn, and what a person makes of their panels,
/// is remembered for all of them: a change in one is one in all.
class PlotPane : public QWidget {
    Q_OBJECT
public:
    /// Of plots without EVENTS, the menu does not offer what draws them.
    PlotPane(PlotPaneContext context, bool events, QWidget* parent = nullptr);

    PlotWidget& plot() { return *plot_; }
    /// As PlotWidget::setPlot.
    void show(PlotData plot, bool same);
    /// Draws as is set now.
    void followSettings();
    /// All panes in view that have SETTINGS do.
    static void followAll(const Settings& settings);
    /// The plot as it stands on paper: of the same part of the axis, whatever the window is like.
    Report printable() const;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class Command : std::size_t;

    void addCommands();
    void shareRoom();
    QAction& action(Command command) const { return *actions_[static_cast<std::size_t>(command)]; }
    void handle(Command command, std::function<void()> run);
    void showMenu(const QPoint& place, std::optional<std::size_t> panel);
    QMenu* quantitiesMenu(QMenu& parent);
    void choosePanels(std::vector<PanelChoice> panels);
    void offerPanelCommands();
    /// The plot as a picture: of the same part of the axis, whatever the window is like.
    Drawing drawing(Size room, const TextMeasure& measure) const;
    void copyDrawing();
    void copyPicture();

    PlotPaneContext context_;
    bool events_;
    PlotWidget* plot_;
    PlotFiguresTable* figures_;
    std::vector<QAction*> actions_; ///< by command
};

} // namespace quobrix
