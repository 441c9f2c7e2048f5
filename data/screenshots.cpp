// Paints the pictures of the documentation without a display, in light and dark: screenshots FOLDER [DOCUMENT]
// DOCUMENT: of a recorded drive, whose latest trip is painted, too.

#include "app/main_frame.h"
#include "app/names_commands.h"
#include "app/print_commands.h"
#include "app/theme.h"
#include "app/units_command.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "paper/page_setup.h"
#include "paper/printout.h"
#include "paper/ui/paper_painter.h"
#include "platform/paths.h"
#include "settings/settings.h"
#include "ui/background.h"
#include "units/time_zone.h"
#include "views/comparison_window.h"
#include "views/log_view.h"
#include "views/names_dialog.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLineEdit>
#include <QToolButton>

#include <array>
#include <cstdio>
#include <utility>

namespace {

using namespace quobrix;

/// The program with the example open in one theme, and the pictures of it.
class Studio {
public:
    Studio(Theme theme, const QString& folder) : folder_(folder), suffix_(theme == Theme::Dark ? "dark" : "light") {
        setThemeSetting(settings_, theme);
        applyTheme(*qApp, settings_);
        frame_.resize(1080, 720);
        frame_.show();
    }

    bool takeAll() {
        if (!store_.loadSystem(kUsSystemName) || !frame_.files().openExample(deliveredFolder() / "Example.car"))
            return false;
        // What differs from one computer to the next is made up.
        settings_.setText("Recent File List", "File1", "/home/driver/Example.car");
        frame_.commands().handle(CommandId::Download, [] {});
        frame_.setPortStatus(QStringLiteral("Quobrix Detected on COM3 : K-0042-B"));
        frame_.documentChanged();
        frame_.pages().show(kHomePage);
        bool taken = take("home", frame_);
        frame_.pages().show(kTripLogPage);
        taken = take("trip-log", frame_) && takePage("list-page") && taken;
        taken = takeFilter() && taken;
        static_cast<LogView*>(frame_.pages().page(kTripLogPage))->showView(LogViewKind::Report);
        taken = take("trip-report", frame_) && takePage("report-page") && taken;
        static_cast<LogView*>(frame_.pages().page(kTripLogPage))->showView(LogViewKind::Plot);
        taken = take("trip-plot", frame_) && takePage("plot-page") && takeComparison() && taken;
        static_cast<LogView*>(frame_.pages().page(kTripLogPage))->showView(LogViewKind::Table);
        taken = take("trip-table", frame_) && taken;
        constexpr std::pair<CommandId, const char*> kLogs[] = {{CommandId::TroubleLog, "trouble-log"},
                                                               {CommandId::ActivityLog, "activity-log"},
                                                               {CommandId::AccidentLog, "accident-log"}};
        for (const auto& [command, name] : kLogs) {
            frame_.commands().trigger(command);
            taken = take(name, frame_) && taken;
        }
        static_cast<LogView*>(frame_.pages().page(frame_.pages().current()))->showView(LogViewKind::Plot);
        taken = take("accident-plot", frame_) && taken;
        frame_.commands().trigger(CommandId::Units);
        taken = take("units", *frame_.findChild<QWidget*>(QStringLiteral("UnitSys"))) && taken;
        fillGarage();
        frame_.commands().trigger(CommandId::VehicleId);
        return take("vehicle-names", *frame_.listDialogs().constFirst()) && takeSpreadsheet() && taken;
    }

    /// The latest trip of DOCUMENT in every view.
    bool takeDrive(const QString& document) {
        if (!store_.loadSystem(kUsSystemName))
            return false;
        frame_.files().open(toPath(document));
        if (document_.trips().rowCount() == 0)
            return false;
        auto& log = trips();
        constexpr std::pair<LogViewKind, const char*> kViews[] = {{LogViewKind::Summary, "drive-log"},
                                                                  {LogViewKind::Report, "drive-report"},
                                                                  {LogViewKind::Plot, "drive-plot"},
                                                                  {LogViewKind::Table, "drive-table"}};
        bool taken = true;
        for (const auto& [view, name] : kViews) {
            log.showView(view);
            taken = take(name, frame_) && taken;
        }
        return taken;
    }

private:
    LogView& trips() {
        frame_.pages().show(kTripLogPage);
        return static_cast<LogView&>(*frame_.pages().page(kTripLogPage));
    }

    /// One driver's trips, and what else can be filtered by.
    bool takeFilter() {
        LogView& log = trips();
        log.summary().openFilter();
        log.findChild<QLineEdit*>(QStringLiteral("filterWords"))->setText(QStringLiteral("Anna"));
        QApplication::processEvents();
        auto* more = log.findChild<QToolButton*>(QStringLiteral("filterMore"));
        more->click();
        const bool taken = take("trip-filter", frame_);
        more->click();
        log.findChild<QToolButton*>(QStringLiteral("filterShowAll"))->click();
        return taken;
    }

    /// A household's vehicles in a new document; three of them have been driven with a logger.
    void fillGarage() {
        frame_.commands().trigger(CommandId::New);
        constexpr std::array<std::array<const char*, 2>, 5> kGarage{{{"1GTEK19T23E123456", "Pickup"},
                                                                     {"1HGCM82633A004352", "Family car"},
                                                                     {"WVWZZZ1KZAW000327", "Anna's hatchback"},
                                                                     {"1M8GDM9AXKP042788", "Camper"},
                                                                     {"5YJ3E1EA7KF000316", "New electric car"}}};
        for (std::size_t i = 0; i < kGarage.size(); ++i) {
            const std::vector<std::string> vin{kGarage[i][0]};
            document_.vehicles().addMissing(vin);
            document_.vehicles().nameAll(vin, kGarage[i][1]);
            if (i < 3) {
                document_.trips().insertRows(i, 1);
                document_.trips().column<TTripLogVinColumn>().set(i, vin[0]);
            }
        }
    }

    /// Vehicles with what can be wrong with them.
    bool takeSpreadsheet() {
        TQuobrixDocument document;
        TVehicleNamesTable& vehicles = document.vehicles();
        vehicles.insertRows(0, 7);
        vehicles.column<TVehicleNamesVinColumn>().setAll({"1GTEK19T23E123456", "2HGES16575H591234", "",
                                                          "3FAFP13P41R199387", "2hges16575h591234", "WVWZZZ1KZ6W612345",
                                                          "JM1BK32F781140112"});
        vehicles.column<TVehicleNamesNameColumn>().setAll(
            {"Blue van", "Family car", "Spare key", "", "Family car", "Trailer puller", "Ann's commuter"});
        TVehicleNamesDialog dialog({document, settings_, units_, zone_}, nullptr);
        dialog.show();
        dialog.activateWindow();
        QApplication::processEvents();
        dialog.showCell("TVehicleNamesVinColumn", 4);
        return take("spreadsheet", dialog);
    }

    /// The first page that what is in view is printed on.
    bool takePage(const char* name) {
        const PageSource pages = layOut(*frame_.pages().page(kTripLogPage)->printable({}), {}, PaperPainter());
        const Bytes png = PaperPainter().png(pages.page(0), 1.5);
        return QImage::fromData(png.data(), static_cast<int>(png.size()))
            .save(QStringLiteral("%1/%2.png").arg(folder_, QLatin1String(name)));
    }

    /// Of the newest trips.
    bool takeComparison() {
        const RowIndex trips = document_.trips().rowCount();
        const std::array<RowIndex, 3> rows{trips - 3, trips - 2, trips - 1};
        ComparisonWindow compared(frame_.context(), rows, &frame_);
        compared.resize(frame_.size());
        compared.show();
        return take("comparison", compared);
    }

    bool take(const char* name, QWidget& widget) {
        QApplication::processEvents();
        frame_.markMissingFiles({}); // as the made-up one is
        return widget.grab().save(QStringLiteral("%1/%2-%3.png").arg(folder_, QLatin1String(name), suffix_));
    }

    QString folder_;
    QString suffix_;
    Settings settings_{std::make_unique<MemorySettings>()};
    TUnitSystem units_;
    UnitSystemStore store_{units_, {deliveredFolder(), {}}};
    TimeZone zone_; // Greenwich
    TQuobrixDocument document_;
    TQuobrixFrame frame_{ViewContext{document_, settings_, units_, zone_}};
    UnitsCommand unitsCommand_{frame_, units_, store_};
    NamesCommands namesCommands_{frame_};
    Background printers_;
    PrintCommands printCommands_{frame_, printers_};
};

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (argc != 2 && argc != 3) {
        std::fputs("screenshots FOLDER [DOCUMENT]\n", stderr);
        return 2;
    }
    const QString folder =
        QDir(application.arguments()[1]).absolutePath(); // opening a document changes the current one
    const QString drive = argc == 3 ? QFileInfo(application.arguments()[2]).absoluteFilePath() : QString();
    for (const Theme theme : {Theme::Light, Theme::Dark}) {
        if (!Studio(theme, folder).takeAll())
            return 1;
        if (!drive.isEmpty() && !Studio(theme, folder).takeDrive(drive))
            return 1;
    }
    return 0;
}
