#include "device/clear_flow.h"
#include "device/clock_flow.h"
#include "device/download.h"
#include "device/polling_thread.h"
#include "device/switch_flow.h"
#include "support/fake_logger_library.h"
#include "support/record_set_builder.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <random>
#include <thread>
#include <utility>

namespace quobrix::testing {
namespace {

using Random = std::mt19937;

unsigned below(unsigned n, Random& random) { return static_cast<unsigned>(random() % n); }
bool oneIn(Random& random, unsigned n) { return below(n, random) == 0; }

/// Hands each call to the worker and waits for it, as the window does. Some are cancelled meanwhile.
class CancellingCalls final : public LoggerCalls {
public:
    CancellingCalls(TPollingThread& worker, Random& random) : worker_(worker), random_(random) {}

    bool run(const CallTitle& title, const Call& call) override {
        CallProgress progress;
        std::promise<void> done;
        const bool taken = worker_.submit(
            [&](LockedLogger& logger) {
                logger.follow(progress);
                if (!progress.cancelled)
                    call(logger);
            },
            [&] { done.set_value(); });
        if (title.cancellable && oneIn(random_, 8))
            progress.cancelled = true;
        if (taken)
            done.get_future().wait();
        return taken && !progress.cancelled;
    }
    void post(Call call) override { worker_.submit(std::move(call)); }
    void suspendPolling() override { worker_.suspend(); }
    void resumePolling() override { worker_.resume(); }

private:
    TPollingThread& worker_;
    Random& random_;
};

class RandomPrompter final : public Prompter {
public:
    explicit RandomPrompter(Random& random) : random_(random) {}

    Answer ask(const Message&) override { return oneIn(random_, 2) ? Answer::Yes : Answer::No; }
    std::optional<std::size_t> chooseAction(const Message&, const std::vector<SourceText>& actions) override {
        return random_() % actions.size();
    }
    void tell(const Message&) override {}
    std::optional<std::size_t> choose(SourceText, const std::vector<std::string>& choices, std::size_t) override {
        return oneIn(random_, 3) ? std::nullopt : std::optional<std::size_t>(random_() % choices.size());
    }
    bool fillIn(SerialPortForm& form) override {
        for (unsigned tries = below(3, random_); tries > 0; --tries) {
            if (oneIn(random_, 3))
                form.scan();
            else if (form.choose(form.ports[random_() % form.ports.size()]))
                return true;
        }
        return false;
    }
    bool fillIn(AlarmForm& form) override { return form.volume = static_cast<std::int32_t>(random_() % 11), true; }
    bool fillIn(DateAndTimeForm&) override { return oneIn(random_, 2); }
    bool fillIn(TimeDifferenceForm& form) override { return form.synchronize = oneIn(random_, 2), true; }
    bool fillIn(UnidentifiedVehicleForm&) override { return false; }

private:
    Random& random_;
};

/// How the logger and its port go wrong from now on, or do not any more.
void upset(FakeLoggerLibrary& fake, std::int64_t& now, Random& random) {
    constexpr const char* kFunctions[] = {
#define ENTRY(name) #name,
#include "device/logger_library.def"
#undef ENTRY
    };
    constexpr ResultCode kResults[] = {QUOBRIX_TIMEOUT,
                                       QUOBRIX_PORT_IN_USE,
                                       QUOBRIX_PORT_DOES_NOT_EXIST,
                                       QUOBRIX_PORT_NOT_OPENED,
                                       QUOBRIX_NOT_REPORTED,
                                       -297,
                                       -7};
    fake.results.clear();
    fake.portProblems.clear();
    fake.loggers.clear();
    if (!oneIn(random, 4))
        fake.loggers[oneIn(random, 3) ? "COM3" : "COM1"] = oneIn(random, 5) ? "K-0043-B" : "K-0042-B";
    for (unsigned count = below(3, random); count > 0; --count)
        fake.results[kFunctions[random() % std::size(kFunctions)]] = kResults[random() % std::size(kResults)];
    if (oneIn(random, 5))
        fake.portProblems["COM1"] = QUOBRIX_PORT_DOES_NOT_EXIST; // it has vanished
    now += random() % 40;
    fake.loggerTime = static_cast<std::int32_t>(now + static_cast<std::int64_t>(random() % 800) - 400);
}

// The window's threads through many short lives: whatever fails, is slow, is cancelled or vanishes, every life ends,
// and no call overlaps another one (which the fake library checks, and a thread sanitizer more).
TEST(WorkerLives, EndWhateverHappens) {
    const char* const wanted = std::getenv("QUOBRIX_LIVES");
    const int lives = wanted ? std::atoi(wanted) : 500;
    for (int life = 0; life < lives; ++life) {
        SCOPED_TRACE(life);
        Random random(static_cast<unsigned>(life));
        const test::TemporaryFolder folder;
        FakeLoggerLibrary fake;
        fake.trips = RecordSetBytes().add(plainTrip(), {10, 20, 30}).take();
        fake.troubles = RecordSetBytes().add(plainTrouble()).take();
        std::int64_t now = fake.loggerTime;
        Random slowness(static_cast<unsigned>(life) + 1);
        fake.during = [&](const std::string&) {
            if (oneIn(slowness, 16))
                std::this_thread::sleep_for(std::chrono::microseconds(slowness() % 300));
        };
        LoggerLink link(FakeLoggerLibrary::library(), [&now] { return now; }); // read under the device lock
        TQuobrixDocument document;
        Settings settings(std::make_unique<MemorySettings>());
        ProgressReporter progress;
        RandomPrompter prompter(random);
        RecoveryFolder recoveries(folder / "kept");
        const TUnitSystem units;
        const TimeZone zone;
        TPollingThread worker(link, [](const auto&) {},
                              {std::chrono::milliseconds(random() % 2), std::chrono::milliseconds(0)});
        CancellingCalls calls(worker, random);
        const FlowContext context{
            calls, prompter, settings, progress, [](const std::string&) { return std::string(); }, document};
        const TextContext text{units, zone};
        bool polling = false;
        for (unsigned step = 3 + below(5, random); step > 0; --step) {
            worker.submit([&, seed = random()](LockedLogger&) {
                Random next(seed);
                upset(fake, now, next);
            });
            switch (random() % 9) {
            case 0:
                context.ports().scan();
                break;
            case 1:
                context.ports().choosePort();
                break;
            case 2:
                if (!std::exchange(polling, true))
                    worker.resume();
                break;
            case 3:
                ClearFlow(context).clearMemory();
                break;
            case 4:
                ClockFlow(context, text).synchronize();
                break;
            case 5:
                SwitchFlow(context).toggleLed();
                break;
            case 6:
                SwitchFlow(context).setAlarm();
                break;
            default:
                Download(context, text, {}, recoveries, {}).run();
            }
            EXPECT_LE(document.trips().rowCount(), 2u); // that of one logger or of two, never doubled
        }
        worker.stop();
    }
}

} // namespace
} // namespace quobrix::testing
