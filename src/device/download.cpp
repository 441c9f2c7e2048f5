#include "device/download.h"

#include "base/path_text.h"
#include "device/anomalous_vehicles.h"
#include "device/clock_flow.h"
#include "platform/paths.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

namespace quobrix {
namespace {

constexpr std::int64_t kToleratedDifference = 300; // s, between the clocks
constexpr int kYearOfUnsetClock = 2001;            // whose own year tells nothing either way

constexpr const char* kSynchronizeSection = "TTimeDifferenceSynchronizeColumn";
constexpr const char* kAdjustmentSection = "TTimeDifferenceAdjustmentColumn";
constexpr const char* kValue = "Value";

void noteTime(const KeptDownload& download, TQuobrixDocument& document) {
    auto& downloads = document.store().singleton<TDownloadTable>();
    document.edits().changeRows(downloads, {{0, downloads.rowCount()}}, [&] {
        downloads.record(download.serialText, static_cast<std::int32_t>(download.time));
    });
}

/// No clock is as far from another.
std::int32_t shiftOf(std::int64_t seconds) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(seconds, Limits::min(), Limits::max()));
}

/// Bytes that the logger has handed over.
std::size_t sizeOf(const RecordBlocks& blocks) {
    std::size_t size = bytesOf(blocks.trips).size() + bytesOf(blocks.troublesAndActivity).size();
    for (const RecordBlocks::Accidents& accidents : blocks.accidents)
        size += bytesOf(accidents.stops).size() + bytesOf(accidents.samples).size();
    return size;
}

/// What clocks that differ by so many seconds may be due to.
std::string reasonOf(std::int64_t difference) {
    if (difference < 1800)
        return text(TextId::ReasonDrift);
    if (difference < 5400)
        return text(TextId::ReasonZoneOrDaylight);
    if (difference < kSecondsPerDay)
        return text(TextId::ReasonZone);
    return text(TextId::ReasonClock);
}

} // namespace

LogFile downloadLog() {
    const std::filesystem::path data = userDataFolder();
    return LogFile(data.empty() ? data : data / "download.log");
}

RecoveryFolder::Document heldBy(TQuobrixDocument& document) {
    const auto knows = [&document](const std::string& serialText) {
        const TQuobrixNamesTable& loggers = document.loggers();
        return !serialText.empty() && loggers.find(serialText) < loggers.rowCount();
    };
    const auto holds = [&document](const KeptDownload& download) {
        const LogRecords records = parseRecords(download.blocks);
        const Result<Merge> plan = Merge::plan(records, document);
        return plan && records.unreadable.empty() && std::ranges::all_of(logs(), [&](const LogSpec& log) {
                   const MergeCounts counts = plan->counts(log.id);
                   return counts.added == 0 && counts.replaced == 0;
               });
    };
    return {knows, holds};
}

/// What to do about the logger's clock; nothing if the person wants no download.
std::optional<Download::Clock> Download::checkClock() {
    struct Clocks {
        ResultCode code;
        std::int32_t logger;
        std::int64_t computer;
    };
    const auto clocks = context_.calls.get(Reporter::title(LoggerCommand::GetClock), [](LockedLogger& logger) {
        const ResultCode code = logger.probe();
        return Clocks{code, logger.status().loggerTime, logger.now()};
    });
    if (!clocks)
        return {};
    if (clocks->code != QUOBRIX_OK) // reading will tell
        return Clock{};
    const std::int64_t ahead = clocks->logger - clocks->computer;
    if (options_.times != Times::AsPersonSays)
        return Clock{ahead, options_.times == Times::Computer ? shiftOf(-ahead) : 0, false};
    const int year = text_.zone.toLocal(clocks->logger).year;
    if (year < kYearOfUnsetClock) {
        const auto answer = context_.prompter.chooseAction(
            makeMessage(MessageId::ClockNeverSet), {SourceText("&Synchronize"), SourceText("&Don't Synchronize")});
        return Clock{ahead, 0, answer == 0u};
    }
    if (year == kYearOfUnsetClock || std::abs(ahead) <= kToleratedDifference)
        return Clock{ahead, 0, false};
    const std::int64_t difference = std::abs(ahead);
    Settings& settings = context_.settings;
    TimeDifferenceForm form{difference < kSecondsPerDay ? durationText(difference) : text(TextId::MoreThanADay),
                            reasonOf(difference), settings.getInteger(kSynchronizeSection, kValue, 0) != 0,
                            settings.getInteger(kAdjustmentSection, kValue, 0) != 0};
    if (!context_.prompter.fillIn(form))
        return {};
    settings.setInteger(kSynchronizeSection, kValue, form.synchronize ? 1 : 0);
    settings.setInteger(kAdjustmentSection, kValue, form.computer ? 1 : 0);
    return Clock{ahead, form.computer ? shiftOf(-ahead) : 0, form.synchronize};
}

/// Reads the logger; nothing if that was cancelled.
std::optional<Download::Read> Download::read(std::int32_t shift) {
    const bool diagnostic = context_.settings.getInteger("Diagnostics", "Menu", 0) != 0;
    return context_.calls.get(Reporter::title(LoggerCommand::Download), [&](LockedLogger& logger) {
        Read read;
        read.began = logger.now();
        auto logs = logger.readLogs(diagnostic ? LogMode::Diagnostic : LogMode::Ordinary);
        read.outcome = logger.outcome(logs.code);
        read.gaps = logger.status().gaps;
        read.download.serialText = logger.status().serialText;
        read.download.time = logger.now();
        read.download.shift = shift;
        read.download.blocks = std::move(logs.value);
        if (!logs.ok()) // who has cancelled waits for no further call
            return read;
        if (const Reply<LoggerIdentity> identity = logger.identity(); identity.ok())
            read.identity = identity.value;
        if (knowsAnomalousVehicles(read.identity.productNumber)) {
            const Reply<std::int32_t> carType = logger.carType();
            read.anomalous = carType.ok() && carType.value == kAnomalousVehicleDetected;
        }
        return read;
    });
}

std::optional<MergeResult> Download::run() {
    if (!merge_.prepare())
        return {};
    if (options_.mayChangePort && !context_.ports().ensureLogger(true))
        return {};
    const std::optional<Clock> clock = checkClock();
    if (!clock)
        return {};
    const std::optional<Read> read = this->read(clock->shift);
    if (!read)
        return {};
    serialText_ = read->download.serialText;
    const LogRecords records = parseRecords(read->download.blocks);
    if (!context_.reporter().report(LoggerCommand::Download, read->outcome)) {
        log(*read, clock->ahead, records, {});
        return {};
    }
    if (read->anomalous && options_.chooseAnomalousVehicle) {
        context_.prompter.tell(makeMessage(MessageId::AnomalyVehicle));
        options_.chooseAnomalousVehicle();
    }
    if (!merge_.makeRoom(records)) {
        log(*read, clock->ahead, records, {});
        return {};
    }
    const bool holdsSomething = !records.empty() || !records.refused.empty();
    const Result<void> kept = holdsSomething
                                  ? options_.runDisk([&](DiskProgress&) { return recoveries_.keep(read->download); })
                                  : Result<void>();
    std::optional<MergeResult> result =
        merge(read->download, records, holdsSomething && (kept || kept.error().kind == ErrorKind::NotDurable));
    log(*read, clock->ahead, records, result);
    if (result) {
        if (!kept && options_.times == Times::AsPersonSays) // who is not asked saves it next
            context_.prompter.tell(makeMessage(MessageId::DownloadNotKept, utf8(recoveries_.path())));
        const bool current = noteCurrent(*read, *result, static_cast<bool>(kept));
        merge_.tellResult(*result);
        if (current && options_.times == Times::AsPersonSays)
            settleLogger(serialText_, *result, clock->synchronize);
    }
    return result;
}

std::optional<MergeResult> Download::recover(const KeptDownload& download) {
    std::optional<MergeResult> result = merge(download, parseRecords(download.blocks), true);
    if (result)
        merge_.tellResult(*result);
    return result;
}

/// RECORDS are those of DOWNLOAD. KEPT: it is what the recovery folder has got last.
std::optional<MergeResult> Download::merge(const KeptDownload& download, const LogRecords& records, bool kept) {
    TQuobrixDocument& document = context_.document;
    std::optional<MergeResult> result =
        merge_.merge(records, download.shift, TextId::DownloadStep, [&] { noteTime(download, document); });
    if (!result)
        return {};
    if (kept)
        recoveries_.merged(result->changed() && document.edits().canUndo() ? document.edits().lastStepDone()
                                                                           : std::make_shared<const bool>(true));
    if (!document.modified() && document.fileIsUnchanged()) // which holds it all
        recoveries_.documentSaved();
    // Of a download that brought nothing there is nothing to take back but the time, which is not shown. A new document
    // that has got nothing stays one that need not be saved.
    // Rows come with steps only, as long as there are any to be taken back.
    if (!result->changed() && document.hasFile() && !merge_.leavesDocument(records))
        if (auto& downloads = document.store().singleton<TDownloadTable>();
            downloads.knows(download.serialText) || !(document.edits().canUndo() || document.edits().canRedo()))
            downloads.record(download.serialText, static_cast<std::int32_t>(download.time));
    return result;
}

/// Notes that the logger holds nothing new, if nothing would be lost with its memory. KEPT: in a recovery file, or
/// there was nothing to be kept.
bool Download::noteCurrent(const Read& read, const MergeResult& result, bool kept) {
    const bool asks = options_.times == Times::AsPersonSays;
    if (!result.unreadable.empty() || (asks && !kept)) // what is in memory only is not cleared unasked by any command
        return false;
    context_.calls.post([serialText = read.download.serialText, gaps = read.gaps](LockedLogger& logger) {
        logger.noteLogsCurrent(serialText, gaps);
    });
    return true;
}

/// What is done to the logger once its records are in the document. Setting its clock clears it, too, so that nobody is
/// asked about that besides.
void Download::settleLogger(const std::string& serialText, const MergeResult& result, bool synchronize) {
    if (synchronize)
        ClockFlow(context_, text_).synchronizeDownloaded(serialText, result.refusedCount());
    else if (!result.nothing())
        ClearFlow(context_).clearDownloaded(serialText, result.refusedCount());
}

/// In the log that people and support read, always in the same words. RESULT: nothing if the document is as it was.
void Download::log(const Read& read, std::int64_t clockAhead, const LogRecords& records,
                   const std::optional<MergeResult>& result) const {
    if (!options_.log)
        return;
    const std::array found{records.trips.size(), records.troubles.size(), records.activities.size(),
                           records.stops.size()}; // by LogId
    static_assert(found.size() == kLogCount);
    std::string counts;
    for (const LogSpec& spec : logs()) {
        const auto log = static_cast<std::size_t>(spec.id);
        counts += fmt::format("{}{} {} of {}", counts.empty() ? "" : ", ", spec.records.english(),
                              result ? result->logs[log].added : 0, found[log]);
    }
    const Version& firmware = read.identity.firmware;
    const std::string version = read.identity.serialNumber.empty()
                                    ? "unknown"
                                    : fmt::format("{}.{:02}.{}", firmware.major, firmware.minor, firmware.build);
    std::string outcome = "done";
    if (!read.outcome.ok())
        outcome = fmt::format("failed: {}", read.outcome.description);
    else if (!result)
        outcome = "not added to the document";
    else if (!result->complete())
        outcome =
            fmt::format("done, {} refused, {} parts unreadable", result->refusedCount(), result->unreadable.size());
    const DateTime time = text_.zone.toLocal(static_cast<std::int32_t>(read.download.time));
    options_.log(fmt::format("{}; {}; firmware {}; {}; new: {}; {} bytes; clock {:+} s; {} s; {}", logTimeText(time),
                             read.download.serialText, version, read.outcome.port, counts, sizeOf(read.download.blocks),
                             clockAhead, read.download.time - read.began, outcome));
}

} // namespace quobrix
