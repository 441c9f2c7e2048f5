#include "device/clear_flow.h"

#include "texts/text.h"

namespace quobrix {
namespace {

constexpr const char* kSection = "TClearMemoryColumn";
constexpr const char* kName = "Value";

Message clearQuestion(const LoggerStatus& logger) {
    return makeMessage(MessageId::ClearQuobrix, logger.logsCurrent ? text(TextId::ClearWhatIsDownloaded)
                                                                   : text(TextId::ClearWhatIsNotDownloaded));
}

Message clearDownloadedQuestion(std::uint64_t refused) {
    return makeMessage(MessageId::ClearQuobrix, refused == 0 ? text(TextId::ClearWhatIsDownloaded)
                                                             : counted(TextId::ClearWithRefused, refused, refused));
}

} // namespace

ClearAfterDownload clearAfterDownload(const Settings& settings) {
    switch (settings.getInteger(kSection, kName, 0)) {
    case 1:
        return ClearAfterDownload::Always;
    case 2:
        return ClearAfterDownload::Never;
    default:
        return ClearAfterDownload::Ask;
    }
}

void setClearAfterDownload(Settings& settings, ClearAfterDownload choice) {
    settings.setInteger(kSection, kName, static_cast<std::int32_t>(choice));
}

bool ClearFlow::clearMemory() {
    const std::optional<LoggerStatus> logger = context_.ports().findLogger();
    return logger && askToClear(clearQuestion(*logger)) && clear(logger->serialText, logger->logsCurrent);
}

bool ClearFlow::clearSaved(const std::string& serialText, std::uint64_t refused) {
    return (refused == 0 || context_.prompter.ask(clearDownloadedQuestion(refused)) == Answer::Yes) &&
           clear(serialText, true);
}

bool ClearFlow::clearDownloaded(const std::string& serialText, std::uint64_t refused) {
    switch (clearAfterDownload(context_.settings)) {
    case ClearAfterDownload::Never:
        return false;
    case ClearAfterDownload::Always:
        if (refused == 0)
            break;
        [[fallthrough]];
    case ClearAfterDownload::Ask:
        if (!askToClear(clearDownloadedQuestion(refused)))
            return false;
    }
    return clear(serialText, true);
}

bool ClearFlow::askToClear(const Message& question) {
    const ClearAfterDownload before = clearAfterDownload(context_.settings);
    if (before == ClearAfterDownload::Never)
        return context_.prompter.ask(question) == Answer::Yes;
    bool always = before == ClearAfterDownload::Always;
    if (context_.prompter.askMarked(question, SourceText("&Don't Ask Again"), always) != Answer::Yes)
        return false;
    setClearAfterDownload(context_.settings, always ? ClearAfterDownload::Always : ClearAfterDownload::Ask);
    return true;
}

/// WHILE_CURRENT: not when something may have been recorded since.
bool ClearFlow::clear(const std::string& serialText, bool whileCurrent) {
    std::int64_t time = 0;
    const bool cleared = context_.reporter().runOn(serialText, LoggerCommand::ClearMemory, [&](LockedLogger& logger) {
        time = logger.now();
        return whileCurrent && !logger.status().logsCurrent ? kLogsNotCurrent : logger.clearLogs();
    });
    if (cleared)
        noteCleared(serialText, time);
    return cleared;
}

bool ClearFlow::clearAccidents() {
    const std::optional<LoggerStatus> asked = context_.ports().findLogger();
    if (!asked)
        return false;
    const Message question =
        makeMessage(MessageId::ClearAccidentLogs, asked->logsCurrent ? text(TextId::ClearDownloadedAccidents)
                                                                     : text(TextId::ClearAccidentsNotDownloaded));
    return context_.prompter.ask(question) == Answer::Yes &&
           context_.reporter().runOn(asked->serialText, LoggerCommand::ClearAccidents, [&](LockedLogger& logger) {
               return asked->logsCurrent && !logger.status().logsCurrent ? kLogsNotCurrent : logger.clearAccidentLogs();
           });
}

bool ClearFlow::mayLose(const LoggerStatus& logger) {
    if (logger.logsCurrent)
        return true;
    const std::optional<Reply<MemoryInformation>> memory = context_.calls.get(
        Reporter::title(LoggerCommand::GetMemory), [](LockedLogger& present) { return present.memoryInformation(); });
    if (!memory)
        return false;
    return (memory->ok() && !memory->value.holdsData()) || context_.prompter.ask(clearQuestion(logger)) == Answer::Yes;
}

void ClearFlow::noteCleared(const std::string& serialText, std::int64_t time) {
    TQuobrixDocument& document = context_.document;
    if (!document.readOnly() && !document.isExample())
        document.store().singleton<TClearTable>().record(serialText, static_cast<std::int32_t>(time));
}

} // namespace quobrix
