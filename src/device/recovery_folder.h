#pragma once

#include "device/recovery_file.h"
#include "platform/file_system.h"

#include <filesystem>
#include <functional>
#include <memory>
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

    /// What the document that was saved tells.
    struct Document {
        /// Whether it has records of a logger.
        std::function<bool(const std::string& serialText)> knows;
        /// Whether it holds all of a download that was not refused.
        std::function<bool(const KeptDownload&)> holds;
    };
    /// The document is on disk as it is: what is in it need not be kept any longer, and what has been taken back since
    /// it was there is kept anew. DOCUMENT (if given) tells what came into it in another way.
    void documentSaved(const Document* document = nullptr);
    /// There is another document. What was not saved of the one before is left to the next start.
    void documentReplaced();
    /// Whether a merge of this document, saved or not, has been undone since this was last asked.
    bool undoneSince();

    /// The files that earlier runs have left, oldest first; those of a program that still runs are not among them.
    std::vector<std::filesystem::path> left() const;
    /// Reads one of left(), which this run keeps from now on as its own. Also the errors of reading, after which it
    /// stays where it is.
    Result<KeptDownload> take(const std::filesystem::path& file);
    /// FILE, of left(), is damaged: it gets a name under which it is not among them any more, which is returned.
    std::filesystem::path setAside(const std::filesystem::path& file);
    // What was taken last is not wanted in this run: it goes, or is left as it was.
    void discardTaken();
    void leaveTaken() { kept_.pop_back(); }

private:
    struct Kept {
        std::filesystem::path path;
        std::unique_ptr<File> file; ///< and so the lock; none while a saved document holds it
        Bytes content{};            ///< of the file, once it is gone
        bool inDocument = false;
        std::shared_ptr<const bool> done{}; ///< none before it was merged
        bool wasDone = false;
    };

    struct Written {
        std::filesystem::path path;
        std::unique_ptr<File> file;
        Result<void> durable;
    };
    Result<Written> write(std::int64_t time, ByteView bytes);

    const std::filesystem::path folder_;
    FileSystem& files_;
    std::vector<Kept> kept_;
};

} // namespace quobrix
