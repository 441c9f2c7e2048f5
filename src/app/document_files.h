#pragma once

#include "document/document.h"
#include "export/file_format.h"
#include "messages/file_messages.h"
#include "messages/prompter.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

class RecentFiles;
class Settings;
class TQuobrixDocument;

/// Where the user points at a file; nothing when the choice is cancelled.
class FileChooser {
public:
    virtual ~FileChooser() = default;
    virtual std::optional<std::filesystem::path> chooseToOpen() = 0;
    /// A log file to be imported.
    virtual std::optional<std::filesystem::path> chooseLogs() = 0;
    struct SavePlace {
        std::filesystem::path path;
        IfThere ifThere = IfThere::Refuse; ///< Replace: the user has agreed to it
    };
    /// SUGGESTED: the name proposed, with or without a folder.
    virtual std::optional<SavePlace> chooseToSave(const std::filesystem::path& suggested) = 0;
    /// The same for a copy called NAME in one of FORMATS. WHAT is to be done. FOLDER is that of the first copy.
    virtual std::optional<SavePlace> chooseCopy(SourceText /*what*/, const std::filesystem::path& /*folder*/,
                                                const std::string& /*name*/, std::span<const FileFormat> /*formats*/) {
        return {};
    }
};

/// Where a copy of what a document holds goes, and as what.
struct CopyPlace {
    std::filesystem::path path; ///< ends as files of the format do
    IfThere ifThere = IfThere::Refuse;
    FileFormat format{};
};
/// Lets a person choose the place of a copy of what DOCUMENT holds, called TITLE, in one of FORMATS: beside its file,
/// if it has one. What is called otherwise gets the ending of the first format, or would not open as what it is.
/// Nothing when the choice is cancelled, or was a document, which is told.
std::optional<CopyPlace> chooseCopyOf(const TQuobrixDocument& document, FileChooser& chooser, Prompter& prompter,
                                      SourceText what, std::string_view title, std::span<const FileFormat> formats);

/// Whether a file that is mostly unused space is pointed out when it is opened or saved.
bool offersCompaction(const Settings& settings);
void setOffersCompaction(Settings& settings, bool offers);

/// The File menu's flows on the one document, and the rules of what is saved when it is closed or replaced:
/// a document opened from a file is saved without a question, a new one asks only if data was added, the example is
/// never saved. Each flow returns whether it went through to its end; failures have then been told, or the person has
/// cancelled it. A file that another program has changed is overwritten only if the person says so.
class DocumentFiles {
public:
    struct Hooks {
        std::function<void()> replacing; ///< the document's tables are about to end
        std::function<void()> replaced;  ///< other content is in place, or the old one after all
        /// The path or the modified state may differ. DURABLE: what has been saved outlives a power cut.
        std::function<void(bool durable)> saved;
        /// Something has happened that the event log is to keep. Nothing where there is none.
        std::function<void(const ShownText&)> event{};
    };

    DocumentFiles(TQuobrixDocument& document, Settings& settings, RecentFiles& recent, Prompter& prompter,
                  FileChooser& chooser, DiskRunner runDisk, Hooks hooks);

    bool newFile();
    /// PATH becomes the document; one that is open already stays as it is.
    bool open(const std::filesystem::path& path);
    bool chooseAndOpen();
    bool save();
    bool saveAs();
    /// Removes the unused space from the document's file.
    bool compact();
    /// Makes sure that nothing is lost when the document goes away, and remembers it as the last file.
    bool close();

    /// Tells, once for each, which logs parts that cannot be read belong to. Objects are loaded when they are first
    /// shown, so this is asked after every page. DOUBT: why there may be more than is known of.
    void tellDamage(const std::optional<std::string>& doubt = {});

    /// Asks whether to open a file anew that another program has changed while it was shown, unless there are changes
    /// that this would discard: these are asked about when they are saved. Whether it was opened.
    bool offerReload();

    /// Opens the example delivered as PATH without adding it to what is reopened at the next start.
    bool openExample(const std::filesystem::path& path);
    /// The document was begun as a new one; only opening a file ends that.
    bool untitled() const { return untitled_; }

private:
    enum class Outcome { Done, Failed, Cancelled };

    bool mayGo();
    bool offerSaveAs();
    bool needsAnotherName();
    Outcome saveTo(const std::filesystem::path& path, IfThere ifThere = IfThere::Refuse);
    Outcome chooseAndSaveAs(const std::filesystem::path& suggested);
    Outcome finishSave(const Result<void>& result, FileAction action, const std::filesystem::path& path);
    Outcome resolveChange();
    Outcome saveAgain();
    void tellLock();
    void offerCompaction();
    void replace(const std::function<void()>& work);
    bool replaceBy(const std::filesystem::path& path);
    SaveOptions saveOptions(const std::filesystem::path& path);
    bool tell(const Error& error, FileAction action, const std::filesystem::path& path);
    void note(const ShownText& event);

    TQuobrixDocument& document_;
    Settings& settings_;
    RecentFiles& recent_;
    Prompter& prompter_;
    FileChooser& chooser_;
    DiskRunner runDisk_;
    Hooks hooks_;
    std::set<std::string> toldDamage_;
    std::set<std::filesystem::path> compactionOffered_; // in this run
    std::set<std::filesystem::path> toldLocks_;         // folders, in this run
    bool untitled_ = true;
};

} // namespace quobrix
