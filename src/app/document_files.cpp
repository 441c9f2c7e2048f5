#include "app/document_files.h"

#include "app/recent_files.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kProgramConfig = "Program Config";
constexpr std::string_view kLastFileOpened = "Last File Opened";

bool sameFile(const fs::path& a, const fs::path& b) {
    const auto first = fileIdentity(a);
    const auto second = fileIdentity(b);
    return first && second && *first == *second;
}

} // namespace

DocumentFiles::DocumentFiles(TQuobrixDocument& document, Settings& settings, RecentFiles& recent, Prompter& prompter,
                             FileChooser& chooser, DiskRunner runDisk, Hooks hooks)
    : document_(document), settings_(settings), recent_(recent), prompter_(prompter), chooser_(chooser),
      runDisk_(std::move(runDisk)), hooks_(std::move(hooks)) {}

bool DocumentFiles::newFile() {
    if (!close())
        return false;
    hooks_.replacing();
    document_.newDocument();
    untitled_ = true;
    hooks_.replaced();
    return true;
}

bool DocumentFiles::open(const fs::path& path) {
    std::error_code ignored;
    const fs::path absolute = fs::absolute(path, ignored).lexically_normal();
    if (document_.hasFile() && sameFile(absolute, document_.path()))
        return true;
    if (!close() || !replaceBy(absolute))
        return false;
    recent_.add(absolute);
    hooks_.saved();
    return true;
}

bool DocumentFiles::openExample(const fs::path& path) {
    if (!open(path))
        return false;
    settings_.setText(kProgramConfig, kLastFileOpened, "");
    return true;
}

bool DocumentFiles::replaceBy(const fs::path& path) {
    hooks_.replacing();
    const Result<void> result = document_.open(path, TDocument::Access::Edit);
    if (!result) {
        hooks_.replaced();
        return tell(result.error(), FileAction::Open, path);
    }
    untitled_ = false;
    std::error_code ignored;
    fs::current_path(path.parent_path(), ignored);
    hooks_.replaced();

    toldLogs_.clear();
    tellDamage();
    return true;
}

void DocumentFiles::tellDamage() {
    std::string affected;
    for (const std::string& log : document_.affectedLogs())
        if (toldLogs_.insert(log).second)
            affected += (affected.empty() ? "" : "\n") + log;
    if (!affected.empty())
        prompter_.tell(makeMessage(MessageId::DamagedDocument, document_.title(), affected));
}

bool DocumentFiles::chooseAndOpen() {
    const auto path = chooser_.chooseToOpen();
    return path && open(*path);
}

bool DocumentFiles::save() {
    // The example stays as it was delivered; what was done to it can be kept under another name.
    if (!document_.hasFile() || document_.isExample())
        return saveAs();
    if (document_.readOnly())
        return offerSaveAs();
    return saveTo(document_.path());
}

bool DocumentFiles::saveAs() {
    const fs::path suggested = document_.hasFile() ? document_.path() : pathFromUtf8(document_.title() + ".car");
    const auto path = chooser_.chooseToSave(suggested);
    if (!path || !saveTo(*path))
        return false;
    recent_.add(document_.path());
    hooks_.saved();
    return true;
}

bool DocumentFiles::saveTo(const fs::path& path) {
    const bool own = document_.hasFile() && path == document_.path();
    const Result<void> result = own ? document_.save(runDisk_) : document_.saveAs(path, runDisk_);
    hooks_.saved();
    return result ? true : tell(result.error(), FileAction::Save, path);
}

bool DocumentFiles::close() {
    if (!mayGo())
        return false;
    // The example opens by itself once only.
    settings_.setText(kProgramConfig, kLastFileOpened, document_.isExample() ? "" : utf8(document_.path()));
    return true;
}

bool DocumentFiles::mayGo() {
    if (document_.isExample())
        return true;
    if (!untitled_) {
        if (document_.readOnly())
            return !document_.dataChanged() || !document_.modified() || offerSaveAs();
        // A file that cannot be written now must not hold the user captive.
        return !document_.modified() || saveTo(document_.path()) || offerSaveAs();
    }
    if (!document_.dataChanged() || (document_.hasFile() && !document_.modified()))
        return true;
    const auto answer = prompter_.askOrCancel(makeMessage(MessageId::SaveChanges, document_.title()));
    return answer && (*answer == Answer::No || save());
}

bool DocumentFiles::offerSaveAs() {
    const auto answer = prompter_.askOrCancel(makeMessage(MessageId::ReadOnlyDocument, document_.title()));
    return answer && (*answer == Answer::No || saveAs());
}

bool DocumentFiles::tell(const Error& error, FileAction action, const fs::path& path) {
    prompter_.tell(fileMessage(error, action, utf8(path.filename())));
    return false;
}

} // namespace quobrix
