/// The maker's functions, answered from the files of simulated ports. Like the real library it is not re-entrant, it
/// has one port open at most, and no error ends the program that calls it.
#include "simulator/fault.h"
#include "simulator/log_image.h"
#include "simulator/port_store.h"
#include "simulator/record_sets.h"
#include "simulator/serial_number.h"

#include "base/path_text.h"
#include "device/quobrix.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <thread>
#include <tuple>

namespace quobrix::sim {

namespace {

/// Results beside those that every caller tells apart.
constexpr std::int32_t kBadArgument = -401;
constexpr std::int32_t kBadSerialNumber = -402;
constexpr std::int32_t kPortDamaged = -403;
constexpr std::int32_t kPortUnreadable = -404;
constexpr std::int32_t kNotALog = -405;
constexpr std::int32_t kLogDamaged = -406;
constexpr std::int32_t kOutOfMemory = -407;

struct Description {
    std::int32_t result;
    const char* text;
};
constexpr Description kDescriptions[] = {
    {QUOBRIX_OK, "Success"},
    {QUOBRIX_NOT_REPORTED, "Nothing was downloaded"},
    {QUOBRIX_TIMEOUT, "No logger answered"},
    {QUOBRIX_PORT_IN_USE, "The port is in use by another application"},
    {QUOBRIX_PORT_DOES_NOT_EXIST, "The port does not exist"},
    {QUOBRIX_NO_VIN_MODE_ANSWER, "The logger has no VIN mode"},
    {QUOBRIX_PORT_NOT_OPENED, "No port is open"},
    {kBadArgument, "A value is not possible"},
    {kBadSerialNumber, "Not a serial number"},
    {kPortDamaged, "The simulated logger's file is damaged"},
    {kPortUnreadable, "The simulated logger's file cannot be read or written"},
    {kNotALog, "Not a log file"},
    {kLogDamaged, "The log is damaged"},
    {kOutOfMemory, "Not enough memory"},
};

struct OpenPort {
    PortStore store;
    std::string name;
    FileLock lock;
};
std::unique_ptr<OpenPort> openPort; // GCC 12 mistakes an optional one for uninitialised

/// The exported function that calls the one whose default argument this is, without "Quobrix".
#define QUOBRIX_CALLER (__builtin_FUNCTION() + (sizeof "Quobrix" - 1))

/// What CALLER is to fail with on the open port, if anything.
std::int32_t orderedFailure(const char* caller) {
    return openPort ? openPort->store.failureOf(openPort->name, caller).value_or(QUOBRIX_OK) : QUOBRIX_OK;
}

/// Nothing may be thrown into a caller that may not be C++. Every function goes through here, so that each can be made
/// to fail.
template <class F>
std::int32_t guarded(F f, const char* caller = QUOBRIX_CALLER) noexcept {
    try {
        const std::int32_t failure = orderedFailure(caller);
        return failure == QUOBRIX_OK ? f() : failure;
    } catch (...) {
        return kOutOfMemory;
    }
}

std::int32_t portResult(const Error& error) {
    switch (error.kind) {
    case ErrorKind::NotFound:
        return QUOBRIX_PORT_DOES_NOT_EXIST;
    case ErrorKind::InUse:
        return QUOBRIX_PORT_IN_USE;
    case ErrorKind::NotADocument:
    case ErrorKind::Corrupt:
        return kPortDamaged;
    default:
        return kPortUnreadable;
    }
}

std::int32_t logResult(const Error& error) { return error.kind == ErrorKind::NotADocument ? kNotALog : kLogDamaged; }

/// A slow port takes its time, and others can use the port's file meanwhile.
void takeTime(const PortStore& store, std::string_view port) {
    std::this_thread::sleep_for(std::chrono::duration<double>(store.faults(port).delay));
}

/// Asks the attached logger: F(const Logger&) -> result code.
template <class F>
std::int32_t ask(F f, Memories memories = Memories::Skip, const char* caller = QUOBRIX_CALLER) {
    const auto answer = [&]() -> std::int32_t {
        if (!openPort)
            return QUOBRIX_PORT_NOT_OPENED;
        takeTime(openPort->store, openPort->name);
        const auto port = openPort->store.read(openPort->name, memories);
        if (!port)
            return portResult(port.error());
        return port->logger() ? f(*port->logger()) : QUOBRIX_TIMEOUT;
    };
    return guarded(answer, caller);
}

/// Tells the attached logger: F(Logger&) -> result code; what it changed is kept if that is QUOBRIX_OK.
template <class F>
std::int32_t tell(F f, const char* caller = QUOBRIX_CALLER) {
    const auto change = [&]() -> std::int32_t {
        if (!openPort)
            return QUOBRIX_PORT_NOT_OPENED;
        takeTime(openPort->store, openPort->name);
        std::int32_t result = QUOBRIX_TIMEOUT;
        const auto updated = openPort->store.update(openPort->name, [&](Port& port) -> Result<void> {
            if (port.logger())
                result = f(*port.logger());
            return result == QUOBRIX_OK ? Result<void>() : fault(ErrorKind::Unsupported, "refused");
        });
        if (!updated && updated.error().kind != ErrorKind::Unsupported)
            return portResult(updated.error());
        return result;
    };
    return guarded(change, caller);
}

template <class T, class Value>
std::int32_t answer(T* out, Value Logger::*value, const char* caller = QUOBRIX_CALLER) {
    if (!out)
        return kBadArgument;
    const auto copy = [&](const Logger& logger) {
        *out = static_cast<T>(logger.*value);
        return QUOBRIX_OK;
    };
    return ask(copy, Memories::Skip, caller);
}

template <class T, class Value>
std::int32_t take(T value, Value Logger::*target, const char* caller = QUOBRIX_CALLER) {
    const auto set = [&](Logger& logger) {
        logger.*target = static_cast<Value>(value);
        return QUOBRIX_OK;
    };
    return tell(set, caller);
}

void copyText(char* target, const std::string& text) { std::memcpy(target, text.c_str(), text.size() + 1); }

template <class... Out>
bool anyMissing(Out*... out) {
    return (... || (out == nullptr));
}

void* mallocCopy(const Bytes& bytes) {
    void* const block = std::malloc(bytes.size());
    if (block)
        std::memcpy(block, bytes.data(), bytes.size());
    return block;
}

/// The three images of a download. Stops go to the logger's two accident banks in turn.
struct Images {
    Bytes main;
    Bytes accident[2];
};

Result<Images> imagesOf(const Logger& logger) {
    const auto records = splitRecords(logger.memory);
    if (!records)
        return records.error();
    std::vector<ByteView> mainRecords;
    std::vector<ByteView> banks[2];
    std::size_t stops = 0;
    for (const EncodedRecord& record : *records)
        (record.kind == RecordKind::Stop ? banks[stops++ % 2] : mainRecords).push_back(record.bytes);
    return Images{makeImage(logger.serial, mainRecords),
                  {makeImage(logger.serial, banks[0]), makeImage(logger.serial, banks[1])}};
}

/// An image tells its own size: it is a block of this library, or of a caller that filled it from one.
ByteView viewOf(const void* image) {
    const auto* const bytes = static_cast<const std::uint8_t*>(image);
    const std::size_t size = imageSize({bytes, kImageHeadSize});
    return size ? ByteView{bytes, size} : ByteView{};
}

using Parser = Result<RecordSets> (*)(ByteView image);

/// The faults of the open port.
Faults faults() { return openPort ? openPort->store.faults(openPort->name) : Faults(); }

/// The record in the middle of SET claims to be longer than the set, which hides all that follow it.
void putGarbage(QuobrixRecordSet* set) {
    auto* const bytes = reinterpret_cast<std::uint8_t*>(set);
    std::size_t place = sizeof *set;
    QuobrixRecordHead head;
    for (std::uint32_t record = 0; record < set->recordCount; ++record, place += head.size) {
        std::memcpy(&head, bytes + place, sizeof head);
        if (record != set->recordCount / 2)
            continue;
        head.size = 0xFFFF'FFF8;
        std::memcpy(bytes + place, &head, sizeof head);
        return;
    }
}

std::int32_t parse(Parser parser, const void* image, QuobrixRecordSet** first, QuobrixRecordSet** second,
                   const char* caller = QUOBRIX_CALLER) {
    const auto split = [&]() -> std::int32_t {
        if (!image || !first || !second)
            return kBadArgument;
        *first = *second = nullptr;
        const auto sets = parser(viewOf(image));
        if (!sets)
            return logResult(sets.error());
        *first = sets->first.release();
        *second = sets->second.release();
        if (*first && *second) {
            if (faults().garbage) {
                putGarbage(*first);
                putGarbage(*second);
            }
            return QUOBRIX_OK;
        }
        std::free(*first);
        std::free(*second);
        *first = *second = nullptr;
        return kOutOfMemory;
    };
    return guarded(split, caller);
}

} // namespace

} // namespace quobrix::sim

using namespace quobrix;
using namespace quobrix::sim;

int32_t QuobrixOpenPort(const char* portName) {
    openPort.reset(); // before the call can be made to fail: the new port's faults count
    return guarded([&]() -> std::int32_t {
        PortStore store(simulatorFolder());
        if (!portName || !store.exists(portName))
            return QUOBRIX_PORT_DOES_NOT_EXIST;
        takeTime(store, portName);
        if (const auto failure = store.failureOf(portName, "OpenPort"))
            return *failure;
        auto lock = store.open(portName);
        if (!lock)
            return portResult(lock.error());
        openPort = std::make_unique<OpenPort>(OpenPort{std::move(store), portName, *std::move(lock)});
        return QUOBRIX_OK;
    });
}

int32_t QuobrixClosePort(void) {
    return guarded([]() -> std::int32_t {
        if (openPort)
            takeTime(openPort->store, openPort->name);
        openPort.reset();
        return QUOBRIX_OK;
    });
}

const char* QuobrixResultDescription(int32_t result) {
    const auto* const found = std::find_if(std::begin(kDescriptions), std::end(kDescriptions),
                                           [result](const Description& d) { return d.result == result; });
    return found == std::end(kDescriptions) ? "Unknown result" : found->text;
}

int32_t QuobrixGetSerialNumberAndTime(char* serialNumber, int32_t* loggerTime) {
    if (anyMissing(serialNumber, loggerTime))
        return kBadArgument;
    return ask([&](const Logger& logger) {
        copyText(serialNumber, logger.serial);
        *loggerTime = logger.time() + static_cast<std::int32_t>(faults().drifted(computerTime()));
        return QUOBRIX_OK;
    });
}

int32_t QuobrixConvertSerialNumberToInt(const char* serialNumber, int32_t* number) {
    if (anyMissing(serialNumber, number))
        return kBadArgument;
    return guarded([&]() -> std::int32_t {
        const auto converted = serialToNumber(serialNumber);
        if (!converted)
            return kBadSerialNumber;
        *number = *converted;
        return QUOBRIX_OK;
    });
}

int32_t QuobrixConvertSerialNumberToString(int32_t number, char* serialNumber) {
    if (!serialNumber)
        return kBadArgument;
    return guarded([&]() -> std::int32_t {
        const auto converted = serialToText(number);
        if (!converted)
            return kBadSerialNumber;
        copyText(serialNumber, *converted);
        return QUOBRIX_OK;
    });
}

int32_t QuobrixGetIdentityInformation(char* serialNumber, char* productNumber, int32_t* firmwareMajor,
                                      int32_t* firmwareMinor, int32_t* firmwareBuild, int32_t* bootMajor,
                                      int32_t* bootMinor, int32_t* bootBuild, int32_t* hardwareVersion,
                                      int32_t* notRead) {
    if (anyMissing(serialNumber, productNumber, firmwareMajor, firmwareMinor, firmwareBuild, bootMajor, bootMinor,
                   bootBuild, hardwareVersion, notRead))
        return kBadArgument;
    return ask([&](const Logger& logger) {
        copyText(serialNumber, logger.serial);
        copyText(productNumber, logger.product);
        *firmwareMajor = logger.firmware[0];
        *firmwareMinor = logger.firmware[1];
        *firmwareBuild = logger.firmware[2];
        *bootMajor = logger.bootware[0];
        *bootMinor = logger.bootware[1];
        *bootBuild = logger.bootware[2];
        *hardwareVersion = logger.hardware;
        *notRead = 0;
        return QUOBRIX_OK;
    });
}

int32_t QuobrixGetConfiguration(double* band1, double* band2, double* band3, double* brake1, double* brake2,
                                double* acceleration1, double* acceleration2, int32_t* parameter1, int32_t* parameter2,
                                int32_t* parameter3, int32_t* parameter4, int32_t* parameter5, int32_t* interval1,
                                int32_t* interval2, int32_t* interval3, int32_t* interval4, int32_t* interval5,
                                uint8_t* flags) {
    if (anyMissing(band1, band2, band3, brake1, brake2, acceleration1, acceleration2, parameter1, parameter2,
                   parameter3, parameter4, parameter5, interval1, interval2, interval3, interval4, interval5, flags))
        return kBadArgument;
    return ask([&](const Logger& logger) {
        const Configuration& c = logger.configuration;
        std::tie(*band1, *band2, *band3) = std::tuple_cat(c.bandLimit);
        std::tie(*brake1, *brake2, *acceleration1, *acceleration2) = std::tuple_cat(c.threshold);
        std::tie(*parameter1, *parameter2, *parameter3, *parameter4, *parameter5) = std::tuple_cat(c.parameter);
        std::tie(*interval1, *interval2, *interval3, *interval4, *interval5) = std::tuple_cat(c.interval);
        *flags = logger.flags;
        return QUOBRIX_OK;
    });
}

int32_t QuobrixSetConfiguration(double band1, double band2, double band3, double brake1, double brake2,
                                double acceleration1, double acceleration2, int32_t parameter1, int32_t parameter2,
                                int32_t parameter3, int32_t parameter4, int32_t parameter5, int32_t interval1,
                                int32_t interval2, int32_t interval3, int32_t interval4, int32_t interval5) {
    const double values[] = {band1, band2, band3, brake1, brake2, acceleration1, acceleration2};
    if (!std::all_of(std::begin(values), std::end(values), [](double value) { return std::isfinite(value); }))
        return kBadArgument;
    return tell([&](Logger& logger) {
        logger.configure({.bandLimit = {band1, band2, band3},
                          .threshold = {brake1, brake2, acceleration1, acceleration2},
                          .parameter = {parameter1, parameter2, parameter3, parameter4, parameter5},
                          .interval = {interval1, interval2, interval3, interval4, interval5}});
        return QUOBRIX_OK;
    });
}

int32_t QuobrixSetTime(int32_t time) {
    return tell([&](Logger& logger) {
        const std::int64_t now = computerTime();
        logger.clockOffset = std::int64_t{time} - now - faults().drifted(now);
        (void)logger.forget();
        logger.rememberEvent(kClockAltered);
        return QUOBRIX_OK;
    });
}

int32_t QuobrixEnableLED(uint8_t enable) { return take(enable != 0, &Logger::ledEnabled); }

int32_t QuobrixLEDIsEnabled(uint8_t* enabled) { return answer(enabled, &Logger::ledEnabled); }

int32_t QuobrixEnableVinMode(uint8_t enable) {
    return tell([&](Logger& logger) -> std::int32_t {
        if (!logger.hasVinMode())
            return QUOBRIX_NO_VIN_MODE_ANSWER;
        logger.vinModeEnabled = enable != 0;
        return QUOBRIX_OK;
    });
}

int32_t QuobrixVinModeIsEnabled(uint8_t* enabled) {
    if (!enabled)
        return kBadArgument;
    return ask([&](const Logger& logger) -> std::int32_t {
        if (!logger.hasVinMode())
            return QUOBRIX_NO_VIN_MODE_ANSWER;
        *enabled = logger.vinModeEnabled ? 1 : 0;
        return QUOBRIX_OK;
    });
}

int32_t QuobrixSetBeepVolume(int32_t volume) { return take(volume, &Logger::beepVolume); }

int32_t QuobrixGetBeepVolume(int32_t* volume) { return answer(volume, &Logger::beepVolume); }

int32_t QuobrixBeepIsEnabled(uint8_t* enabled) {
    if (!enabled)
        return kBadArgument;
    return ask([&](const Logger& logger) {
        *enabled = logger.beepVolume != 0 ? 1 : 0;
        return QUOBRIX_OK;
    });
}

int32_t QuobrixSetCarType(int32_t carType) { return take(carType, &Logger::carType); }

int32_t QuobrixGetCarType(int32_t* carType) { return answer(carType, &Logger::carType); }

int32_t QuobrixGetTroubleByte(uint8_t* trouble) { return answer(trouble, &Logger::armed); }

int32_t QuobrixClearLogs(void) {
    return tell([](Logger& logger) {
        (void)logger.forget();
        logger.rememberEvent(kCleared);
        return QUOBRIX_OK;
    });
}

int32_t QuobrixClearTroubleCodes(uint8_t arm) { return take(arm != 0, &Logger::armed); }

int32_t QuobrixClearAccidentLogs(void) {
    return tell([](Logger& logger) -> std::int32_t { return logger.forget(true) ? QUOBRIX_OK : kLogDamaged; });
}

int32_t QuobrixGetMemoryInformation(int32_t* capacity, int32_t* used) {
    if (anyMissing(capacity, used))
        return kBadArgument;
    return ask(
        [&](const Logger& logger) {
            *capacity = static_cast<std::int32_t>(logger.capacity);
            *used = static_cast<std::int32_t>(logger.memory.size());
            return QUOBRIX_OK;
        },
        Memories::Read);
}

/// MODE only says who asks: the simulated logger has nothing more to tell to a diagnostic download.
int32_t QuobrixGetLogBuffer(int32_t mode, void** mainBuffer, void** accidentBuffer1, void** accidentBuffer2) {
    static_cast<void>(mode);
    if (anyMissing(mainBuffer, accidentBuffer1, accidentBuffer2))
        return kBadArgument;
    *mainBuffer = *accidentBuffer1 = *accidentBuffer2 = nullptr;
    bool logged = false;
    const std::int32_t result = ask(
        [&](const Logger& logger) -> std::int32_t {
            const auto images = imagesOf(logger);
            if (!images)
                return kLogDamaged;
            *mainBuffer = mallocCopy(images->main);
            *accidentBuffer1 = mallocCopy(images->accident[0]);
            *accidentBuffer2 = mallocCopy(images->accident[1]);
            logged = logger.logsDownloads;
            return *mainBuffer && *accidentBuffer1 && *accidentBuffer2 ? QUOBRIX_OK : kOutOfMemory;
        },
        Memories::Read);
    if (result != QUOBRIX_OK) {
        for (void** buffer : {mainBuffer, accidentBuffer1, accidentBuffer2}) {
            std::free(*buffer);
            *buffer = nullptr;
        }
        return result;
    }
    // Off unless asked for: a download repeated right away must find nothing new.
    if (logged)
        tell(
            [](Logger& logger) {
                logger.rememberEvent(kDownloaded);
                return QUOBRIX_OK;
            },
            "");
    return QUOBRIX_OK;
}

int32_t QuobrixGetLogBufferFromFile(void** buffer, const char* path) {
    return guarded([&]() -> std::int32_t {
        if (!buffer || !path)
            return kBadArgument;
        *buffer = nullptr;
        const std::size_t kLongestPath = 260;
        const std::filesystem::path file = pathFromUtf8(path);
        std::error_code error;
        if (std::strlen(path) > kLongestPath || !std::filesystem::is_regular_file(file, error))
            return kNotALog;
        const std::uintmax_t size = std::filesystem::file_size(file, error);
        std::ifstream in(file, std::ios::binary);
        Bytes bytes(kImageHeadSize);
        in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (error || !in || imageSize(bytes) != size)
            return kNotALog;
        bytes.resize(static_cast<std::size_t>(size));
        in.read(reinterpret_cast<char*>(bytes.data() + kImageHeadSize),
                static_cast<std::streamsize>(bytes.size() - kImageHeadSize));
        if (!in)
            return kNotALog;
        if (const auto image = openImage(bytes); !image)
            return logResult(image.error());
        *buffer = mallocCopy(bytes);
        return *buffer ? QUOBRIX_OK : kOutOfMemory;
    });
}

int32_t QuobrixGetLogRecords(const void* mainBuffer, QuobrixRecordSet** first, QuobrixRecordSet** second) {
    return parse(mainRecordSets, mainBuffer, first, second);
}

int32_t QuobrixGetAccidentLogRecords(const void* accidentBuffer, QuobrixRecordSet** first, QuobrixRecordSet** second) {
    return parse(accidentRecordSets, accidentBuffer, first, second);
}
