#include "cli/check.h"

#include "base/path_text.h"
#include "base/utf8.h"
#include "cli/reading.h"
#include "device/merge.h"
#include "messages/file_messages.h"
#include "repair/document_repair.h"
#include "repair/salvaged_file.h"

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
            line += fmt::format(": {} times", times);
        if (finding.id != kNoObject)
            line += fmt::format("{} object {}", times > 1 ? ", first" : ":", finding.id);
        output.put(oneLine(line + ": " + finding.what) + "\n");
    }
}

ExitCode examine(const std::string& file) {
    TQuobrixDocument document;
    if (!openForReading(document, file))
        return kFailed;
    const DocumentCheck check = checkDocument(document);
    if (document.outdated()) {
        complain(fmt::format("{} was changed by another program while it was checked; try again", file));
        return kFailed;
    }
    Output output;
    putFindings(output, "damaged", check.damages);
    putFindings(output, "note", check.notes);
    if (check.sound()) {
        if (const Result<void> fit = canMerge(document); !fit && fit.error().kind == ErrorKind::Corrupt)
            output.put(
                oneLine(fmt::format("note: no download can be added to it, since records could not be known again "
                                    "({}); download into another file",
                                    fit.error().detail)) +
                "\n");
        if (document.store().version() > ObjectStore::kVersion) {
            complain(
                fmt::format("a later version of this software has written {}; what this one can read of it is sound, "
                            "but only that one can tell whether everything is there",
                            file));
            return output.finish(kIncomplete);
        }
        output.put(fmt::format("{} is sound: {} objects\n", file, check.objects));
        return output.finish(kDone);
    }
    const std::string where = check.damagedObjects > 0
                                  ? fmt::format(" in {} of its {} objects", check.damagedObjects, check.objects)
                                  : std::string();
    const std::string advice =
        fmt::format("save what can be read with \"quobrix-cli check --repair {} --into NEW.car\"", file);
    if (document.store().laterLayoutMet())
        complain(
            fmt::format("a later version of this software has written parts of {}, as listed; use that version, or {}",
                        file, advice));
    else
        complain(
            fmt::format("{} is damaged{}; keep it, and restore a copy if you have one, or {}", file, where, advice));
    return output.finish(kFailed);
}

/// Whether the repaired document may be put there; if not, why.
bool mayWrite(const CheckOptions& options) {
    const fs::path into = pathFromUtf8(options.into);
    const auto damaged = fileStatus(pathFromUtf8(options.file)), target = fileStatus(into);
    std::string why;
    if (damaged && target && damaged->identity == target->identity)
        why = "it is the damaged file itself; name another one with --into";
    else if (isExampleName(utf8(into.filename())))
        why = "this is the name of the delivered example; name another file with --into";
    else if (target && !options.force)
        why = "it exists; name another file with --into, or replace it with --force";
    if (!why.empty())
        complain(fmt::format("{} is not written to: {}", options.into, why));
    return why.empty();
}

ExitCode repair(const CheckOptions& options) {
    const auto failed = [](const Error& error, FileAction action, const std::string& file) {
        complain(fileMessage(error, action, file).text);
        return kFailed;
    };
    const fs::path path = pathFromUtf8(options.file);
    // Nothing is written to it, but nobody else may write to it meanwhile.
    Result<std::unique_ptr<File>> file = openFile(path, FileMode::ReadWrite);
    if (!file && file.error().kind == ErrorKind::AccessDenied)
        file = openFile(path, FileMode::Read);
    if (!file)
        return failed(file.error(), FileAction::Open, options.file);
    const Result<std::unique_ptr<CompoundFile>> damaged = openForRepair(*std::move(file));
    if (!damaged && damaged.error().kind == ErrorKind::Corrupt) {
        complain(fmt::format("{} ({}); a backup of it may be the way back",
                             fileMessage(damaged.error(), FileAction::Open, options.file).text,
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
    putFindings(output, "lost", repaired->lost);
    putFindings(output, "note", repaired->notes);
    std::string records;
    for (const auto& [log, count] : repaired->records)
        records += fmt::format("{}{} {}", records.empty() ? "" : ", ", log, count);
    output.put(fmt::format("{} holds {} objects; records: {}\n", options.into, repaired->objects, records));
    if (repaired->notDurable)
        complain(fileMessage(*repaired->notDurable, FileAction::Save, options.into).text);
    const std::string written = options.into + " has been written";
    if (repaired->complete())
        return output.finish(repaired->notDurable ? kIncomplete : kDone, written);
    complain(
        fmt::format("{} of {} could not be recovered, as listed; keep it",
                    repaired->lost.size() == 1 ? std::string("1 part") : fmt::format("{} parts", repaired->lost.size()),
                    options.file));
    return output.finish(kIncomplete, written);
}

} // namespace

ExitCode check(const CheckOptions& options) { return options.repair ? repair(options) : examine(options.file); }

} // namespace quobrix::cli
