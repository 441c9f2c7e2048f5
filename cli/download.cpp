#include "cli/download.h"

#include "cli/option_prompter.h"
#include "device/download.h"
#include "messages/file_messages.h"
#include "platform/paths.h"
#include "settings/file_settings.h"

#include <fmt/format.h>

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
    const std::filesystem::path path = file;
    if (isExampleName(path.filename().string())) {
        complain(file + " is the delivered example, which takes no downloads; name another file with --into");
        return false;
    }
    const Result<void> opened = document.open(path, TDocument::Access::Edit);
    if (opened)
        return document.readOnly() ? failed(*document.readOnlyReason(), FileAction::Save) : true;
    if (opened.error().kind != ErrorKind::NotFound)
        return failed(opened.error(), FileAction::Open);
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    std::error_code ignored;
    if (std::filesystem::is_directory(folder, ignored))
        return true;
    complain(file + " cannot be saved because its folder does not exist");
    return false;
}

/// Whether a logger answers on PORT, which then stays open.
bool connect(LoggerLink& link, const std::string& port) {
    LockedLogger logger(link);
    const LoggerOutcome opened = logger.outcome(logger.openPort(port));
    if (!opened.ok()) {
        complain(fmt::format("{}: {}", port, openFailureMessage(opened).text));
        return false;
    }
    const LoggerOutcome probed = logger.outcome(logger.probe());
    if (!probed.ok())
        complain(failureMessage("Unable to download logs", probed).text);
    return probed.ok();
}

/// Saves DOCUMENT to FILE, which it is or is to become.
bool save(TQuobrixDocument& document, const std::string& file, OptionPrompter& prompter) {
    const auto failure = [](const Error& error, const std::filesystem::path& path) {
        return fileMessage(error, FileAction::Save, path.string()).text;
    };
    const std::filesystem::path backup = TDocument::backupPath(file);
    const SaveOptions options{.saveWithoutBackup = [&](const Error& reason) {
        return prompter.ask(makeMessage(MessageId::NoBackup, failure(reason, backup), file)) == Answer::Yes;
    }};
    const Result<void> saved = document.hasFile() ? document.save(options) : document.saveAs(file, options);
    if (!saved && saved.error().kind != ErrorKind::Cancelled)
        complain(failure(saved.error(), file));
    if (const std::optional<Error> problem = document.backupProblem(); saved && problem)
        prompter.tell(makeMessage(MessageId::BackupNotKept, file, failure(*problem, backup)));
    return bool(saved);
}

} // namespace

ExitCode download(const DownloadOptions& options) {
    TQuobrixDocument document;
    if (!openForWriting(document, options.file))
        return kFailed;
    Settings settings(userSettings());
    LoggerLink link(loadLoggerLibrary(loggerLibraryPath(programFolder(executablePath()))));
    if (!link.hasLibrary()) {
        complain(link.libraryProblem() + " Put it beside this program, or let QUOBRIX_LIBRARY say where it is.");
        return kFailed;
    }
    DirectCalls calls(link);
    if (!connect(link, options.port ? *options.port : defaultPort(settings)))
        return kFailed;

    OptionPrompter prompter(options.yesTo);
    ProgressReporter noProgress;
    const auto names = [&](const std::string& serialNumber) { return document.loggers().nameOf(serialNumber); };
    const auto anotherFile = [&] {
        complain(fmt::format("name a new file with --into instead of {}", options.file));
        return false;
    };
    const std::optional<MergeResult> result =
        Download(calls, prompter, settings, noProgress, names,
                 {.startNewDocument = anotherFile, .mayStartNewDocument = anotherFile, .mayChangePort = false})
            .run(document);
    LockedLogger(link).closePort();
    if (!result) {
        if (!prompter.told())
            complain("nothing was downloaded");
        return kFailed;
    }
    if (!save(document, options.file, prompter))
        return kFailed;
    for (const std::string& line : result->refusedLines())
        complain(line);
    Output output;
    output.put(result->summary() + "\n");
    return output.finish(result->complete() ? kDone : kIncomplete, options.file + " has been saved");
}

} // namespace quobrix::cli
