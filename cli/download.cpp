#include "cli/download.h"

#include "base/path_text.h"
#include "cli/logger_connection.h"
#include "cli/option_prompter.h"
#include "cli/writing.h"
#include "device/clock_flow.h"
#include "device/download.h"
#include "device/log_file_import.h"
#include "messages/file_messages.h"
#include "platform/paths.h"
#include "settings/file_settings.h"
#include "summary/summary_log.h"
#include "summary/trip_summaries.h"
#include "texts/text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <chrono>
#include <functional>
#include <thread>

namespace quobrix::cli {
namespace {

/// Opens FILE to be written to, or begins a document that is to become it. Complains if neither is possible: better
/// before the logger is read than after.
bool openForWriting(TQuobrixDocument& document, const std::string& file) {
    const auto failed = [&](const Error& error, FileAction action) {
        complain(fileMessage(error, action, file).text);
        return false;
    };
    if (file.empty())
        return failed({ErrorKind::NotFound, {}}, FileAction::Save);
    const std::filesystem::path path = pathFromUtf8(file);
    if (isExampleName(utf8(path.filename()))) {
        complain(text(TextId::CliExampleTakesNoDownloads, file));
        return false;
    }
    const Result<void> opened = document.open(path, TDocument::Access::Edit);
    if (opened && document.lockedBy()) {
        complain(lockedMessage(document, file).text);
        return false;
    }
    if (opened) {
        complainOfLockFile(document, file);
        return document.readOnly() ? failed(*document.readOnlyReason(), FileAction::Save) : true;
    }
    if (opened.error().kind != ErrorKind::NotFound)
        return failed(opened.error(), FileAction::Open);
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    std::error_code ignored;
    if (std::filesystem::is_directory(folder, ignored))
        return true;
    complain(text(TextId::CliNoFolder, file));
    return false;
}

/// Opens FILE, which another program has made meanwhile, once that lets go of it. Complains if that cannot be added to.
bool openWhatAppeared(TQuobrixDocument& document, const std::string& file) {
    complain(text(TextId::CliMadeMeanwhile, file));
    constexpr std::chrono::milliseconds kLongest(30'000), kPause(50);
    for (auto waited = kPause; waited < kLongest; waited += kPause) {
        if (const Result<void> opened = document.open(pathFromUtf8(file), TDocument::Access::Edit);
            !opened || !document.readOnly() || document.readOnlyReason()->kind != ErrorKind::InUse)
            break;
        std::this_thread::sleep_for(kPause);
    }
    return openForWriting(document, file);
}

/// Saves DOCUMENT to FILE, which it is or is to become. Complains of failures, but not of a file that has appeared
/// there (Exists).
Result<void> save(TQuobrixDocument& document, const std::string& file, OptionPrompter& prompter) {
    const auto failure = [](const Error& error, const std::string& path) {
        return fileMessage(error, FileAction::Save, path).text;
    };
    const std::string backup = utf8(TDocument::backupPath(pathFromUtf8(file)));
    const SaveOptions options{.saveWithoutBackup = [&](const Error& reason) {
        return prompter.ask(makeMessage(MessageId::NoBackup, failure(reason, backup), file)) == Answer::Yes;
    }};
    const Result<void> saved =
        document.hasFile() ? document.save(options) : document.saveAs(pathFromUtf8(file), options);
    if (!saved && saved.error().kind != ErrorKind::Cancelled && saved.error().kind != ErrorKind::Exists)
        complain(failure(saved.error(), file));
    if (const std::optional<Error> problem = document.backupProblem(); saved && problem)
        prompter.tell(makeMessage(MessageId::BackupNotKept, file, failure(*problem, backup)));
    return saved;
}

/// A document that takes records from somewhere, and is saved.
class Intake {
public:
    explicit Intake(const IntakeOptions& options) : options_(options), prompter_(options.yesTo, options.vehicle) {}

    /// Whether the document can be written to; complains if not.
    bool open() { return openForWriting(document_, options_.file); }
    FlowContext context(LoggerCalls& calls) {
        const auto names = [this](const std::string& serialNumber) { return document_.loggers().nameOf(serialNumber); };
        return {calls, prompter_, settings_, noProgress_, names, document_};
    }
    TextContext text() const { return {units_, zone_}; }
    MergeFlow::Hooks hooks() const {
        const auto anotherFile = [this] {
            complain(quobrix::text(TextId::CliNameNewFile, options_.file));
            return false;
        };
        return {.startNewDocument = anotherFile, .mayStartNewDocument = anotherFile};
    }
    Settings& settings() { return settings_; }

    /// Saves what READ puts into the document, which it does again if another program makes the file meanwhile.
    /// SAVED happens each time that there is something to be saved and it is, REPLACED when the document is another.
    void run(const std::function<std::optional<MergeResult>()>& read, const std::function<void()>& saved,
             const std::function<void()>& replaced) {
        do { // what READ reads is still there
            result_ = read();
            // A new document is made for records only.
            makes_ = result_ && (document_.hasFile() || result_->changed());
            saved_ = makes_ ? save(document_, options_.file, prompter_) : Result<void>();
            if (makes_ && saved_)
                saved();
        } while (!saved_ && saved_.error().kind == ErrorKind::Exists && openAnother(replaced));
    }
    /// What was merged, if all of it is in a saved document or there was nothing.
    const MergeResult* safe() const {
        return result_ && saved_ && (makes_ || result_->nothing()) ? &*result_ : nullptr;
    }
    /// Saves what has changed since. Whether that is saved.
    bool saveAgain() {
        return !saved_ || !document_.hasFile() || !document_.modified() || save(document_, options_.file, prompter_);
    }

    /// Tells what came of it. SETTLED: so did what was to follow.
    ExitCode finish(bool settled = true) {
        if (!result_) {
            if (!prompter_.told())
                complain(quobrix::text(TextId::CliNothingDownloaded));
            return kFailed;
        }
        if (!saved_ && saved_.error().kind != ErrorKind::NotDurable)
            return kFailed;
        for (const ShownText& line : result_->refusedLines())
            complain(line);
        if (makes_)
            count();
        Output output;
        output.put(ShownText::asItIs(result_->summary() + "\n"));
        if (!makes_) {
            complain(quobrix::text(TextId::CliNotMade, options_.file));
            return output.finish(!result_->complete() ? kFailed : settled ? kDone : kIncomplete);
        }
        return output.finish(saved_ && result_->complete() && settled ? kDone : kIncomplete,
                             quobrix::text(TextId::CliHasBeenSaved, options_.file));
    }

private:
    /// Counts the trips of the document, which has been saved. Complains if that is not possible; they are counted
    /// whenever that is tried next.
    void count() {
        constexpr std::chrono::milliseconds kLongest(5'000), kPause(50); // another program may have the database
        const std::vector<SummaryRecord> trips = TripSummaries(document_, settings_).records();
        const std::filesystem::path path = summaryDatabasePath();
        if (trips.empty() || path.empty())
            return;
        Result<CountedTrips> counted = Error{ErrorKind::InUse, {}};
        for (auto waited = kPause; !counted && counted.error().kind == ErrorKind::InUse && waited < kLongest;
             waited += kPause) {
            if (waited > kPause)
                std::this_thread::sleep_for(kPause);
            SummaryLog log;
            const Result<void> opened = log.open(path, SummaryDatabase::Access::Write);
            counted = opened ? log.count(trips) : opened.error();
        }
        if (!counted)
            complain(quobrix::text(TextId::CliNotCounted, summaryProblem(counted.error(), path)));
    }
    bool openAnother(const std::function<void()>& replaced) {
        replaced();
        document_.newDocument(); // what was read is read again
        return openWhatAppeared(document_, options_.file);
    }

    const IntakeOptions& options_;
    TQuobrixDocument document_;
    Settings settings_{userSettings()};
    OptionPrompter prompter_;
    ProgressReporter noProgress_;
    const TUnitSystem units_;
    const TimeZone zone_ = TimeZone::local();
    std::optional<MergeResult> result_;
    Result<void> saved_;
    bool makes_ = false;
};

} // namespace

ExitCode download(const DownloadOptions& options) {
    Intake intake(options);
    if (!intake.open())
        return kFailed;
    LoggerConnection connection(intake.settings(), options.port);
    if (!connection.open(LoggerCommand::Download))
        return kFailed;
    DirectCalls calls(connection.link());
    const FlowContext context = intake.context(calls);
    RecoveryFolder recoveries(recoveryFolder());
    const RecoveryFolder::Document held = heldBy(context.document);
    const LogFile log = downloadLog();
    std::string logger;
    intake.run(
        [&] {
            Download flow(context, intake.text(), intake.hooks(), recoveries,
                          {.times = options.computerTime ? Download::Times::Computer : Download::Times::Logger,
                           .mayChangePort = false,
                           .log = [&](const std::string& line) { static_cast<void>(log.append(line)); }});
            std::optional<MergeResult> result = flow.run();
            logger = flow.logger();
            return result;
        },
        [&] { recoveries.documentSaved(&held); }, [&] { recoveries.documentReplaced(); });
    bool settled = true;
    if (const MergeResult* result = intake.safe(); result && (options.clear || options.setClock)) {
        settled = result->unreadable.empty();
        const bool cleared = settled && options.clear && ClearFlow(context).clearSaved(logger, result->refusedCount());
        settled = settled && (cleared || !options.clear);
        if (settled && options.setClock)
            settled =
                ClockFlow(context, intake.text()).synchronizeDownloaded(logger, cleared ? 0 : result->refusedCount());
        settled = intake.saveAgain() && settled;
    }
    connection.close();
    return intake.finish(settled);
}

ExitCode importLogs(const ImportOptions& options) {
    Intake intake(options);
    if (!intake.open())
        return kFailed;
    LoggerConnection connection(intake.settings(), {});
    if (!connection.hasLibrary())
        return kFailed;
    DirectCalls calls(connection.link());
    const FlowContext context = intake.context(calls);
    intake.run([&] { return LogFileImport(context, intake.text(), intake.hooks()).run(pathFromUtf8(options.logs)); },
               [] {}, [] {});
    return intake.finish();
}

} // namespace quobrix::cli
