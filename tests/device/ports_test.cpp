#include "device/ports.h"

#include "support/fake_logger_library.h"
#include "support/scripted_prompter.h"

#include <gtest/gtest.h>
#include <memory>

namespace quobrix::testing {
namespace {

class Ports : public ::testing::Test {
protected:
    Ports() { settings_.setText("Serial Ports", "Default", "COM3"); }

    PortFlows flows(Prompter& prompter) {
        return {calls_, prompter, settings_,
                [](const std::string& serial) { return serial == "K-0007-B" ? "Van" : ""; }};
    }
    std::vector<std::string> opened() const {
        std::vector<std::string> ports;
        for (const std::string& call : fake_.calls)
            if (call.starts_with("OpenPort "))
                ports.push_back(call.substr(9));
        return ports;
    }
    LoggerStatus status() { return LockedLogger(link_).status(); }

    FakeLoggerLibrary fake_;
    Settings settings_{std::make_unique<MemorySettings>()};
    LoggerLink link_{FakeLoggerLibrary::library()};
    DirectCalls calls_{link_};
};

TEST_F(Ports, FindsTheLoggerOnTheDefaultPort) {
    fake_.loggers = {{"COM1", "K-0001-B"}, {"COM3", "K-0042-B"}};
    ScriptedPrompter silent;
    EXPECT_EQ(flows(silent).scan(), ScanResult::Found);
    EXPECT_EQ(opened(), std::vector<std::string>{"COM3"});
    EXPECT_EQ(status().serialNumber, 42);
    EXPECT_EQ(defaultPort(settings_), "COM3");
}

TEST_F(Ports, AnotherPortIsOffered) {
    fake_.loggers = {{"COM1", "K-0007-B"}};
    ScriptedPrompter prompter{{MessageId::PortDetected, Answer::Yes}};
    EXPECT_EQ(flows(prompter).scan(), ScanResult::Found);
    EXPECT_EQ(prompter.shown[0], "A Quobrix (Van) was detected on COM1.\n\nUse COM1 instead of COM3?");
    EXPECT_EQ(defaultPort(settings_), "COM1");
    EXPECT_EQ(fake_.openPort, "COM1");
}

TEST_F(Ports, ARefusedPortIsPassedOver) {
    fake_.loggers = {{"COM1", "K-0042-B"}};
    ScriptedPrompter prompter{{MessageId::PortDetected, Answer::No}};
    EXPECT_EQ(flows(prompter).scan(), ScanResult::Refused);
    EXPECT_EQ(prompter.shown[0], "A Quobrix (K-0042-B) was detected on COM1.\n\nUse COM1 instead of COM3?");
    EXPECT_EQ(opened(), (std::vector<std::string>{"COM3", "COM1", "COM2", "COM4", "COM5", "COM6", "COM7", "COM8",
                                                  "COM9", "COM10", "COM3"}));
    EXPECT_EQ(fake_.openPort, "COM3") << "a time-out leaves it open: the logger may come";
    EXPECT_EQ(status().probe, QUOBRIX_TIMEOUT);
    fake_.portProblems["COM3"] = QUOBRIX_PORT_IN_USE;
    ScriptedPrompter again{{MessageId::PortDetected, Answer::No}};
    EXPECT_EQ(flows(again).scan(), ScanResult::Refused);
    EXPECT_EQ(portStatusText(status(), {}), "COM3 Is In Use") << "not what was found on COM1";
    EXPECT_EQ(defaultPort(settings_), "COM3");
}

TEST_F(Ports, NothingFoundOffersTheChoiceOfAPort) {
    for (const char* port : kPortNames)
        fake_.portProblems[port] = QUOBRIX_PORT_DOES_NOT_EXIST;
    fake_.portProblems["COM5"] = QUOBRIX_PORT_IN_USE;
    fake_.portProblems["COM6"] = -42;
    fake_.portProblems.erase("COM8");
    fake_.portProblems.erase("COM9");
    fake_.loggers = {{"COM9", "K-0042-B"}};
    ScriptedPrompter prompter{{{MessageId::PortDetected, Answer::No},
                               {MessageId::NoPortDetected, Answer::Yes},
                               {MessageId::PortDoesNotExist},
                               {MessageId::PortInUse},
                               {MessageId::PortError},
                               {MessageId::UseSerialPortAnyway, Answer::No}},
                              {"COM4", "COM5", "COM6", "COM8", "COM9"}};
    EXPECT_TRUE(flows(prompter).scanOrChoose());
    EXPECT_EQ(prompter.presets, (std::vector<std::string>{"COM3", "COM4", "COM5", "COM6", "COM8"}));
    EXPECT_EQ(prompter.shown[4], "An error (error -42) was encountered\nwhile attempting to open this serial port.\n\n"
                                 "Please select a different port.");
    EXPECT_EQ(defaultPort(settings_), "COM9");
}

TEST_F(Ports, AScanFromWithinTheChoice) {
    LockedLogger(link_).openPort("COM3");
    fake_.loggers = {{"COM7", "K-0042-B"}};
    fake_.portProblems["COM8"] = QUOBRIX_PORT_IN_USE;
    ScriptedPrompter prompter{{{MessageId::PortInUse},
                               {MessageId::PortDetected, Answer::No},
                               {MessageId::PortDetected},
                               {MessageId::PortInUse}},
                              {"COM8", "Scan", "Scan", "COM8"}};
    EXPECT_FALSE(flows(prompter).choosePort()) << "cancelled";
    EXPECT_EQ(prompter.presets, (std::vector<std::string>{"COM3", "COM8", "COM8", "COM7", "COM8"}));
    EXPECT_EQ(prompter.shown[2], "No other Quobrix was found. The port is still COM3.");
    EXPECT_EQ(prompter.shown[4], "A Quobrix (K-0042-B) was found on COM7.");
    EXPECT_EQ(defaultPort(settings_), "COM7");
    EXPECT_EQ(status().port, "COM7") << "what the scan has found stays";

    fake_.loggers.clear();
    ScriptedPrompter again{{}, {"Scan"}};
    EXPECT_FALSE(flows(again).choosePort());
    EXPECT_EQ(again.shown[0], "No Quobrix was found on any of the ports.");
}

TEST_F(Ports, AnEmptyPortMayBeChosen) {
    ScriptedPrompter prompter{{{MessageId::UseSerialPortAnyway, Answer::Yes}}, {"COM2"}};
    EXPECT_TRUE(flows(prompter).choosePort());
    EXPECT_EQ(defaultPort(settings_), "COM2");
    EXPECT_EQ(fake_.openPort, "COM2");
}

TEST_F(Ports, CancellingTheChoiceChangesNothing) {
    ScriptedPrompter prompter;
    EXPECT_FALSE(flows(prompter).choosePort());
    EXPECT_EQ(defaultPort(settings_), "COM3");
    EXPECT_TRUE(fake_.calls.empty());

    LockedLogger(link_).openPort("COM3");
    fake_.portProblems["COM4"] = QUOBRIX_PORT_IN_USE;
    ScriptedPrompter failing{{{MessageId::PortInUse}}, {"COM4"}};
    EXPECT_FALSE(flows(failing).choosePort());
    EXPECT_EQ(status().port, "COM3") << "the worker opens it again";
    EXPECT_FALSE(status().portOpen);
}

TEST_F(Ports, EnsuringALoggerScansFirst) {
    const std::size_t kEveryPortAndTheDefaultAgain = kPortNames.size() + 1;
    ScriptedPrompter prompter{{MessageId::CannotConnect, Answer::No}};
    EXPECT_FALSE(flows(prompter).ensureLogger(false));
    EXPECT_TRUE(opened().empty());
    EXPECT_FALSE(flows(prompter).ensureLogger(true));
    EXPECT_EQ(opened().size(), kEveryPortAndTheDefaultAgain);

    fake_.loggers = {{"COM6", "K-0042-B"}}; // plugged in meanwhile
    ScriptedPrompter refusing{{MessageId::PortDetected, Answer::No}};
    EXPECT_FALSE(flows(refusing).ensureLogger(true)) << "\"no Quobrix has been detected\" would not be true";
    ScriptedPrompter accepting{{MessageId::PortDetected, Answer::Yes}};
    EXPECT_TRUE(flows(accepting).ensureLogger(true));
    ScriptedPrompter silent;
    EXPECT_TRUE(flows(silent).ensureLogger(true));

    fake_.loggers.clear();
    ScriptedPrompter choosing{{{MessageId::CannotConnect, Answer::Yes}, {MessageId::UseSerialPortAnyway, Answer::Yes}},
                              {"COM9"}};
    EXPECT_FALSE(flows(choosing).ensureLogger(true));
    EXPECT_EQ(defaultPort(settings_), "COM9");
}

TEST_F(Ports, AMissingLibraryIsTold) {
    LoggerLink link(Error{ErrorKind::NotFound, ShownText::asItIs("There is none.")});
    DirectCalls calls(link);
    ScriptedPrompter prompter{{MessageId::LibraryMissing}, {MessageId::LibraryMissing}};
    PortFlows flows(calls, prompter, settings_, [](const std::string&) { return ""; });
    EXPECT_FALSE(flows.scanOrChoose());
    EXPECT_FALSE(flows.ensureLogger(false));
    EXPECT_FALSE(flows.ensureLogger(true));
}

TEST(PortStatus, PutsTheLatestProbeInWords) {
    const LoggerNames names = [](const std::string& serial) { return serial == "K-0007-B" ? "Van" : ""; };
    LoggerStatus status;
    status.port = "COM3";
    status.serialText = "K-0042-B";
    status.probeDescription = "odd";
    const auto text = [&](ResultCode probe) {
        status.probe = probe;
        return portStatusText(status, names);
    };
    EXPECT_EQ(text(QUOBRIX_OK), "Quobrix Detected on COM3 : K-0042-B");
    status.serialText = "K-0007-B";
    EXPECT_EQ(text(QUOBRIX_OK), "Quobrix Detected on COM3 : Van");
    EXPECT_EQ(text(QUOBRIX_TIMEOUT), "No Quobrix Detected on COM3");
    EXPECT_EQ(text(QUOBRIX_PORT_IN_USE), "COM3 Is In Use");
    EXPECT_EQ(text(QUOBRIX_PORT_NOT_OPENED), "COM3 Port Not Opened");
    EXPECT_EQ(text(QUOBRIX_PORT_DOES_NOT_EXIST), "COM3 Does Not Exist");
    EXPECT_EQ(text(-5), "odd");
    EXPECT_EQ(portStatusText({}, names), "No Port Opened") << "before the first one";
}

} // namespace
} // namespace quobrix::testing
