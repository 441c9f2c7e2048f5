/// quobrix-sim: attaches simulated loggers to simulated ports and gives them something to hold.
#include "base/path_text.h"
#include "platform/environment.h"
#include "simulator/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <fmt/format.h>

namespace {

using namespace quobrix;
using namespace quobrix::sim;

constexpr int kFailed = 1;
constexpr int kUsage = 2;

void addSettings(CLI::App& command, Settings& s) {
    command.add_option("--product", s.product, "Product number");
    auto* offset = command.add_option("--clock-offset", s.clockOffset, "Seconds the clock is ahead of the computer's");
    command.add_flag("--clock-never-set", s.clockNeverSet, "Let the clock run from the year 2000")->excludes(offset);
    command.add_option("--bands", s.bandLimits, "Upper ends of three speed bands in MPH")->delimiter(',')->expected(3);
    command.add_option("--braking", s.braking, "Two braking thresholds in m/s2")->delimiter(',')->expected(2);
    command.add_option("--acceleration", s.acceleration, "Two acceleration thresholds in m/s2")
        ->delimiter(',')
        ->expected(2);
    command
        .add_option("--parameter", s.parameters, "Sampled parameters, up to five IDENTIFIER:SECONDS such as 2:5,4:10")
        ->delimiter(',')
        ->expected(1, 5);
    command.add_option("--led", s.led, "LED on or off");
    command.add_option("--vin-mode", s.vinMode, "VIN mode on or off");
    command.add_option("--armed", s.armed, "Armed, on or off");
    command.add_option("--log-downloads", s.logDownloads, "Keep an activity record of each download");
    command.add_option("--volume", s.volume, "Volume of the alarm");
    command.add_option("--car-type", s.carType, "Car type");
    command.add_option("--flags", s.flags, "Flag byte of the configuration")->check(CLI::Range(0, 255));
    command.add_option("--capacity", s.capacity, "Bytes of memory")->check(CLI::Range(1024, 1 << 30));
}

int run(const quobrix::ProgramArguments& arguments) {
    CLI::App app("Simulated loggers on simulated serial ports, kept in the folder that QUOBRIX_SIMULATOR names.\n"
                 "Exit codes: 0 done, 1 failed (one line on standard error), 2 wrong usage.",
                 "quobrix-sim");
    app.allow_windows_style_options(false); // a file may be called "/…"
    app.require_subcommand(1);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return fmt::format("quobrix-sim: {} (--help tells more)\n", error.what());
    });
    const PortStore store(simulatorFolder());
    Result<void> result;
    std::string port;

    const auto command = [&](const char* name, const char* what, auto action) {
        CLI::App* added = app.add_subcommand(name, what);
        added->callback([&result, action] { result = action(); });
        return added;
    };
    const auto portCommand = [&](const char* name, const char* what, auto action) {
        CLI::App* added = command(name, what, action);
        added->add_option("PORT", port, "Port name, such as COM3")->required();
        return added;
    };

    std::string serial;
    Settings settings;
    auto* attachCommand = portCommand("attach", "Attach a logger; one that was there before keeps what it holds",
                                      [&] { return attach(store, port, serial, settings); });
    attachCommand->add_option("--serial", serial, "Serial number, such as K-0042-B")->required();
    addSettings(*attachCommand, settings);

    portCommand("detach", "Take the logger off the port; the port stays", [&] { return detach(store, port); });
    portCommand("remove-port", "Remove the port and the loggers that were attached to it",
                [&] { return store.remove(port); });
    command("list", "List the ports and what is attached to them", [&] { return list(store); });

    addSettings(*portCommand("set", "Change the attached logger", [&] { return set(store, port, settings); }),
                settings);

    RecordOptions recordOptions;
    auto* recordCommand =
        portCommand("record", "Let the logger record a drive", [&] { return record(store, port, recordOptions); });
    recordCommand->add_option("DRIVE", recordOptions.drive, "The drive's readings (CSV)")->required();
    recordCommand->add_option("--vin", recordOptions.vin, "The vehicle's identification number");
    recordCommand->add_option("--told", recordOptions.told, "What the vehicle tells instead of that, perhaps nothing");
    recordCommand->add_option("--start", recordOptions.start, "Local start time, \"YYYY-MM-DD HH:MM:SS\"");
    recordCommand->add_option("--driver", recordOptions.driver, "The driver's identification number");
    recordCommand->add_flag("--disconnected", recordOptions.disconnected, "The logger was pulled out during the trip");

    GenerateOptions generateOptions;
    auto* generateCommand =
        portCommand("generate", "Add a made-up history", [&] { return generate(store, port, generateOptions); });
    generateCommand->add_option("--trips", generateOptions.trips, "How many trips")
        ->required()
        ->check(CLI::Range(1, 100000));
    generateCommand->add_option("--seed", generateOptions.seed, "The same seed gives the same history")->required();
    generateCommand->add_option("--end", generateOptions.end, "Local end of the last trip, \"YYYY-MM-DD HH:MM:SS\"");

    std::string vehicle;
    portCommand("household", "Add three months in one of a household's two vehicles, as in the example",
                [&] { return household(store, port, vehicle); })
        ->add_option("VEHICLE", vehicle, "Which one")
        ->required()
        ->check(CLI::IsMember({"wagon", "pickup"}));

    std::string format = "json";
    auto* dumpCommand = portCommand("dump", "Show everything that the logger holds", [&]() -> Result<void> {
        const auto text = dumpJson(store, port);
        if (!text)
            return text.error();
        fmt::print("{}\n", *text);
        return {};
    });
    dumpCommand->add_option("--format", format, "Format")->check(CLI::IsMember({"json"}));

    bool clear = false;
    portCommand("memory", "Show how much memory is used", [&] {
        return memory(store, port, clear);
    })->add_flag("--clear", clear, "Empty it first, without a trace");

    FaultOptions faultOptions;
    bool noFaults = false;
    auto* faultCommand = portCommand("fault", "Make the port and its logger slow or wrong, or calls to it fail",
                                     [&] { return fault(store, port, faultOptions); });
    auto* faultKinds = faultCommand->add_option_group("Fault")->require_option(1, 4);
    auto* delay = faultKinds->add_option("--delay", faultOptions.delay, "Seconds that every call to it takes")
                      ->check(CLI::Range(0.0, 3600.0));
    auto* failing = faultKinds->add_option("--fail", faultOptions.fail,
                                           "Functions that fail, such as GetLogRecords, or GetLogRecords=-7 with the "
                                           "result that it returns (default: -1)");
    auto* garbage = faultKinds->add_flag("--garbage", faultOptions.garbage,
                                         "Lengths within the records that it hands over are wrong");
    auto* drift = faultKinds->add_option("--drift", faultOptions.drift, "Seconds a day by which the clock runs ahead")
                      ->check(CLI::Range(-86400.0, 86400.0));
    auto* clean = faultKinds->add_flag("--clear", noFaults, "Make it as good as new");
    for (CLI::Option* other : {failing, delay, garbage, drift})
        clean->excludes(other);
    faultCommand->add_option("--after", faultOptions.after, "Calls of them that go well before")->needs(failing);
    faultCommand->add_flag("--once", faultOptions.once, "They fail one time only")->needs(failing);

    std::string target;
    portCommand("export", "Save the main log to a file that the program can import",
                [&] { return exportLog(store, port, pathFromUtf8(target)); })
        ->add_option("FILE", target, "The file to write")
        ->required();

    try {
        app.parse(arguments.count(), arguments.texts().data());
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    if (!result) {
        fmt::print(stderr, "quobrix-sim: {}\n", result.error().detail);
        return kFailed;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    quobrix::useUtf8Streams();
    try {
        return run(quobrix::ProgramArguments(argc, argv));
    } catch (const std::bad_alloc&) { // nothing here may need more of it
        std::fputs("quobrix-sim: there is not enough memory; close other programs and try again\n", stderr);
        return kFailed;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quobrix-sim: %s\n", error.what());
        return kFailed;
    }
}
