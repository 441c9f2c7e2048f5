#include "cli/check.h"

#include "base/path_text.h"
#include "cli/reading.h"
#include "messages/file_messages.h"
#include "model/document_repair.h"

#include <fmt/format.h>

namespace quobrix::cli {
namespace {

namespace fs = std::filesystem;

void putFindings(Output& output, std::string_view kind, const std::vector<CheckFinding>& findings) {
    for (const CheckFinding& finding : findings) {
        std::string line(kind);
        if (!finding.log.empty())
            line += ": " + finding.log;
        if (finding.id != kNoObject)
            line += fmt::format(": object {}", finding.id);
        output.put(line + ": " + finding.what + "\n");
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
        output.put(fmt::format("{} is sound: {} objects\n", file, check.objects));
        return output.finish(kDone);
    }
    complain(
        fmt::format("{0} is damaged in {1} of its {2} objects; keep it, and restore a copy if you have one, or save "
                    "what can be read with \"quobrix-cli check --repair {0} --into NEW.car\"",
                    file, check.damages.size(), check.objects));
    return output.finish(kFailed);
}

/// Whether the repaired document may be put there; if not, why.
bool mayWrite(const CheckOptions& options) {
    const auto damaged = fileStatus(options.file), target = fileStatus(options.into);
    std::string why;
    if (damaged && target && damaged->identity == target->identity)
        why = "it is the damaged file itself; name another one with --into";
    else if (isExampleName(utf8(fs::path(options.into).filename())))
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
    // Nothing is written to it, but nobody else shall meanwhile.
    Result<std::unique_ptr<File>> file = openFile(options.file, FileMode::ReadWrite);
    if (!file && file.error().kind == ErrorKind::AccessDenied)
        file = openFile(options.file, FileMode::Read);
    if (!file)
        return failed(file.error(), FileAction::Open, options.file);
    const Result<std::unique_ptr<CompoundFile>> damaged = CompoundFile::open(*std::move(file));
    if (!damaged)
        return failed(damaged.error(), FileAction::Open, options.file);
    if (!mayWrite(options))
        return kFailed;
    const IfThere ifThere = options.force ? IfThere::Replace : IfThere::Refuse;
    const Result<DocumentRepair> repaired = repairDocument(**damaged, options.into, ifThere, options.file);
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
    if (repaired->complete())
        return output.finish(repaired->notDurable ? kIncomplete : kDone);
    complain(
        fmt::format("{} of {} could not be recovered, as listed; keep it",
                    repaired->lost.size() == 1 ? std::string("1 part") : fmt::format("{} parts", repaired->lost.size()),
                    options.file));
    return output.finish(kIncomplete);
}

} // namespace

ExitCode check(const CheckOptions& options) { return options.repair ? repair(options) : examine(options.file); }

} // namespace quobrix::cli
