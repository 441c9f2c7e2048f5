#include "device/logger_link.h"

#include "model/serial_number.h"
#include "texts/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

/// A longer time in which nobody has heard of a logger, in s, is enough for it to have been away and recorded
/// something.
constexpr std::int64_t kLongestGap = 30;

constexpr std::size_t kLongestPath = 260; // what the library's own buffer takes

/// A text that the library wrote into BUFFER, wherever it ended it.
template <std::size_t N>
std::string textOf(const std::array<char, N>& buffer) {
    const void* end = std::memchr(buffer.data(), '\0', N);
    return {buffer.data(), end ? static_cast<const char*>(end) : buffer.data() + N};
}

template <auto Function>
constexpr const char* kNameOf = nullptr;
#define ENTRY(name)                                                                                                    \
    template <>                                                                                                        \
    constexpr const char* kNameOf<&LoggerFunctions::name> = "Quobrix" #name;
#include "device/logger_library.def"
#undef ENTRY

/// What a function that is asked for one value hands over.
template <class Function>
struct OutputOf;
template <class Out>
struct OutputOf<std::int32_t (*LoggerFunctions::*)(Out*)> {
    using Type = Out;
};

using LogBuffer = std::unique_ptr<void, FreeBlock>;

struct SetPair {
    ResultCode code = QUOBRIX_OK;
    RecordBlock first, second;
};

/// Takes over what the library allocates during one read, so that it is freed whatever happens next, and once: a block
/// that it hands out again is none. What is taken must outlive this object, so that no other block gets its address.
class Blocks {
public:
    LogBuffer buffer(void* block) { return LogBuffer(isNew(block) ? block : nullptr); }

    /// The record sets of BUFFER: none after a failure of the library, and with kNothingHandedOver what there is.
    template <class Function>
    SetPair parse(const Function& function, const LogBuffer& buffer) {
        QuobrixRecordSet* first = nullptr;
        QuobrixRecordSet* second = nullptr;
        const ResultCode code = function(buffer.get(), &first, &second);
        SetPair sets{code, take(first), take(second)};
        if (code == QUOBRIX_OK) {
            if (!sets.first || !sets.second) // a log without records has sets without records
                sets.code = kNothingHandedOver;
            return sets;
        }
        for (RecordBlock* set : {&sets.first, &sets.second})
            notUsed_.push_back(std::move(*set));
        return {code, nullptr, nullptr};
    }

private:
    bool isNew(const void* block) { return block && met_.insert(block).second; }
    RecordBlock take(QuobrixRecordSet* set) { return RecordBlock(isNew(set) ? set : nullptr); }

    std::set<const void*> met_;
    std::vector<RecordBlock> notUsed_;
};

} // namespace

LoggerLink::LoggerLink(Result<LoggerLibrary> library, WallClock clock, EventLog* events)
    : clock_(std::move(clock)), events_(events) {
    if (library) {
        libraryVersion_ = library->version;
        library_ = std::move(*library);
    } else {
        library_.functions = absentLoggerFunctions();
        libraryProblem_ = library.error().detail;
        status_.probe = status_.openResult = kNoLibrary;
        status_.probeDescription = libraryProblem_;
        if (events_)
            events_->note(library.error().detail);
    }
}

template <auto Function, class... Arguments>
ResultCode LockedLogger::call(Arguments... arguments) const {
    return noted(kNameOf<Function>, (library().*Function)(arguments...));
}

template <auto Function, class Value>
Reply<Value> LockedLogger::ask() const {
    typename OutputOf<decltype(Function)>::Type out = 0;
    const ResultCode code = call<Function>(&out);
    if constexpr (std::is_same_v<Value, bool>)
        return {code, code == QUOBRIX_OK && out != 0};
    else
        return {code, out};
}

void LockedLogger::note(const ShownText& event) const {
    if (link_.events_)
        link_.events_->note(event);
}

ResultCode LockedLogger::noted(const char* function, ResultCode code) const {
    held();
    if (!link_.events_ || !link_.hasLibrary())
        return code;
    // A scan finds most ports absent or empty each time.
    const bool often = monitoring_ || function == kNameOf<&LoggerFunctions::OpenPort> ||
                       function == kNameOf<&LoggerFunctions::GetSerialNumberAndTime>;
    const std::string& port = status().port;
    if (code == QUOBRIX_PORT_NOT_OPENED && !status().portOpen) // why it is not has been noted
        return code;
    const ResultCode before = std::exchange(link_.noted_[port + ' ' + function], code);
    if (code != QUOBRIX_OK && (!often || code != before))
        note(text(TextId::EventCallFailed, function, port, code, describe(code)));
    return code;
}

/// PROBE has found the logger of the status, or none.
void LockedLogger::noteLogger(ResultCode probe) const {
    held();
    const LoggerStatus& now = status();
    const std::string found = probe == QUOBRIX_OK ? now.port + ' ' + now.serialText : std::string();
    if (std::exchange(link_.notedLogger_, found) != found && !found.empty())
        note(text(TextId::EventLoggerFound, now.serialText, now.port));
}

std::string LockedLogger::describe(ResultCode code) const {
    switch (code) {
    case kPathTooLong:
        return text(TextId::PathTooLong);
    case kBadSerialNumber:
        return text(TextId::NoValidSerialNumber);
    case kNothingHandedOver:
        return text(TextId::NothingHandedOver);
    case kCancelled:
    case kLogsNotCurrent:
        return {}; // are no failures of the logger's
    default:
        break;
    }
    if (!link_.hasLibrary())
        return link_.libraryProblem_;
    const char* text = library().ResultDescription(code);
    return text ? text : "";
}

LoggerOutcome LockedLogger::outcome(ResultCode code) const {
    return {code, status().port, code == QUOBRIX_OK ? std::string() : describe(code)};
}

ResultCode LockedLogger::openPort(const std::string& port) {
    closePort();
    goTo(port);
    if (cancelled())
        return kCancelled;
    LoggerStatus& status = state();
    status.openResult = call<&LoggerFunctions::OpenPort>(port.c_str());
    status.portOpen = status.openResult == QUOBRIX_OK;
    if (!status.portOpen)
        noteProbe(status.openResult);
    return status.openResult;
}

void LockedLogger::closePort() {
    library().ClosePort();
    state().portOpen = false;
    state().openResult = QUOBRIX_PORT_NOT_OPENED;
}

/// What was there on another port is not here.
void LockedLogger::goTo(const std::string& port) {
    if (std::exchange(state().port, port) != port)
        noteProbe(QUOBRIX_PORT_NOT_OPENED);
}

void LockedLogger::expectPort(const std::string& port) {
    goTo(port);
    state().portOpen = false;
    state().openResult = QUOBRIX_PORT_NOT_OPENED;
}

ResultCode LockedLogger::probe() {
    LoggerStatus& status = state();
    std::array<char, QUOBRIX_SERIAL_SIZE> serial{};
    std::int32_t time = 0;
    ResultCode code = call<&LoggerFunctions::GetSerialNumberAndTime>(serial.data(), &time);
    if (code == QUOBRIX_OK && !isSerialNumber(textOf(serial)))
        code = kBadSerialNumber;
    if (code == QUOBRIX_OK) {
        // A download can take longer than the gap; the logger that it read was there all the while.
        const std::int64_t unseen = now() - std::max(status.seenTime, status.logsReadTime);
        if (status.serialText != textOf(serial) || unseen > kLongestGap) {
            status.logsCurrent = false;
            status.readings = {};
            ++status.gaps;
        }
        status.serialText = textOf(serial);
        status.seenTime = now();
        status.loggerTime = time;
    } else if (code == QUOBRIX_PORT_NOT_OPENED && !status.portOpen) {
        code = status.openResult; // a closed port says why for as long as it stays closed
    } else if (code != QUOBRIX_TIMEOUT && status.portOpen) {
        closePort();
        status.openResult = code;
    }
    noteProbe(code);
    return code;
}

void LockedLogger::noteProbe(ResultCode code) {
    noteLogger(code);
    state().probe = code;
    if (code != QUOBRIX_OK)
        state().readings = {};
    state().probeDescription = code == QUOBRIX_OK ? std::string() : describe(code);
}

ResultCode LockedLogger::convertLastSerialNumber() {
    const Reply<std::int32_t> number = serialNumberToInt(status().serialText);
    if (number.ok())
        state().serialNumber = number.value;
    return number.code;
}

Reply<std::int32_t> LockedLogger::serialNumberToInt(const std::string& text) const {
    std::int32_t number = 0;
    const ResultCode code = call<&LoggerFunctions::ConvertSerialNumberToInt>(text.c_str(), &number);
    return {code, number};
}

Reply<std::string> LockedLogger::serialNumberToText(std::int32_t number) const {
    std::array<char, QUOBRIX_SERIAL_SIZE> text{};
    const ResultCode code = call<&LoggerFunctions::ConvertSerialNumberToString>(number, text.data());
    return {code, std::string(text.data(), kSerialNumberLength)};
}

Reply<LoggerIdentity> LockedLogger::identity() {
    std::array<char, QUOBRIX_SERIAL_SIZE> serial{};
    std::array<char, QUOBRIX_PRODUCT_SIZE> product{};
    LoggerIdentity identity;
    std::int32_t notRead = 0;
    const ResultCode code = call<&LoggerFunctions::GetIdentityInformation>(
        serial.data(), product.data(), &identity.firmware.major, &identity.firmware.minor, &identity.firmware.build,
        &identity.boot.major, &identity.boot.minor, &identity.boot.build, &identity.hardwareVersion, &notRead);
    if (code != QUOBRIX_OK)
        return {code, {}};
    identity.serialNumber = textOf(serial);
    if (!isSerialNumber(identity.serialNumber))
        return {kBadSerialNumber, {}};
    identity.productNumber = textOf(product);
    state().newerModel = isNewerModel(identity.productNumber);
    state().identity = identity;
    return {code, identity};
}

Reply<LoggerConfiguration> LockedLogger::configuration() {
    LoggerConfiguration c;
    std::uint8_t flags = 0;
    const ResultCode code = call<&LoggerFunctions::GetConfiguration>(
        &c.bandLimits[0], &c.bandLimits[1], &c.bandLimits[2], &c.brakeThresholds[0], &c.brakeThresholds[1],
        &c.accelerationThresholds[0], &c.accelerationThresholds[1], &c.parameters[0], &c.parameters[1],
        &c.parameters[2], &c.parameters[3], &c.parameters[4], &c.intervals[0], &c.intervals[1], &c.intervals[2],
        &c.intervals[3], &c.intervals[4], &flags);
    if (code != QUOBRIX_OK)
        return {code, {}};
    state().configFlag = (flags & 1) != 0;
    return {code, c};
}

ResultCode LockedLogger::setConfiguration(const LoggerConfiguration& c) {
    return call<&LoggerFunctions::SetConfiguration>(
        c.bandLimits[0], c.bandLimits[1], c.bandLimits[2], c.brakeThresholds[0], c.brakeThresholds[1],
        c.accelerationThresholds[0], c.accelerationThresholds[1], c.parameters[0], c.parameters[1], c.parameters[2],
        c.parameters[3], c.parameters[4], c.intervals[0], c.intervals[1], c.intervals[2], c.intervals[3],
        c.intervals[4]);
}

ResultCode LockedLogger::changed(ResultCode code) {
    state().readingsStale = true; // a call that failed may have been carried out
    return code;
}

ResultCode LockedLogger::setTime(std::int32_t time) {
    const ResultCode code = changed(call<&LoggerFunctions::SetTime>(time));
    if (code == QUOBRIX_OK)
        noteLogsCurrent();
    return code;
}

ResultCode LockedLogger::enableLed(bool enable) { return changed(call<&LoggerFunctions::EnableLED>(enable)); }
Reply<bool> LockedLogger::ledIsEnabled() { return ask<&LoggerFunctions::LEDIsEnabled, bool>(); }
ResultCode LockedLogger::enableVinMode(bool enable) { return changed(call<&LoggerFunctions::EnableVinMode>(enable)); }

Reply<bool> LockedLogger::vinModeIsEnabled() {
    const Reply<bool> enabled = ask<&LoggerFunctions::VinModeIsEnabled, bool>();
    return enabled.code == QUOBRIX_NO_VIN_MODE_ANSWER ? Reply<bool>{QUOBRIX_OK, false} : enabled;
}

ResultCode LockedLogger::setBeepVolume(std::int32_t volume) {
    return changed(call<&LoggerFunctions::SetBeepVolume>(volume));
}
Reply<std::int32_t> LockedLogger::beepVolume() { return ask<&LoggerFunctions::GetBeepVolume, std::int32_t>(); }
Reply<bool> LockedLogger::beepIsEnabled() { return ask<&LoggerFunctions::BeepIsEnabled, bool>(); }
ResultCode LockedLogger::setCarType(std::int32_t carType) {
    return changed(call<&LoggerFunctions::SetCarType>(carType));
}
Reply<std::int32_t> LockedLogger::carType() { return ask<&LoggerFunctions::GetCarType, std::int32_t>(); }

Reply<bool> LockedLogger::isArmed() {
    const Reply<std::uint8_t> trouble = ask<&LoggerFunctions::GetTroubleByte, std::uint8_t>();
    return {trouble.code, trouble.ok() && trouble.value == 1};
}

ResultCode LockedLogger::clearLogs() {
    const ResultCode code = changed(call<&LoggerFunctions::ClearLogs>());
    if (code == QUOBRIX_OK)
        noteLogsCurrent();
    return code;
}

ResultCode LockedLogger::arm(bool armed) { return changed(call<&LoggerFunctions::ClearTroubleCodes>(armed)); }

ResultCode LockedLogger::clearAccidentLogs() {
    const ResultCode code = changed(call<&LoggerFunctions::ClearAccidentLogs>());
    if (code == QUOBRIX_OK && status().logsCurrent) // still; there is less of it
        noteLogsCurrent();
    return code;
}

Reply<MemoryInformation> LockedLogger::memoryInformation() {
    MemoryInformation memory;
    const ResultCode code = call<&LoggerFunctions::GetMemoryInformation>(&memory.capacity, &memory.used);
    return {code, memory};
}

void LockedLogger::takeReading(int which) {
    LoggerReadings& readings = state().readings;
    const auto keep = [](auto& reading, const auto& reply) {
        reading.reset();
        if (reply.ok())
            reading = reply.value;
    };
    switch (which) {
    case 0:
        return keep(readings.led, ledIsEnabled());
    case 1: // others do not know the question
        return keep(readings.vinMode,
                    hasVinMode(status().identity.productNumber) ? vinModeIsEnabled() : Reply<bool>{kCancelled, false});
    case 2:
        return keep(readings.volume, beepVolume());
    case 3:
        keep(readings.memory, memoryInformation());
        if (readings.memory && status().currentUse < 0)
            state().currentUse = readings.memory->used;
        else if (readings.memory && readings.memory->used > status().currentUse)
            state().logsCurrent = false;
        return;
    case 4:
        return keep(readings.carType, carType());
    case 5:
        return keep(readings.armed, isArmed());
    default:
        return;
    }
}

void LockedLogger::noteLogsCurrent(const std::string& serialText, std::uint32_t gaps) {
    if (status().serialText == serialText && status().gaps == gaps)
        noteLogsCurrent();
}

void LockedLogger::noteLogsCurrent() {
    state().logsCurrent = true;
    state().logsReadTime = now();
    state().currentUse = -1;
    state().readings.memory.reset(); // what was told before does not tell what is there now
    state().readingsStale = true;
}

Reply<RecordBlocks> LockedLogger::readLogs(LogMode mode) {
    void* allocated[3] = {};
    int step = 0;
    progress(step, 4); // the transfer, and a log to be parsed three times
    const ResultCode code = call<&LoggerFunctions::GetLogBuffer>(static_cast<std::int32_t>(mode), &allocated[0],
                                                                 &allocated[1], &allocated[2]);
    if (code == QUOBRIX_OK)
        state().logsReadTime = now();
    Reply<RecordBlocks> reply{code, {}};
    Blocks blocks;
    const LogBuffer buffers[3] = {blocks.buffer(allocated[0]), blocks.buffer(allocated[1]),
                                  blocks.buffer(allocated[2])};
    if (cancelled())
        reply.code = kCancelled;
    if (!reply.ok())
        return reply;

    RecordBlocks& records = reply.value;
    const auto parse = [&](const auto& function, const LogBuffer& buffer, SourceText name) {
        progress(++step, 4);
        if (cancelled())
            return SetPair{};
        SetPair sets = buffer ? blocks.parse(function, buffer) : SetPair{kNothingHandedOver, nullptr, nullptr};
        if (sets.code != QUOBRIX_OK) {
            records.unreadable.push_back({text(name), describe(sets.code)});
            state().logsCurrent = false;
        }
        return sets;
    };
    const auto logRecords = [&](auto... out) { return call<&LoggerFunctions::GetLogRecords>(out...); };
    SetPair main = parse(logRecords, buffers[0], SourceText("trips, trouble codes and activity"));
    records.trips = std::move(main.first);
    records.troublesAndActivity = std::move(main.second);
    const auto accidentRecords = [&](auto... out) { return call<&LoggerFunctions::GetAccidentLogRecords>(out...); };
    constexpr SourceText kAccidentLogs[] = {SourceText("first accident log"), SourceText("second accident log")};
    for (std::size_t i = 0; i < records.accidents.size(); ++i)
        if (allocated[i + 1]) { // not every logger has both
            SetPair accidents = parse(accidentRecords, buffers[i + 1], kAccidentLogs[i]);
            records.accidents[i] = {std::move(accidents.first), std::move(accidents.second)};
        }
    return reply;
}

Reply<RecordBlocks> LockedLogger::readLogFile(const std::string& path) {
    Reply<RecordBlocks> reply;
    if (path.size() > kLongestPath) {
        reply.code = kPathTooLong;
        return reply;
    }
    void* allocated = nullptr;
    reply.code = call<&LoggerFunctions::GetLogBufferFromFile>(&allocated, path.c_str());
    Blocks blocks;
    const LogBuffer log = blocks.buffer(allocated);
    if (!reply.ok())
        return reply;
    const auto logRecords = [&](auto... out) { return call<&LoggerFunctions::GetLogRecords>(out...); };
    SetPair main = log ? blocks.parse(logRecords, log) : SetPair{kNothingHandedOver, nullptr, nullptr};
    reply.code = main.code;
    reply.value = {std::move(main.first), std::move(main.second), {}, {}};
    return reply;
}

} // namespace quobrix
