#include "cli/check.h"

#include "base/path_text.h"
#include "base/utf8.h"
#include "cli/opened_document.h"
#include "cli/output.h"
#include "device/merge.h"
#include "messages/file_messages.h"
#include "repair/document_repair.h"
#include "repair/salvaged_file.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <map>
#include <string>
#include <utility>

namespace quobrix::cli {
namespace {

namespace fs = std::filesystem;

/// WHAT without its numbers.
std::string kindOf(const std::string& what) {
    std::string kind;
    for (const char c : what)
        if (c < '0' || c > '9')
            kind += c;
        else if (kind.empty() || kind.back() != '#')
            kind += '#';
    return kind;
}

/// One line for each finding, or for all those of a log that differ in numbers only.
void putFindings(Output& output, std::string_view kind, const std::vector<CheckFinding>& findings) {
    constexpr std::size_t kMostLines = 3; // alike
    std::map<std::pair<std::string, std::string>, std::size_t> alike;
    for (const CheckFinding& finding : findings)
        ++alike[{finding.log, kindOf(finding.what)}];
    for (const CheckFinding& finding : findings) {
        std::size_t& count = alike[{finding.log, kindOf(finding.what)}];
        if (count == 0)
            continue; // told with the first one
        std::string line(kind);
        if (!finding.log.empty())
            line += ": " + finding.log;
        const std::size_t times = count > kMostLines ? std::exchange(count, 0) : 1;
        if (times > 1)
            line += text(TextId::CliFindingTimes, times);
        if (finding.id != kNoObject)
            line += times > 1 ? text(TextId::CliFindingFirstObject, finding.id)
                              : text(TextId::CliFindingObject, finding.id);
        output.put(ShownText::asItIs(oneLine(line + ": " + finding.what) + "\n"));
    }
}

ExitCode examine(const std::string& file) {
    TQuobrixDocument document;
    if (!openForReading(document, file))
        return kFailed;
    const DocumentCheck check = checkDocument(document);
    if (document.outdated()) {
        complain(text(TextId::CliChangedWhileChecked, file));
        return kFailed;
    }
    Output output;
    putFindings(output, text(TextId::CliFindingDamaged), check.damages);
    putFindings(output, text(TextId::CliFindingNote), check.notes);
    if (check.sound()) {
        if (const Result<void> fit = canMerge(document); !fit && fit.error().kind == ErrorKind::Corrupt)
            output.put(ShownText::asItIs(oneLine(text(TextId::CliTakesNoDownloads, fit.error().detail)) + "\n"));
        if (document.store().version() > ObjectStore::kVersion) {
            complain(text(TextId::CliSoundOfLaterVersion, file));
            return output.finish(kIncomplete);
        }
        output.put(text(TextId::CliSound, file, check.objects));
        return output.finish(kDone);
    }
    const std::string where =
        check.damagedObjects > 0 ? text(TextId::CliDamagedWhere, check.damagedObjects, check.objects) : std::string();
    const std::string advice = text(TextId::CliSaveWhatCanBeRead, file);
    if (document.store().laterLayoutMet())
        complain(text(TextId::CliLaterVersion, file, advice));
    else
        complain(text(TextId::CliDamaged, file, where, advice));
    return output.finish(kFailed);
}

/// Whether the repaired document may be put there; if not, why.
bool mayWrite(const CheckOptions& options) {
    const fs::path into = pathFromUtf8(options.into);
    const auto damaged = fileStatus(pathFromUtf8(options.file)), target = fileStatus(into);
    std::string why;
    if (damaged && target && damaged->identity == target->identity)
        why = text(TextId::CliIntoIsDamagedFile);
    else if (isExampleName(utf8(into.filename())))
        why = text(TextId::CliIntoIsExample);
    else if (target && !options.force)
        why = text(TextId::CliIntoExists);
    if (!why.empty())
        complain(text(TextId::CliNotWrittenTo, options.into, why));
    return why.empty();
}

ExitCode repair(const CheckOptions& options) {
    const auto failed = [](const Error& error, FileAction action, const std::string& file) {
        complain(fileMessage(error, action, file).text);
        return kFailed;
    };
    const fs::path path = pathFromUtf8(options.file);
    // It is only read, but no other program may write to it meanwhile.
    Result<std::unique_ptr<File>> file = openFile(path, FileMode::ReadWrite);
    if (!file && file.error().kind == ErrorKind::AccessDenied)
        file = openFile(path, FileMode::Read);
    if (!file)
        return failed(file.error(), FileAction::Open, options.file);
    const Result<std::unique_ptr<StreamReader>> damaged = openForRepair(*std::move(file));
    if (!damaged && damaged.error().kind == ErrorKind::Corrupt) {
        complain(text(TextId::CliBackupMayHelp, fileMessage(damaged.error(), FileAction::Open, options.file).text,
                      damaged.error().detail));
        return kFailed;
    }
    if (!damaged)
        return failed(damaged.error(), FileAction::Open, options.file);
    if (!mayWrite(options))
        return kFailed;
    const IfThere ifThere = options.force ? IfThere::Replace : IfThere::Refuse;
    const Result<DocumentRepair> repaired = repairDocument(**damaged, pathFromUtf8(options.into), ifThere, path);
    if (!repaired)
        return failed(repaired.error(), FileAction::Save, options.into);

    Output output;
    putFindings(output, text(TextId::CliFindingLost), repaired->lost);
    putFindings(output, text(TextId::CliFindingNote), repaired->notes);
    std::string records;
    for (const auto& [log, count] : repaired->records)
        records += fmt::format("{}{} {}", records.empty() ? "" : ", ", log, count);
    output.put(text(TextId::CliRepaired, options.into, repaired->objects, records));
    if (repaired->notDurable)
        complain(fileMessage(*repaired->notDurable, FileAction::Save, options.into).text);
    const ShownText written = text(TextId::CliHasBeenWritten, options.into);
    if (repaired->complete())
        return output.finish(repaired->notDurable ? kIncomplete : kDone, written);
    const std::size_t lost = repaired->lost.size();
    complain(counted(TextId::CliPartsLost, lost, lost, options.file));
    return output.finish(kIncomplete, written);
}

} // namespace

ExitCode check(const CheckOptions& options) { return options.repair ? repair(options) : examine(options.file); }

} // namespace quobrix::cli
