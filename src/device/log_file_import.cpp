#include "device/log_file_import.h"

#include "base/path_text.h"
#include "texts/text.h"

namespace quobrix {

std::optional<MergeResult> LogFileImport::run(const std::filesystem::path& file) {
    if (!merge_.prepare())
        return {};
    struct Read {
        LoggerOutcome outcome;
        RecordBlocks blocks;
    };
    const auto read = context_.calls.get(Reporter::title(LoggerCommand::Import), [&](LockedLogger& logger) {
        Reply<RecordBlocks> logs = logger.readLogFile(utf8(file));
        return Read{logger.outcome(logs.code), std::move(logs.value)};
    });
    if (!read)
        return {};
    if (!read->outcome.ok()) {
        const bool refused = read->outcome.code != kNoLibrary && read->outcome.code != kPathTooLong;
        context_.prompter.tell(refused ? makeMessage(MessageId::NotALogFile)
                                       : failureMessage(LoggerCommand::Import, read->outcome));
        return {};
    }
    const LogRecords records = parseRecords(read->blocks);
    if (!merge_.makeRoom(records))
        return {};
    std::optional<MergeResult> result = merge_.merge(records, 0, TextId::ImportStep);
    if (result)
        merge_.tellResult(*result);
    return result;
}

} // namespace quobrix
