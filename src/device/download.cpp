#include "device/download.h"

#include "messages/file_messages.h"
#include "units/time_zone.h"

namespace quobrix {
namespace {

// A document of about 1,000 trips: from here on a new file is recommended.
constexpr std::size_t kManyObjects = 1000 * TTripLogTable::kObjectsPerTrip;

} // namespace

Download::Download(LoggerCalls& calls, Prompter& prompter, Settings& settings, ProgressReporter& progress,
                   LoggerNames names, Hooks hooks)
    : calls_(calls), prompter_(prompter), settings_(settings), reporter_(calls, prompter, progress),
      ports_(calls, prompter, settings, std::move(names)), hooks_(std::move(hooks)) {}

std::optional<MergeResult> Download::run(TQuobrixDocument& document) {
    if (document.isExample()) {
        prompter_.tell(makeMessage(MessageId::DownloadIntoExample));
        if (!hooks_.startNewDocument())
            return {};
    }
    if (document.store().objectCount() > kManyObjects &&
        prompter_.ask(makeMessage(MessageId::NewFileRecommended)) == Answer::Yes && !hooks_.startNewDocument())
        return {};
    if (!ports_.ensureLogger(true))
        return {};
    if (const Result<void> fit = canMerge(document); !fit) {
        const ErrorKind kind = fit.error().kind;
        prompter_.tell(kind == ErrorKind::Changed ? makeMessage(MessageId::DownloadIntoChanged)
                       : kind == ErrorKind::Unsupported
                           ? fileMessage(fit.error(), FileAction::Save, document.title())
                           : makeMessage(MessageId::DownloadIntoDamaged, fit.error().detail));
        return {};
    }

    const bool diagnostic = settings_.getInteger("Diagnostics", "Menu", 0) != 0;
    const auto [reply, outcome, serial] = [&] {
        const PollingPause pause(calls_);
        return calls_.get([&](LockedLogger& logger) {
            auto logs = logger.readLogs(diagnostic ? LogMode::Diagnostic : LogMode::Ordinary);
            return std::tuple(std::move(logs), logger.outcome(logs.code), logger.status().serialText);
        });
    }();
    if (!reporter_.report(LoggerCommand::Download, outcome))
        return {};
    MergeResult result = mergeRecords(parseRecords(reply.value), document);
    document.store().singleton<TDownloadTable>().record(serial, currentTime());
    document.setDataChanged();
    if (const std::string name = settings_.getText(kUnidentifiedDriverSection, kDefaultName); isDriverName(name))
        document.drivers().nameAll(result.newKeys.drivers, name);
    if (hooks_.keysAdded)
        hooks_.keysAdded(result.newKeys);
    return result;
}

} // namespace quobrix
