#include "device/download.h"

#include "messages/file_messages.h"
#include "texts/text.h"
#include "units/time_zone.h"

namespace quobrix {
namespace {

// A document of about 1,000 trips: from here on a new file is recommended.
constexpr std::size_t kManyObjects = 1000 * TTripLogTable::kObjectsPerTrip;

void noteTime(const std::string& serial, TQuobrixDocument& document) {
    auto& downloads = document.store().singleton<TDownloadTable>();
    document.edits().changeRows(downloads, {{0, downloads.rowCount()}},
                                [&] { downloads.record(serial, currentTime()); });
}

} // namespace

Download::Download(const FlowContext& context, Hooks hooks) : context_(context), hooks_(std::move(hooks)) {}

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

    const bool diagnostic = context_.settings.getInteger("Diagnostics", "Menu", 0) != 0;
    const auto read = context_.calls.get(Reporter::title(LoggerCommand::Download), [&](LockedLogger& logger) {
        auto logs = logger.readLogs(diagnostic ? LogMode::Diagnostic : LogMode::Ordinary);
        const LoggerOutcome outcome = logger.outcome(logs.code);
        return std::tuple(std::move(logs), outcome, logger.status().serialText);
    });
    if (!read) {
        context_.calls.post([](LockedLogger& logger) { logger.noteLogsDoubtful(); });
        return {};
    }
    const auto& [reply, outcome, serial] = *read;
    if (!reporter.report(LoggerCommand::Download, outcome))
        return {};
    const LogRecords records = parseRecords(reply.value);
    // The present document goes only for records that take its place.
    if (wantsNew && !records.empty() && !hooks_.startNewDocument())
        return {};
    Result<MergeResult> merged = MergeResult{{}, records.refused, records.unreadable, {}};
    document.edits().group(text(TextId::DownloadStep), [&, &serial = serial] {
        if (!wantsNew || !records.empty())
            merged = mergeRecords(records, document);
        if (!merged)
            return EditOutcome{.refusal = merged.error().detail};
        if (merged->changed())
            noteTime(serial, document);
        if (const std::string name = context_.settings.getText(kUnidentifiedDriverSection, kDefaultName);
            isDriverName(name))
            document.drivers().nameAll(merged->newKeys.drivers, name); // in rows of this step
        return EditOutcome{};
    });
    if (!merged) {
        tell(merged.error());
        return {};
    }
    MergeResult& result = *merged;
    // Of a download that brought nothing there is nothing to take back but the time, which is not shown. A new document
    // that has got nothing stays one that need not be saved.
    if (!result.changed() && document.hasFile() && !wantsNew)
        document.store().singleton<TDownloadTable>().record(serial, currentTime());
    if (hooks_.keysAdded)
        hooks_.keysAdded(result.newKeys);
    for (const UnreadableLog& log : result.unreadable)
        context_.prompter.tell(makeMessage(MessageId::LogsUnreadable, log.name, log.why));
    return std::move(result);
}

} // namespace quobrix
