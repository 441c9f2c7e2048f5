#pragma once

#include "device/recovery_file.h"
#include "platform/file_system.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quobrix {

/// Where this user's are; empty if the user has no home.
std::filesystem::path recoveryFolder();

/// Downloads that are in no saved document yet, a file each, so that what a logger has handed over is never in memory
/// only: a crash, a power cut, an undo or a document that is not saved after all leaves the file to the next start. It
/// is locked while its program runs. User-interface thread only.
class RecoveryFolder {
public:
    /// FOLDER need not exist before there is something to be kept.
    explicit RecoveryFolder(std::filesystem::path folder, FileSystem& files = FileSystem::system())
        : folder_(std::move(folder)), files_(files) {}

    /// Where they are.
    const std::filesystem::path& path() const { return folder_; }

    /// Keeps DOWNLOAD, durably when it returns. With NotDurable it is kept, too, but a power cut may take it.
    Result<void> keep(const KeptDownload& download);
    /// What was kept or taken last is in the document for as long as *DONE, see TableEdits::lastStepDone().
    void merged(std::shared_ptr<const bool> done);

    /// Whether the document holds all of a download that was not refused.
    using Holds = std::function<bool(const KeptDownload&)>;
    /// The document is on disk as it is: what is in it need not be kept any longer. HOLDS (if given) tells whether that
    /// goes for what came into it in another way, too, of loggers that were downloaded in this run.
    void documentSaved(const Holds& holds = {});
    /// There is another document. What was not saved of the one before is left to the next start.
    void documentReplaced();
    /// Whether a merge of this document, saved or not, has been undone since this was last asked.
    bool undoneSince();

    /// The files that earlier runs have left, oldest first; those of a program that still runs are not among them.
    std::vector<std::filesystem::path> left() const;
    /// Reads one of left(), which this run keeps from now on as its own. Also the errors of reading, after which it
    /// stays where it is.
    Result<KeptDownload> take(const std::filesystem::path& file);
    // What was taken last is not wanted in this run: it goes, or is left as it was.
    void discardTaken();
    void leaveTaken() { kept_.pop_back(); }

private:
    struct Kept {
        std::filesystem::path path;
        std::unique_ptr<File> file; ///< and so the lock; none once a saved document has held it
        bool inDocument = false;
        std::shared_ptr<const bool> done{}; ///< none before it was merged
        bool wasDone = false;
    };

    static Result<KeptDownload> read(File& file);

    const std::filesystem::path folder_;
    FileSystem& files_;
    std::vector<Kept> kept_;
    std::set<std::string> downloaded_; ///< serial numbers
};

} // namespace quobrix
