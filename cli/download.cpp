#include "cli/download.h"

#include "base/path_text.h"
#include "cli/logger_connection.h"
#include "cli/option_prompter.h"
#include "cli/writing.h"
#include "device/download.h"
#include "messages/file_messages.h"
#include "platform/paths.h"
#include "settings/file_settings.h"
#include "texts/text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <chrono>
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

} // namespace

ExitCode download(const DownloadOptions& options) {
    TQuobrixDocument document;
    if (!openForWriting(document, options.file))
        return kFailed;
    Settings settings(userSettings());
    LoggerConnection connection(settings, options.port);
    if (!connection.open(LoggerCommand::Download))
        return kFailed;
    DirectCalls calls(connection.link());

    OptionPrompter prompter(options.yesTo);
    ProgressReporter noProgress;
    const auto names = [&](const std::string& serialNumber) { return document.loggers().nameOf(serialNumber); };
    const auto anotherFile = [&] {
        complain(text(TextId::CliNameNewFile, options.file));
        return false;
    };
    RecoveryFolder recoveries(recoveryFolder());
    const TUnitSystem units;
    const TimeZone zone = TimeZone::local();
    std::optional<MergeResult> result;
    Result<void> saved;
    bool makes = false;
    do { // what the logger holds is still there
        result = Download({calls, prompter, settings, noProgress, names, document}, recoveries, {units, zone},
                          {.startNewDocument = anotherFile,
                           .mayStartNewDocument = anotherFile,
                           .mayChangePort = false,
                           .times = Download::Times::Logger})
                     .run();
        // A new document is made for records only.
        makes = result && (document.hasFile() || result->changed());
        saved = makes ? save(document, options.file, prompter) : Result<void>();
        if (saved)
            recoveries.documentSaved();
    } while (!saved && saved.error().kind == ErrorKind::Exists && openWhatAppeared(document, options.file));
    connection.close();
    if (!result) {
        if (!prompter.told())
            complain(text(TextId::CliNothingDownloaded));
        return kFailed;
    }
    if (!saved && saved.error().kind != ErrorKind::NotDurable)
        return kFailed;
    for (const ShownText& line : result->refusedLines())
        complain(line);
    Output output;
    output.put(ShownText::asItIs(result->summary() + "\n"));
    if (!makes) {
        complain(text(TextId::CliNotMade, options.file));
        return output.finish(result->complete() ? kDone : kFailed);
    }
    return output.finish(saved && result->complete() ? kDone : kIncomplete,
                         text(TextId::CliHasBeenSaved, options.file));
}

} // namespace quobrix::cli
