#include "device/download.h"

#include "base/path_text.h"
#include "device/anomalous_vehicles.h"
#include "device/clock_flow.h"
#include "messages/file_messages.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"

#include <cstdlib>

namespace quobrix {
namespace {

// A document of about 1,000 trips: from here on a new file is recommended; from 1,200 on it is required.
constexpr std::size_t kManyObjects = 1000 * TTripLogTable::kObjectsPerTrip;
constexpr std::size_t kMostTrips = 1200;

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

void Download::tell(const Error& error) {
    switch (error.kind) {
    case ErrorKind::Changed:
        context_.prompter.tell(makeMessage(MessageId::DownloadIntoChanged));
        break;
    case ErrorKind::Unsupported:
        context_.prompter.tell(fileMessage(error, FileAction::Save, context_.document.title()));
        break;
    default:
        context_.prompter.tell(makeMessage(MessageId::DownloadIntoDamaged, error.detail));
    }
}

/// Whether the records go into a new document, as far as the present one decides it.
bool Download::wantsNewDocument() {
    const TQuobrixDocument& document = context_.document;
    if (document.isExample()) {
        context_.prompter.tell(makeMessage(MessageId::DownloadIntoExample));
        return true;
    }
    return document.store().objectCount() > kManyObjects &&
           context_.prompter.ask(makeMessage(MessageId::NewFileRecommended)) == Answer::Yes;
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
    if (hooks_.times != Times::AsPersonSays)
        return Clock{hooks_.times == Times::Computer ? static_cast<std::int32_t>(-ahead) : 0, false};
    const int year = text_.zone.toLocal(clocks->logger).year;
    if (year < kYearOfUnsetClock) {
        const auto answer = context_.prompter.chooseAction(
            makeMessage(MessageId::ClockNeverSet), {SourceText("&Synchronize"), SourceText("&Don't Synchronize")});
        return Clock{0, answer == 0u};
    }
    if (year == kYearOfUnsetClock || std::abs(ahead) <= kToleratedDifference)
        return Clock{};
    const std::int64_t difference = std::abs(ahead);
    Settings& settings = context_.settings;
    TimeDifferenceForm form{difference < kSecondsPerDay ? durationText(difference) : text(TextId::MoreThanADay),
                            reasonOf(difference), settings.getInteger(kSynchronizeSection, kValue, 0) != 0,
                            settings.getInteger(kAdjustmentSection, kValue, 0) != 0};
    if (!context_.prompter.fillIn(form))
        return {};
    settings.setInteger(kSynchronizeSection, kValue, form.synchronize ? 1 : 0);
    settings.setInteger(kAdjustmentSection, kValue, form.computer ? 1 : 0);
    return Clock{form.computer ? static_cast<std::int32_t>(-ahead) : 0, form.synchronize};
}

std::optional<MergeResult> Download::run() {
    TQuobrixDocument& document = context_.document;
    Reporter reporter = context_.reporter();
    const bool wantsNew = wantsNewDocument();
    if (wantsNew && hooks_.mayStartNewDocument && !hooks_.mayStartNewDocument())
        return {};
    if (hooks_.mayChangePort && !context_.ports().ensureLogger(true))
        return {};
    if (!wantsNew) // better known before the logger is read than after
        if (const Result<void> fit = canMerge(document); !fit) {
            tell(fit.error());
            return {};
        }
    const std::optional<Clock> clock = checkClock();
    if (!clock)
        return {};

    const bool diagnostic = context_.settings.getInteger("Diagnostics", "Menu", 0) != 0;
    bool anomalous = false;
    KeptDownload download;
    download.shift = clock->shift;
    const auto outcome = context_.calls.get(Reporter::title(LoggerCommand::Download), [&](LockedLogger& logger) {
        auto logs = logger.readLogs(diagnostic ? LogMode::Diagnostic : LogMode::Ordinary);
        download.serialText = logger.status().serialText;
        gaps_ = logger.status().gaps;
        download.time = logger.now();
        download.blocks = std::move(logs.value);
        if (logs.ok() && knowsAnomalousVehicles(logger.identity().value.productNumber)) {
            const Reply<std::int32_t> carType = logger.carType();
            anomalous = carType.ok() && carType.value == kAnomalousVehicleDetected;
        }
        return logger.outcome(logs.code);
    });
    if (!outcome || !reporter.report(LoggerCommand::Download, *outcome))
        return {};
    if (anomalous && hooks_.chooseAnomalousVehicle) {
        context_.prompter.tell(makeMessage(MessageId::AnomalyVehicle));
        hooks_.chooseAnomalousVehicle();
    }
    const LogRecords records = parseRecords(download.blocks);
    // The present document goes only for records that take its place.
    if (wantsNew && !records.empty() && !hooks_.startNewDocument())
        return {};
    const bool holdsSomething = !records.empty() || !records.refused.empty();
    const Result<void> kept = holdsSomething ? recoveries_.keep(download) : Result<void>();
    std::optional<MergeResult> result = merge(download, records, holdsSomething && kept, wantsNew && records.empty());
    if (result) {
        if (!kept && hooks_.times == Times::AsPersonSays) // who is not asked saves it next
            context_.prompter.tell(makeMessage(MessageId::DownloadNotKept, utf8(recoveries_.path())));
        settleLogger(download.serialText, *result, static_cast<bool>(kept), clock->synchronize);
    }
    return result;
}

std::optional<MergeResult> Download::recover(const KeptDownload& download) {
    return merge(download, parseRecords(download.blocks), true, false);
}

/// RECORDS are those of DOWNLOAD. KEPT: it is what the recovery folder has got last. NOTHING: there are no records, and
/// so no document for them.
std::optional<MergeResult> Download::merge(const KeptDownload& download, const LogRecords& records, bool kept,
                                           bool nothing) {
    TQuobrixDocument& document = context_.document;
    const std::size_t objects = document.store().objectCount();
    bool tooLarge = false;
    Result<MergeResult> merged = MergeResult{{}, records.refused, records.unreadable, {}};
    document.edits().group(text(TextId::DownloadStep), [&] {
        if (!nothing)
            merged = mergeRecords(records, document, download.shift);
        if (!merged)
            return EditOutcome{.refusal = merged.error().detail};
        tooLarge =
            objects > kManyObjects && objects / TTripLogTable::kObjectsPerTrip + merged->logs[0].added > kMostTrips;
        if (tooLarge)
            return EditOutcome{.refusal = text(messageSpec(MessageId::NewFileRequired).text)};
        if (merged->changed())
            noteTime(download, document);
        if (const std::string name = context_.settings.getText(kUnidentifiedDriverSection, kDefaultName);
            isDriverName(name))
            document.drivers().nameAll(merged->newKeys.drivers, name); // in rows of this step
        return EditOutcome{};
    });
    if (tooLarge) {
        context_.prompter.tell(makeMessage(MessageId::NewFileRequired));
        return {};
    }
    if (!merged) {
        tell(merged.error());
        return {};
    }
    MergeResult& result = *merged;
    if (kept)
        recoveries_.merged(result.changed() && document.edits().canUndo() ? document.edits().lastStepDone()
                                                                          : std::make_shared<const bool>(true));
    if (document.hasFile() && !document.modified()) // which holds it all
        recoveries_.documentSaved();
    // Of a download that brought nothing there is nothing to take back but the time, which is not shown. A new document
    // that has got nothing stays one that need not be saved.
    if (!result.changed() && document.hasFile() && !nothing)
        document.store().singleton<TDownloadTable>().record(download.serialText,
                                                            static_cast<std::int32_t>(download.time));
    if (hooks_.keysAdded)
        hooks_.keysAdded(result.newKeys);
    for (const UnreadableLog& log : result.unreadable)
        context_.prompter.tell(makeMessage(MessageId::LogsUnreadable, log.name, log.why));
    return std::move(result);
}

/// What is done to the logger once its records are in the document, as far as nothing is lost by it.
void Download::settleLogger(const std::string& serialText, const MergeResult& result, bool kept, bool synchronize) {
    if (!result.unreadable.empty())
        return;
    context_.calls.post([serialText, gaps = gaps_](LockedLogger& logger) { logger.noteLogsCurrent(serialText, gaps); });
    if (!kept || hooks_.times != Times::AsPersonSays)
        return;
    std::uint64_t refused = 0;
    for (const RefusedRecords& records : result.refused)
        refused += records.count;
    const bool cleared = ClearFlow(context_).clearDownloaded(serialText, refused);
    if (synchronize)
        ClockFlow(context_, text_).synchronizeDownloaded(serialText, cleared ? 0 : refused);
}

} // namespace quobrix
