#include "support/fake_logger_library.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>

namespace quobrix::testing {
namespace {

FakeLoggerLibrary* current = nullptr;

QuobrixRecordSet* allocated(const std::vector<std::uint8_t>& set) {
    const QuobrixRecordSet none{sizeof(QuobrixRecordSet), 0};
    void* block = std::malloc(std::max(set.size(), sizeof none));
    std::memcpy(block, set.empty() ? static_cast<const void*>(&none) : set.data(),
                set.empty() ? sizeof none : set.size());
    return static_cast<QuobrixRecordSet*>(block);
}

} // namespace

FakeLoggerLibrary::FakeLoggerLibrary() {
    EXPECT_EQ(current, nullptr);
    current = this;
}

FakeLoggerLibrary::~FakeLoggerLibrary() { current = nullptr; }

int FakeLoggerLibrary::count(const std::string& call) const {
    return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

ResultCode FakeLoggerLibrary::note(const std::string& function, const std::string& argument) {
    EXPECT_EQ(++inside_, 1) << function << " while another call is under way";
    calls.push_back(argument.empty() ? function : function + " " + argument);
    if (during)
        during(function);
    --inside_;
    const auto result = results.find(function);
    return result == results.end() ? QUOBRIX_OK : result->second;
}

ResultCode FakeLoggerLibrary::presence() const {
    if (openPort.empty())
        return QUOBRIX_PORT_NOT_OPENED;
    return loggers.count(openPort) ? QUOBRIX_OK : QUOBRIX_TIMEOUT;
}

ResultCode FakeLoggerLibrary::command(const std::string& function, const std::string& argument) {
    const ResultCode scripted = note(function, argument);
    return scripted != QUOBRIX_OK ? scripted : presence();
}

struct FakeFunctions {
    static std::int32_t openPort(const char* port) {
        FakeLoggerLibrary& fake = *current;
        ResultCode code = fake.note("OpenPort", port);
        EXPECT_EQ(fake.openPort, "") << "a port was left open";
        if (const auto problem = fake.portProblems.find(port); problem != fake.portProblems.end())
            code = problem->second;
        fake.openPort = code == QUOBRIX_OK ? port : "";
        return code;
    }
    static std::int32_t closePort() {
        current->openPort.clear();
        return current->note("ClosePort");
    }
    static const char* describe(std::int32_t code) {
        static std::string text;
        current->note("ResultDescription");
        text = "error " + std::to_string(code);
        return text.c_str();
    }
    static std::int32_t serialAndTime(char* serial, std::int32_t* time) {
        const ResultCode code = current->command("GetSerialNumberAndTime");
        if (code == QUOBRIX_OK) {
            std::strcpy(serial, current->loggers[current->openPort].c_str());
            *time = current->loggerTime;
        }
        return code;
    }
    static std::int32_t serialToInt(const char* serial, std::int32_t* number) {
        *number = std::atoi(std::string(serial, 8).substr(2, 4).c_str());
        return current->note("ConvertSerialNumberToInt", serial);
    }
    static std::int32_t identity(char* serial, char* product, std::int32_t* major, std::int32_t*, std::int32_t*,
                                 std::int32_t*, std::int32_t*, std::int32_t*, std::int32_t*, std::int32_t*) {
        const auto present = current->loggers.find(current->openPort);
        std::strcpy(serial, present == current->loggers.end() ? "K-0042-B" : present->second.c_str());
        std::strcpy(product, current->product.c_str());
        *major = 3;
        return current->command("GetIdentityInformation");
    }
    static std::int32_t getConfiguration(double* band1, double* band2, double* band3, double* brake1, double* brake2,
                                         double* acceleration1, double* acceleration2, std::int32_t* parameter1,
                                         std::int32_t* parameter2, std::int32_t* parameter3, std::int32_t* parameter4,
                                         std::int32_t* parameter5, std::int32_t* interval1, std::int32_t* interval2,
                                         std::int32_t* interval3, std::int32_t* interval4, std::int32_t* interval5,
                                         std::uint8_t* flags) {
        const LoggerConfiguration& c = current->configuration;
        std::tie(*band1, *band2, *band3) = std::tuple_cat(c.bandLimits);
        std::tie(*brake1, *brake2) = std::tuple_cat(c.brakeThresholds);
        std::tie(*acceleration1, *acceleration2) = std::tuple_cat(c.accelerationThresholds);
        std::tie(*parameter1, *parameter2, *parameter3, *parameter4, *parameter5) = std::tuple_cat(c.parameters);
        std::tie(*interval1, *interval2, *interval3, *interval4, *interval5) = std::tuple_cat(c.intervals);
        *flags = current->flags;
        return current->command("GetConfiguration");
    }
    static std::int32_t setConfiguration(double band1, double band2, double band3, double brake1, double brake2,
                                         double acceleration1, double acceleration2, std::int32_t parameter1,
                                         std::int32_t parameter2, std::int32_t parameter3, std::int32_t parameter4,
                                         std::int32_t parameter5, std::int32_t interval1, std::int32_t interval2,
                                         std::int32_t interval3, std::int32_t interval4, std::int32_t interval5) {
        const ResultCode code = current->command("SetConfiguration");
        if (code != QUOBRIX_OK)
            return code;
        current->configuration = {{band1, band2, band3},
                                  {brake1, brake2},
                                  {acceleration1, acceleration2},
                                  {parameter1, parameter2, parameter3, parameter4, parameter5},
                                  {interval1, interval2, interval3, interval4, interval5}};
        if (current->alters)
            current->alters(current->configuration);
        return code;
    }
    static std::int32_t setTime(std::int32_t time) { return current->command("SetTime", std::to_string(time)); }
    /// A value is set, and is what the logger tells from then on, if nothing comes in between.
    template <class T, class V>
    static std::int32_t set(const char* function, T FakeLoggerLibrary::*member, V value) {
        const ResultCode code = current->command(function, std::to_string(value));
        if (code == QUOBRIX_OK)
            current->*member = static_cast<T>(value);
        return code;
    }
    template <class Out, class T>
    static std::int32_t get(const char* function, T FakeLoggerLibrary::*member, Out* out) {
        const ResultCode code = current->command(function);
        *out = static_cast<Out>(current->*member);
        return code;
    }
    static std::int32_t enableLed(std::uint8_t on) { return set("EnableLED", &FakeLoggerLibrary::led, on); }
    static std::int32_t led(std::uint8_t* on) { return get("LEDIsEnabled", &FakeLoggerLibrary::led, on); }
    static std::int32_t enableVinMode(std::uint8_t on) { return set("EnableVinMode", &FakeLoggerLibrary::vinMode, on); }
    static std::int32_t vinMode(std::uint8_t* on) { return get("VinModeIsEnabled", &FakeLoggerLibrary::vinMode, on); }
    static std::int32_t setVolume(std::int32_t volume) {
        return set("SetBeepVolume", &FakeLoggerLibrary::volume, volume);
    }
    static std::int32_t volume(std::int32_t* volume) {
        return get("GetBeepVolume", &FakeLoggerLibrary::volume, volume);
    }
    static std::int32_t setCarType(std::int32_t type) { return set("SetCarType", &FakeLoggerLibrary::carType, type); }
    static std::int32_t carType(std::int32_t* type) { return get("GetCarType", &FakeLoggerLibrary::carType, type); }
    static std::int32_t arm(std::uint8_t on) { return set("ClearTroubleCodes", &FakeLoggerLibrary::armed, on); }
    static std::int32_t trouble(std::uint8_t* on) { return get("GetTroubleByte", &FakeLoggerLibrary::armed, on); }
    static std::int32_t memory(std::int32_t* capacity, std::int32_t* used) {
        *capacity = current->memory.capacity;
        *used = current->memory.used;
        return current->command("GetMemoryInformation");
    }
    static std::int32_t clearLogs() { return current->command("ClearLogs"); }
    static std::int32_t clearAccidents() { return current->command("ClearAccidentLogs"); }
    static std::int32_t logBuffer(std::int32_t mode, void** main, void** accident1, void** accident2) {
        if (current->handsOutBuffers)
            for (void** buffer : {main, accident1, accident2})
                *buffer = current->handsOutOneBlock && buffer != main ? *main : std::malloc(16);
        current->accidentLog_ = 0;
        return current->command("GetLogBuffer", std::to_string(mode));
    }
    static std::int32_t logFile(void** buffer, const char* path) {
        *buffer = std::malloc(16);
        return current->note("GetLogBufferFromFile", path);
    }
    static std::int32_t logRecords(const void*, QuobrixRecordSet** first, QuobrixRecordSet** second) {
        *first = allocated(current->trips);
        *second = current->handsOutOneBlock ? *first : allocated(current->troubles);
        return current->note("GetLogRecords");
    }
    static std::int32_t accidentRecords(const void*, QuobrixRecordSet** first, QuobrixRecordSet** second) {
        *first = allocated(current->stops);
        *second = allocated(current->stopSamples);
        const ResultCode code = current->note("GetAccidentLogRecords");
        const auto ofThisLog =
            current->results.find("GetAccidentLogRecords " + std::to_string(++current->accidentLog_));
        return ofThisLog == current->results.end() ? code : ofThisLog->second;
    }
};

LoggerLibrary FakeLoggerLibrary::library() {
    LoggerFunctions functions = absentLoggerFunctions();
    functions.OpenPort = FakeFunctions::openPort;
    functions.ClosePort = FakeFunctions::closePort;
    functions.ResultDescription = FakeFunctions::describe;
    functions.GetSerialNumberAndTime = FakeFunctions::serialAndTime;
    functions.ConvertSerialNumberToInt = FakeFunctions::serialToInt;
    functions.GetIdentityInformation = FakeFunctions::identity;
    functions.GetConfiguration = FakeFunctions::getConfiguration;
    functions.SetConfiguration = FakeFunctions::setConfiguration;
    functions.SetTime = FakeFunctions::setTime;
    functions.EnableLED = FakeFunctions::enableLed;
    functions.LEDIsEnabled = FakeFunctions::led;
    functions.EnableVinMode = FakeFunctions::enableVinMode;
    functions.VinModeIsEnabled = FakeFunctions::vinMode;
    functions.SetBeepVolume = FakeFunctions::setVolume;
    functions.GetBeepVolume = FakeFunctions::volume;
    functions.SetCarType = FakeFunctions::setCarType;
    functions.GetCarType = FakeFunctions::carType;
    functions.ClearTroubleCodes = FakeFunctions::arm;
    functions.GetTroubleByte = FakeFunctions::trouble;
    functions.GetMemoryInformation = FakeFunctions::memory;
    functions.ClearLogs = FakeFunctions::clearLogs;
    functions.ClearAccidentLogs = FakeFunctions::clearAccidents;
    functions.GetLogBuffer = FakeFunctions::logBuffer;
    functions.GetLogBufferFromFile = FakeFunctions::logFile;
    functions.GetLogRecords = FakeFunctions::logRecords;
    functions.GetAccidentLogRecords = FakeFunctions::accidentRecords;
    return {functions, nullptr};
}

} // namespace quobrix::testing
