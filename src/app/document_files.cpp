#include "app/document_files.h"

#include "app/recent_files.h"
#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "texts/text.h"

#include <array>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kProgramConfig = "Program Config";
constexpr std::string_view kLastFileOpened = "Last File Opened";
constexpr std::string_view kOfferCompaction = "Offer Compaction";

// Less is not worth a question.
constexpr std::uint64_t kWorthCompacting = 64 << 10; // bytes

/// A name beside PATH that no file has yet: "Name (2).car".
fs::path anotherName(const fs::path& path) {
    std::error_code ignored;
    for (int number = 2;; ++number) {
        fs::path name = path.stem();
        name += " (" + std::to_string(number) + ")";
        name += path.extension();
        if (const fs::path other = path.parent_path() / name; !fs::exists(other, ignored))
            return other;
    }
}

} // namespace

std::optional<CopyPlace> chooseCopyOf(const TQuobrixDocument& document, FileChooser& chooser, Prompter& prompter,
                                      SourceText what, std::string_view title, std::span<const FileFormat> formats) {
    const bool beside = document.hasFile() && !document.isExample();
    const auto chosen =
        chooser.chooseCopy(what, beside ? document.path().parent_path() : fs::path(), fileNameFor(title), formats);
    if (!chosen)
        return {};
    const std::array opened{document.path()};
    if (isDocument(chosen->path, std::span(opened).first(document.hasFile() ? 1 : 0))) {
        prompter.tell(makeMessage(MessageId::ExportIsDocument, utf8(chosen->path.filename())));
        return {};
    }
    if (const std::optional<FileFormat> format = formatOf(chosen->path, formats))
        return CopyPlace{chosen->path, chosen->ifThere, *format};
    // Nobody has been asked about a file of the longer name.
    return CopyPlace{fs::path(chosen->path) += "." + std::string(endingOf(formats.front())), IfThere::Refuse,
                     formats.front()};
}

bool offersCompaction(const Settings& settings) { return settings.getBoolean(kProgramConfig, kOfferCompaction, true); }

void setOffersCompaction(Settings& settings, bool offers) {
    settings.setBoolean(kProgramConfig, kOfferCompaction, offers);
}

DocumentFiles::DocumentFiles(TQuobrixDocument& document, Settings& settings, RecentFiles& recent, Prompter& prompter,
                             FileChooser& chooser, DiskRunner runDisk, Hooks hooks)
    : document_(document), settings_(settings), recent_(recent), prompter_(prompter), chooser_(chooser),
      runDisk_(std::move(runDisk)), hooks_(std::move(hooks)) {}

bool DocumentFiles::newFile() {
    if (!close())
        return false;
    replace([this] {
        document_.newDocument();
        untitled_ = true;
    });
    return true;
}

bool DocumentFiles::open(const fs::path& path) {
    std::error_code ignored;
    const fs::path absolute = fs::absolute(path, ignored).lexically_normal();
    if (document_.isFile(absolute) && !document_.outdated())
        return true;
    if (!close() || !replaceBy(absolute))
        return false;
    recent_.add(absolute);
    hooks_.saved(false);
    offerCompaction();
    return true;
}

bool DocumentFiles::openExample(const fs::path& path) {
    if (!open(path))
        return false;
    settings_.setText(kProgramConfig, kLastFileOpened, "");
    return true;
}

/// There are pages of a document again whatever comes of WORK.
void DocumentFiles::replace(const std::function<void()>& work) {
    try {
        hooks_.replacing();
        work();
    } catch (...) {
        hooks_.replaced();
        throw;
    }
    hooks_.replaced();
}

bool DocumentFiles::replaceBy(const fs::path& path) {
    Result<void> result;
    replace([&] {
        result = document_.open(path, TDocument::Access::Edit);
        if (!result)
            return;
        untitled_ = false;
        std::error_code ignored;
        fs::current_path(path.parent_path(), ignored);
    });
    if (!result)
        return tell(result.error(), FileAction::Open, path);
    toldDamage_.clear();
    tellDamage(document_.doubt());
    tellLock();
    return true;
}

/// That a lock file keeps this copy from writing, or others.
void DocumentFiles::tellLock() {
    if (const std::optional<LockOwner> owner = document_.lockedBy()) {
        const fs::path path = document_.path();
        const auto choice =
            prompter_.chooseAction(makeMessage(MessageId::FileLocked, document_.title(), owner->text(),
                                               owner->timeText(), utf8(LockFile::pathFor(path).filename())),
                                   {SourceText("Open &Read-Only"), SourceText("&Take Over")});
        if (choice && *choice == 1) {
            if (const Result<void> taken = document_.takeOver(); !taken)
                tell(taken.error(), FileAction::Save, path);
            hooks_.saved(false);
        }
    }
    const fs::path lock = document_.lockFile();
    if (!lock.empty() && toldLocks_.insert(lock.parent_path()).second)
        prompter_.tell(makeMessage(MessageId::FolderWithoutLocks, document_.title(), utf8(lock.filename())));
}

void DocumentFiles::tellDamage(const std::optional<std::string>& doubt) {
    std::string affected;
    const auto add = [&](const std::string& what) {
        if (toldDamage_.insert(what).second)
            affected += (affected.empty() ? "" : "\n") + what;
    };
    const std::optional<Error> reason = document_.readOnlyReason();
    const bool lasting = reason && reason->kind == ErrorKind::Corrupt;
    const std::vector<std::string> logs = document_.affectedLogs();
    if (lasting && !document_.lacksTable()) // which is among the logs
        add(reason->detail);
    else if (!lasting && doubt)
        add(text(TextId::MayBeMoreThanShown, *doubt));
    for (const std::string& log : logs)
        add(log);
    if (!affected.empty()) {
        note(text(TextId::EventDamage, utf8(document_.path()), affected));
        prompter_.tell(makeMessage(lasting                              ? MessageOf<2>(MessageId::DamagedReadOnly)
                                   : document_.store().laterLayoutMet() ? MessageOf<2>(MessageId::PartsOfLaterVersion)
                                                                        : MessageOf<2>(MessageId::DamagedDocument),
                                   document_.title(), affected));
    }
}

bool DocumentFiles::offerReload() {
    return document_.outdated() && !(document_.dataChanged() && document_.modified()) &&
           prompter_.ask(makeMessage(MessageId::FileOutdated, document_.title())) == Answer::Yes &&
           replaceBy(document_.path());
}

bool DocumentFiles::chooseAndOpen() {
    const auto path = chooser_.chooseToOpen();
    return path && open(*path);
}

bool DocumentFiles::save() {
    // The example stays as it was delivered; what was done to it can be kept under another name.
    if (!document_.hasFile() || document_.isExample())
        return saveAs();
    if (needsAnotherName())
        return document_.dataChanged() ? offerSaveAs() : saveAs();
    if (saveTo(document_.path()) != Outcome::Done)
        return false;
    offerCompaction();
    return true;
}

bool DocumentFiles::saveAs() {
    // Neither the example's folder nor its name is for what people save.
    const bool placed = document_.hasFile() && !document_.isExample();
    return chooseAndSaveAs(placed ? document_.path()
                                  : pathFromUtf8(text(TextId::UntitledFile, text(TextId::Untitled)))) == Outcome::Done;
}

bool DocumentFiles::compact() {
    if (document_.isExample()) {
        prompter_.tell(makeMessage(MessageId::ExampleIsNotSaved, document_.title()));
        return false;
    }
    const fs::path path = document_.path();
    return finishSave(document_.compact(saveOptions(path)), FileAction::Compact, path) == Outcome::Done;
}

SaveOptions DocumentFiles::saveOptions(const fs::path& path) {
    return {.saveWithoutBackup =
                [this, path](const Error& reason) {
                    const std::string backup = utf8(TDocument::backupPath(path).filename());
                    const Message failure = fileMessage(reason, FileAction::Save, backup);
                    return prompter_.ask(makeMessage(MessageId::NoBackup, failure.text, utf8(path.filename()))) ==
                           Answer::Yes;
                },
            .runDisk = runDisk_};
}

DocumentFiles::Outcome DocumentFiles::chooseAndSaveAs(const fs::path& suggested) {
    const auto place = chooser_.chooseToSave(suggested);
    if (!place)
        return Outcome::Cancelled;
    if (const std::string name = utf8(place->path.filename()); isExampleName(name)) {
        prompter_.tell(makeMessage(MessageId::ExampleIsNotSaved, name));
        return Outcome::Cancelled;
    }
    const Outcome outcome = saveTo(place->path, place->ifThere);
    if (document_.path() == place->path) { // be it durable or not
        recent_.add(document_.path());
        hooks_.saved(false);
    }
    return outcome;
}

/// The document's file cannot be written, nor could it be if the person decided between two versions of it.
bool DocumentFiles::needsAnotherName() {
    const Result<void> writable = document_.tryWriting();
    return !writable && writable.error().kind != ErrorKind::Changed;
}

DocumentFiles::Outcome DocumentFiles::saveTo(const fs::path& path, IfThere ifThere) {
    const bool own = document_.hasFile() && path == document_.path();
    const auto save = [&] {
        return own ? document_.save(saveOptions(path)) : document_.saveAs(path, ifThere, saveOptions(path));
    };
    Result<void> saved = save();
    while (!saved && saved.error().kind == ErrorKind::Exists) { // it has appeared since the name was chosen
        const std::string backup = utf8(document_.backupOf(path).filename());
        if (prompter_.ask(makeMessage(MessageId::ReplaceFile, utf8(path.filename()), backup)) != Answer::Yes)
            return Outcome::Cancelled;
        ifThere = IfThere::Replace;
        saved = save();
    }
    return finishSave(saved, FileAction::Save, path);
}

/// To the document's path, where its file is gone.
DocumentFiles::Outcome DocumentFiles::saveAgain() {
    const fs::path path = document_.path();
    const Result<void> saved = document_.saveAs(path, saveOptions(path));
    if (!saved && saved.error().kind == ErrorKind::Exists) // and another one has come meanwhile
        return resolveChange();
    return finishSave(saved, FileAction::Save, path);
}

DocumentFiles::Outcome DocumentFiles::finishSave(const Result<void>& result, FileAction action, const fs::path& path) {
    hooks_.saved(static_cast<bool>(result));
    if (result) {
        note(text(TextId::EventSaved, utf8(path)));
        if (const std::optional<Error> problem = document_.backupProblem()) {
            const std::string backup = utf8(TDocument::backupPath(path).filename());
            const Message why = fileMessage(*problem, FileAction::Save, backup);
            note(why.text);
            prompter_.tell(makeMessage(MessageId::BackupNotKept, utf8(path.filename()), why.text));
        }
        tellDamage(); // that another program did to the file since it was opened
        tellLock();
        return Outcome::Done;
    }
    if (result.error().kind == ErrorKind::Cancelled)
        return Outcome::Cancelled;
    if (result.error().kind == ErrorKind::Changed)
        return resolveChange();
    tell(result.error(), action, path);
    return Outcome::Failed;
}

/// Another program has changed, replaced or removed the document's file.
DocumentFiles::Outcome DocumentFiles::resolveChange() {
    enum Choice { SaveAs, Reload, Overwrite, Again };
    if (document_.outdated() && !document_.modified()) { // there is but one version
        offerReload();
        return Outcome::Cancelled;
    }
    const fs::path path = document_.path();
    const Result<bool> whole = document_.loadRest(); // before anybody changes more of it
    if (!whole) {
        tell(whole.error(), FileAction::Save, path);
        return Outcome::Failed;
    }
    std::error_code ignored;
    const bool there = fs::exists(path, ignored);
    std::optional<std::size_t> choice;
    if (!*whole) {
        std::vector<SourceText> actions{SourceText("Save &As...")};
        if (there)
            actions.emplace_back("&Reload");
        choice = prompter_.chooseAction(makeMessage(MessageId::FileDestroyedOnDisk, document_.title()), actions);
    } else if (there) {
        const std::string backup = utf8(document_.backupOf(path).filename());
        choice = prompter_.chooseAction(makeMessage(MessageId::FileChangedOnDisk, document_.title(), backup),
                                        {SourceText("Save &As..."), SourceText("&Reload"), SourceText("&Overwrite")});
    } else {
        choice = prompter_.chooseAction(makeMessage(MessageId::FileGoneFromDisk, document_.title()),
                                        {SourceText("&Save Again"), SourceText("Save &As...")});
        if (choice)
            choice = *choice == 0 ? Again : SaveAs;
    }
    if (!choice)
        return Outcome::Cancelled;
    switch (*choice) {
    case SaveAs:
        return chooseAndSaveAs(anotherName(path));
    case Reload:
        return replaceBy(path) ? Outcome::Done : Outcome::Failed;
    case Again:
        return saveAgain();
    default:
        return finishSave(document_.overwrite(saveOptions(path)), FileAction::Save, path);
    }
}

/// A file that is mostly unused space is pointed out once a run, unless the person has said never to.
void DocumentFiles::offerCompaction() {
    const CompoundFile::Space space = document_.space();
    if (document_.readOnly() || document_.isExample() || space.freeBytes < kWorthCompacting ||
        space.freeBytes <= space.fileBytes / 2 || !offersCompaction(settings_) ||
        !compactionOffered_.insert(document_.path()).second)
        return;
    const auto choice = prompter_.chooseAction(makeMessage(MessageId::CompactionOffered, document_.title()),
                                               {SourceText("&Compact Now"), SourceText("&Don't Ask Again")});
    if (choice && *choice == 0)
        compact();
    else if (choice)
        setOffersCompaction(settings_, false);
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
        if (document_.readOnly() && (!document_.dataChanged() || !document_.modified()))
            return true;
        if (needsAnotherName())
            return offerSaveAs();
        // A file that cannot be written now must not hold the user captive.
        if (!document_.modified())
            return true;
        const Outcome outcome = saveTo(document_.path());
        return outcome == Outcome::Done || (outcome == Outcome::Failed && offerSaveAs());
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
    const fs::path name = path.filename(); // none if PATH is a folder
    note(text(TextId::WithAside, fileMessage(error, action, utf8(path)).text, error.detail));
    prompter_.tell(fileMessage(error, action, utf8(name.empty() ? path : name)));
    return false;
}

void DocumentFiles::note(const ShownText& event) {
    if (hooks_.event)
        hooks_.event(event);
}

} // namespace quobrix
