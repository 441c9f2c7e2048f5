#pragma once

#include "app/logger_commands.h"
#include "app/main_frame.h"
#include "app/names_commands.h"
#include "app/print_commands.h"
#include "app/single_instance.h"
#include "app/units_command.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "summary/ui/trip_counter.h"
#include "units/time_zone.h"
#include "units/unit_system.h"
#include "units/unit_system_store.h"

#include <QApplication>

#include <filesystem>
#include <functional>
#include <memory>

namespace quobrix {

/// The program: settings, units, the one document and its frame, from start to exit.
class TQuobrixApp final : public QApplication {
public:
    TQuobrixApp(int& argc, char** argv);
    ~TQuobrixApp() override;

    /// Everything up to the open window. False if the program is to end immediately and silently: another copy runs,
    /// and has been given the file that this one was started with.
    bool start();

    TQuobrixFrame& frame() { return *frame_; }

private:
    void enterWorkingFolder();
    void createFrame();
    /// Calls NEXT when the frame has its place on the screen, so that boxes stand over it.
    void whenShown(const std::function<void()>& next, int attempts);
    void openStartFile();
    void firstRun();
    /// Calls OPENED (if given) behind it; never, if the window closes before.
    void openWhenIdle(const std::filesystem::path& file, const SingleInstance::Opened& opened = {});

    /// Of this run: outlives all that it is told by.
    EventLog events_;
    /// Goes last, and its port has a rest then: the next copy may be the first, and have the document, meanwhile.
    std::unique_ptr<LoggerCommands> logger_;

    /// Looks for printers. One in the network may be silent for long: nothing but the process waits for it then.
    Background printerSearch_;

    const bool commandLineGiven_;
    const std::filesystem::path commandLineFile_; ///< empty if none was named
    const std::filesystem::path libraryPath_;     ///< of the logger library
    const std::filesystem::path dataFolder_;      ///< what is delivered with the program; its own folder if possible
    Settings settings_;
    SingleInstance instance_;
    TUnitSystem units_;
    UnitSystemStore unitStore_;
    const TimeZone zone_;
    std::unique_ptr<TQuobrixDocument> document_;
    std::unique_ptr<SummaryKeeper> summaries_;
    std::unique_ptr<TripCounter> counter_;
    std::unique_ptr<TQuobrixFrame> frame_;
    std::unique_ptr<UnitsCommand> unitsCommand_;
    std::unique_ptr<NamesCommands> namesCommands_;
    std::unique_ptr<PrintCommands> printCommands_;
};

} // namespace quobrix
