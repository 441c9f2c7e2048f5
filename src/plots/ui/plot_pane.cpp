#include "plots/ui/plot_pane.h"

#include "base/ui/qt_text.h"
#include "drawing/svg.h"
#include "model/logger_tables.h"
#include "paper/ui/paper_painter.h"
#include "plots/panel_choices.h"
#include "plots/plot_options.h"
#include "plots/plot_report.h"
#include "plots/ui/plot_figures_table.h"
#include "settings/settings.h"
#include "texts/source_text.h"
#include "texts/text.h"
#include "ui/command_rows.h"
#include "ui/passing_menu.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QMenu>
#include <QMimeData>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {

enum class PlotPane::Command : std::size_t {
#define COMMAND(Name, Id, Text, Prompt) Name,
#include "plots/ui/plot_commands.def"
};

namespace {

struct PlotCommandRow {
    CommandRow command;
    const PersistentType* option = nullptr;
};

constexpr PlotCommandRow kPlotCommands[] = {
#define COMMAND(Name, Id, Text, Prompt) {{#Name, Id, SourceText(Text), SourceText(Prompt)}},
#define OPTION(Name, Id, Text, Prompt, Column) {{#Name, Id, SourceText(Text), SourceText(Prompt)}, &Column::kType},
#include "plots/ui/plot_commands.def"
};

constexpr Size kPicture{960, 600};  // of what is copied, in pixels
constexpr double kPictureText = 13; // likewise
constexpr double kHeightStep = 1.25;
constexpr const char *kPlotSection = "Plots", *kFigures = "Figures";

} // namespace

PlotPane::PlotPane(PlotPaneContext context, bool events, QWidget* parent)
    : QWidget(parent), context_(std::move(context)), events_(events), plot_(new PlotWidget(context_.text)),
      figures_(new PlotFiguresTable(context_.text, *plot_)) {
    plot_->setObjectName(QStringLiteral("Plot"));
    auto* scroller = new QScrollArea; // where the window is too small for all panels
    scroller->setFrameStyle(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setFocusPolicy(Qt::NoFocus);
    scroller->setWidget(plot_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(scroller, 1);
    layout->addWidget(figures_);
    figures_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setFocusProxy(plot_);
    addCommands();
    connect(plot_, &PlotWidget::menuRequested, this, &PlotPane::showMenu);
    connect(plot_, &PlotWidget::panelsChanged, this, &PlotPane::choosePanels);
    connect(plot_, &PlotWidget::viewChanged, this, [this] { action(Command::Unzoom).setEnabled(plot_->zoomed()); });
    for (const auto changed : {&PlotWidget::viewChanged, &PlotWidget::panelChosen})
        connect(plot_, changed, this, &PlotPane::offerPanelCommands);
    offerPanelCommands();
    followSettings();
}

void PlotPane::show(PlotData plot, bool same) {
    figures_->setVisible(action(Command::Figures).isChecked() && !plot.panels.empty());
    plot_->setPlot(std::move(plot), same);
    shareRoom();
}

void PlotPane::followSettings() {
    plot_->setOptions(plotOptions(context_.settings));
    plot_->setPanels(rememberedPanels(context_.settings));
    for (std::size_t i = 0; i < actions_.size(); ++i)
        if (kPlotCommands[i].option)
            actions_[i]->setChecked(plotOption(context_.settings, *kPlotCommands[i].option));
    // It is shown always where it does not wait for the key.
    action(Command::Coordinates).setChecked(!plot_->view().options.coordinatesOnCtrl);
    const bool figures = context_.settings.getBoolean(kPlotSection, kFigures, true);
    action(Command::Figures).setChecked(figures);
    figures_->setVisible(figures && !plot_->data().panels.empty());
    shareRoom();
}

void PlotPane::followAll(const Settings& settings) {
    for (QWidget* widget : QApplication::allWidgets())
        if (auto* pane = qobject_cast<PlotPane*>(widget);
            pane && &pane->context_.settings == &settings && pane->isVisible()) // others do when they are shown
            pane->followSettings();
}

void PlotPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    shareRoom();
}

/// Figures take a third of the room at most, and nothing but a line of what the plot needs.
void PlotPane::shareRoom() { figures_->fitInto(std::min(height() / 3, height() - plot_->minimumSizeHint().height())); }

void PlotPane::showEvent(QShowEvent* event) {
    followSettings();
    QWidget::showEvent(event);
}

Drawing PlotPane::drawing(Size room, const TextMeasure& measure) const {
    return ShownPlot(plot_->data(), plot_->view(), context_.text).draw(room, measure, 1);
}

// Commands

void PlotPane::handle(Command command, std::function<void()> run) {
    QAction& of = action(command);
    of.setEnabled(true);
    of.setStatusTip(toQt(text(kPlotCommands[static_cast<std::size_t>(command)].command.prompt)));
    connect(&of, &QAction::triggered, this, std::move(run));
}

void PlotPane::addCommands() {
    for (const PlotCommandRow& row : kPlotCommands)
        actions_.push_back(addCommand(*this, "Plot", row.command));
    using enum Command;
    const auto change = [this](Command command, auto make) {
        handle(command, [this, make] {
            if (const std::optional<std::size_t> panel = plot_->chosenPanel()) {
                choosePanels(make(plot_->data(), plot_->view().panels, *panel));
                plot_->tellPanel();
            }
        });
    };
    using Choices = std::vector<PanelChoice>;
    for (const Command step : {PanelUp, PanelDown})
        change(step, [by = step == PanelUp ? -1 : 1](const PlotData& plot, Choices choices, std::size_t panel) {
            return withMoved(plot, std::move(choices), panel, by);
        });
    for (const Command step : {PanelHigher, PanelLower})
        change(step, [by = step == PanelHigher ? kHeightStep : 1 / kHeightStep](const PlotData& plot, Choices choices,
                                                                                std::size_t panel) {
            return withHeight(plot, std::move(choices), panel, by);
        });
    change(PanelHide, [](const PlotData& plot, Choices choices, std::size_t panel) {
        return withHidden(plot, std::move(choices), panel, true);
    });
    handle(PanelsReset, [this] { choosePanels({}); });
    action(Figures).setCheckable(true);
    handle(Figures, [this] {
        context_.settings.setBoolean(kPlotSection, kFigures, action(Command::Figures).isChecked());
        followAll(context_.settings);
    });
    handle(Unzoom, [this] { plot_->unzoom(); });
    action(Unzoom).setEnabled(false);
    handle(CopyMetafile, [this] { copyDrawing(); });
    handle(CopyBitmap, [this] { copyPicture(); });
    for (std::size_t i = 0; i < actions_.size(); ++i)
        if (const PersistentType* option = kPlotCommands[i].option) {
            actions_[i]->setCheckable(true);
            handle(static_cast<Command>(i), [this, option] {
                setPlotOption(context_.settings, *option, !plotOption(context_.settings, *option));
                followAll(context_.settings);
            });
        }
    if (context_.save)
        handle(SaveAs, [this] { context_.save(printable()); });
    if (context_.unitSystems)
        handle(UnitSystems, context_.unitSystems);
    if (context_.help)
        handle(Help, context_.help);
}

void PlotPane::showMenu(const QPoint& place, std::optional<std::size_t> panel) {
    using enum Command;
    auto* menu = new PassingMenu("PlotMenu", *this);
    const auto add = [this](QMenu& to, std::initializer_list<Command> commands) {
        for (const Command command : commands)
            to.addAction(&action(command));
    };
    if (panel) {
        plot_->choosePanel(*panel);
        QMenu* one =
            menu->addMenu(toQt(plot_->data().panels[*panel].title).replace(QLatin1Char('&'), QLatin1String("&&")));
        one->setObjectName(QStringLiteral("PlotPanelMenu"));
        add(*one, {PanelUp, PanelDown, PanelHigher, PanelLower, PanelHide});
    }
    if (!plot_->data().panels.empty())
        menu->addMenu(quantitiesMenu(*menu));
    add(*menu, {Figures, SaveAs});
    if (plot_->zoomed())
        add(*menu, {Unzoom});
    QMenu* as = menu->addMenu(tr("&Copy As"));
    add(*as, {CopyMetafile, CopyBitmap});
    menu->addSeparator();
    add(*menu, {UnitSystems, Help});
    QAction* last = &action(UnitSystems);
    menu->insertSeparator(last);
    if (events_)
        for (const Command option : {SpeedBands, BrakingEvents, AccelerationEvents})
            menu->insertAction(last, &action(option));
    for (const Command option : {Lines, Coordinates, Normalize})
        menu->insertAction(last, &action(option));
    menu->popup(place);
}

/// Those that would change something.
void PlotPane::offerPanelCommands() {
    const auto& shown = plot_->plotLayout().panels;
    const std::optional<std::size_t> panel = plot_->chosenPanel();
    action(Command::PanelUp).setEnabled(panel && shown.front().panel != *panel);
    action(Command::PanelDown).setEnabled(panel && shown.back().panel != *panel);
    for (const Command command : {Command::PanelHigher, Command::PanelLower})
        action(command).setEnabled(panel && shown.size() > 1);
    action(Command::PanelHide).setEnabled(panel.has_value());
}

/// Which of them are shown.
QMenu* PlotPane::quantitiesMenu(QMenu& parent) {
    auto* menu = new QMenu(tr("&Quantities"), &parent);
    menu->setObjectName(QStringLiteral("PlotQuantitiesMenu"));
    for (std::size_t i = 0; i < plot_->data().panels.size(); ++i) {
        const PlotPanel& panel = plot_->data().panels[i];
        QAction* one = menu->addAction(toQt(panel.title).replace(QLatin1Char('&'), QLatin1String("&&")));
        one->setObjectName(QStringLiteral("PlotShow") + toQt(panel.key));
        one->setCheckable(true);
        one->setChecked(!hides(plot_->view().panels, panel));
        connect(one, &QAction::triggered, this, [this, i](bool on) {
            if (i < plot_->data().panels.size())
                choosePanels(withHidden(plot_->data(), plot_->view().panels, i, !on));
        });
    }
    menu->addSeparator();
    menu->addAction(&action(Command::PanelsReset));
    return menu;
}

void PlotPane::choosePanels(std::vector<PanelChoice> panels) {
    rememberPanels(context_.settings, panels);
    followAll(context_.settings);
}

void PlotPane::copyDrawing() {
    auto* copied = new QMimeData;
    copied->setData(
        QStringLiteral("image/svg+xml"),
        QByteArray::fromStdString(writeSvg(drawing(kPicture, TableTextMeasure(kPictureText)), kPaperPalette)));
    QApplication::clipboard()->setMimeData(copied);
}

void PlotPane::copyPicture() {
    const Bytes png = PaperPainter().png(drawing(kPicture, *paperMeasure(kPictureText)), devicePixelRatioF());
    QApplication::clipboard()->setImage(QImage::fromData(png.data(), static_cast<int>(png.size())));
}

Report PlotPane::printable() const { return ShownPlot::report(plot_->data(), plot_->view(), context_.text); }

} // namespace quobrix
