#include "simulator/commands.h"

#include "base/path_text.h"

#include "simulator/drive.h"
#include "simulator/fault.h"
#include "simulator/history.h"
#include "simulator/household.h"
#include "simulator/recorder.h"
#include "simulator/serial_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <string_view>

namespace quobrix::sim {

namespace {

Error bad(std::string detail) { return fault(ErrorKind::Unsupported, std::move(detail)); }

struct LocalMoment {
    std::int64_t time;         ///< s since 1970-01-01 00:00 UTC
    std::int32_t secondsOfDay; ///< by the local clock
};

Result<LocalMoment> parseLocalTime(const std::string& text) {
    std::tm parts{};
    char rest = 0;
    if (text.size() != 19 || std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%c", &parts.tm_year, &parts.tm_mon,
                                         &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &rest) != 6)
        return bad("\"" + text + "\" is no time like \"2026-06-30 18:05:00\"");
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    parts.tm_isdst = -1;
    const std::tm asked = parts;
    const std::int64_t time = std::mktime(&parts);
    const bool same = parts.tm_mday == asked.tm_mday && parts.tm_mon == asked.tm_mon &&
                      parts.tm_hour == asked.tm_hour && parts.tm_min == asked.tm_min && parts.tm_sec == asked.tm_sec;
    if (!same || time < 0 || time > std::numeric_limits<std::int32_t>::max())
        return bad("\"" + text + "\" is no time between 1970 and 2038");
    return LocalMoment{time, asked.tm_hour * 3600 + asked.tm_min * 60 + asked.tm_sec};
}

/// ISO 3779: 17 letters and digits without I, O and Q.
bool isVin(const std::string& text) {
    return text.size() == 17 && text.find_first_not_of("0123456789ABCDEFGHJKLMNPRSTUVWXYZ") == std::string::npos;
}

Result<void> setParameters(Configuration& configuration, const std::vector<std::string>& slots) {
    configuration.parameter.fill(kNotSelected);
    configuration.interval.fill(intervalCodeOfSeconds(60));
    for (std::size_t i = 0; i < slots.size(); ++i) {
        int parameter = 0;
        int seconds = 0;
        char rest = 0;
        if (std::sscanf(slots[i].c_str(), "%d:%d%c", &parameter, &seconds, &rest) != 2 || parameter < 0 ||
            parameter > 24 || secondsOfIntervalCode(intervalCodeOfSeconds(seconds)) != seconds)
            return bad("\"" + slots[i] +
                       "\" is no parameter from 0 to 24 with 1, 5, 10, 20, 30 or 60 seconds, like \"2:5\"");
        configuration.parameter[i] = codeOfParameter(parameter);
        configuration.interval[i] = intervalCodeOfSeconds(seconds);
    }
    return {};
}

Result<void> apply(const Settings& settings, Logger& logger) {
    const auto take = [](const auto& from, auto& to) {
        if (from)
            to = static_cast<std::remove_reference_t<decltype(to)>>(*from);
    };
    if (settings.product && (settings.product->empty() || settings.product->size() > 63))
        return bad("a product number has 1 to 63 characters");
    take(settings.product, logger.product);
    take(settings.clockOffset, logger.clockOffset);
    if (settings.clockNeverSet)
        logger.clockOffset = kNeverSetClock - computerTime();
    Configuration& configuration = logger.configuration;
    std::copy(settings.bandLimits.begin(), settings.bandLimits.end(), configuration.bandLimit.begin());
    std::copy(settings.braking.begin(), settings.braking.end(), configuration.threshold.begin() + HardBrake);
    std::copy(settings.acceleration.begin(), settings.acceleration.end(),
              configuration.threshold.begin() + HardAcceleration);
    if (!settings.parameters.empty())
        QUOBRIX_TRY(setParameters(configuration, settings.parameters));
    take(settings.led, logger.ledEnabled);
    take(settings.vinMode, logger.vinModeEnabled);
    take(settings.armed, logger.armed);
    take(settings.logDownloads, logger.logsDownloads);
    take(settings.volume, logger.beepVolume);
    take(settings.carType, logger.carType);
    take(settings.flags, logger.flags);
    take(settings.capacity, logger.capacity);
    return {};
}

/// Changes the logger attached to PORT by CHANGE (Logger& -> Result<void>), all or nothing.
template <class F>
Result<void> change(const PortStore& store, const std::string& port, F f) {
    return store.update(port, [&](Port& opened) -> Result<void> {
        if (!opened.logger())
            return fault(ErrorKind::NotFound, port + ": no logger is attached");
        return f(*opened.logger());
    });
}

Result<Logger> attachedLogger(const PortStore& store, const std::string& port) {
    auto opened = store.read(port, Memories::Read);
    if (!opened)
        return opened.error();
    if (!opened->logger())
        return fault(ErrorKind::NotFound, port + ": no logger is attached");
    return std::move(*opened->logger());
}

} // namespace

Result<void> attach(const PortStore& store, const std::string& port, const std::string& serial,
                    const Settings& settings) {
    if (!serialToNumber(serial))
        return bad("\"" + serial + "\" is no serial number like \"K-0042-B\"");
    QUOBRIX_TRY(store.create(port));
    return store.update(port, [&](Port& opened) { return apply(settings, opened.attach(serial)); });
}

Result<void> detach(const PortStore& store, const std::string& port) {
    return store.update(port, [](Port& opened) -> Result<void> {
        opened.attached.reset();
        return {};
    });
}

Result<void> list(const PortStore& store) {
    for (const std::string& name : store.ports()) {
        const auto port = store.read(name, Memories::Skip);
        if (!port)
            fmt::print("{}\tdamaged\n", name);
        else if (const Logger* logger = port->logger())
            fmt::print("{}\t{}\t{}\n", name, logger->serial, logger->product);
        else
            fmt::print("{}\tnothing attached\n", name);
    }
    return {};
}

Result<void> set(const PortStore& store, const std::string& port, const Settings& settings) {
    return change(store, port, [&](Logger& logger) { return apply(settings, logger); });
}

Result<void> record(const PortStore& store, const std::string& port, const RecordOptions& options) {
    if (!options.vin.empty() && !isVin(options.vin))
        return bad("\"" + options.vin + "\" is no vehicle identification number");
    constexpr std::size_t kVinLength = 17;
    if (options.told && (options.told->size() > kVinLength ||
                         !std::ranges::all_of(*options.told, [](char c) { return c >= ' ' && c <= '~'; })))
        return bad("\"" + *options.told + "\" is no text of at most 17 plain characters");
    const auto drive = readDrive(pathFromUtf8(options.drive));
    if (!drive)
        return drive.error();
    const auto length = static_cast<std::int64_t>(drive->seconds.back());
    std::optional<std::int64_t> start;
    if (!options.start.empty()) {
        const auto given = parseLocalTime(options.start);
        if (!given)
            return given.error();
        start = given->time;
    }
    return change(store, port, [&](Logger& logger) -> Result<void> {
        const std::int64_t begin = start.value_or(std::max<std::int64_t>(0, logger.time() - length));
        if (begin + length > std::numeric_limits<std::int32_t>::max())
            return bad("the drive would end after 2038");
        if (!options.vin.empty())
            logger.vin = options.vin;
        const Recording recording = recordDrive(*drive, logger.configuration,
                                                {.vin = options.told.value_or(logger.vin),
                                                 .driver = options.driver,
                                                 .start = static_cast<std::int32_t>(begin),
                                                 .disconnected = options.disconnected});
        QUOBRIX_TRY(logger.remember(recording.trip));
        for (const Stop& stop : recording.stops)
            QUOBRIX_TRY(logger.remember(stop));
        return {};
    });
}

Result<void> generate(const PortStore& store, const std::string& port, const GenerateOptions& options) {
    // By default at 18:05 on a day that stays the same, so that a seed says everything.
    constexpr LocalMoment kDefaultEnd{1782842700, 18 * 3600 + 5 * 60};
    LocalMoment end = kDefaultEnd;
    if (!options.end.empty()) {
        const auto given = parseLocalTime(options.end);
        if (!given)
            return given.error();
        end = *given;
    }
    return change(store, port, [&](Logger& logger) {
        return generateHistory(logger, {.trips = options.trips,
                                        .seed = options.seed,
                                        .end = static_cast<std::int32_t>(end.time),
                                        .endSecondsOfDay = end.secondsOfDay});
    });
}

Result<void> household(const PortStore& store, const std::string& port, const std::string& vehicle) {
    return change(store, port, [&](Logger& logger) {
        return generateHousehold(logger, vehicle == "wagon" ? HouseholdVehicle::Wagon : HouseholdVehicle::Pickup);
    });
}

Result<void> fault(const PortStore& store, const std::string& port, const FaultOptions& options) {
    constexpr std::string_view kFunctions[] = {
#define ENTRY(name) #name,
#include "device/logger_library.def"
#undef ENTRY
    };
    Faults faults{.delay = options.delay, .garbage = options.garbage, .drift = options.drift};
    faults.driftSince = computerTime();
    for (const std::string& text : options.fail) {
        Faults::Failure failure{text.substr(0, text.find('=')), -1, options.after, options.once};
        // What describes results has none of its own.
        if (failure.function == "ResultDescription" ||
            std::find(std::begin(kFunctions), std::end(kFunctions), failure.function) == std::end(kFunctions))
            return bad(failure.function + " is no function of the library that can fail");
        if (const std::size_t sign = text.find('='); sign != std::string::npos) {
            const char* const end = text.data() + text.size();
            const auto [parsed, error] = std::from_chars(text.data() + sign + 1, end, failure.result);
            if (error != std::errc{} || parsed != end)
                return bad(text + ": not a result");
        }
        faults.failures.push_back(std::move(failure));
    }
    return store.setFaults(port, faults);
}

Result<void> memory(const PortStore& store, const std::string& port, bool clear) {
    if (clear)
        QUOBRIX_TRY(change(store, port, [](Logger& logger) { return logger.forget(); }));
    const auto logger = attachedLogger(store, port);
    if (!logger)
        return logger.error();
    fmt::print("{} of {} bytes used\n", logger->memory.size(), logger->capacity);
    return {};
}

Result<void> exportLog(const PortStore& store, const std::string& port, const std::filesystem::path& target) {
    const auto logger = attachedLogger(store, port);
    if (!logger)
        return logger.error();
    const auto records = splitRecords(logger->memory);
    if (!records)
        return records.error();
    std::vector<ByteView> kept;
    for (const EncodedRecord& record : *records)
        if (record.kind != RecordKind::Stop)
            kept.push_back(record.bytes);
    const Bytes image = makeImage(logger->serial, kept);
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
    out.close();
    if (!out)
        return fault(ErrorKind::Io, target.string() + ": cannot be written");
    return {};
}

} // namespace quobrix::sim
