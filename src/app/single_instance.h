#pragma once

#include <QLocalServer>
#include <QLockFile>

#include <chrono>
#include <filesystem>
#include <functional>

namespace quobrix {

/// Lets one copy of the program run for each user, and takes the files that later copies were started with.
///
/// The lock lies with the user's settings: copies with settings of their own do not disturb each other. Where no lock
/// can be made, every copy runs. A file is not lost whatever the first copy is doing, ending included: who hands it
/// over opens it himself unless he is told that it has been opened.
class SingleInstance {
public:
    /// Tells the copy that handed a file over that it need not open it any more.
    using Opened = std::function<void()>;
    /// Opens a file, now or later, and says so.
    using Open = std::function<void(const std::filesystem::path&, Opened)>;

    /// PATIENCE: how long a first copy may be silent before a later one does without it.
    explicit SingleInstance(const std::filesystem::path& settingsFolder,
                            std::chrono::milliseconds patience = std::chrono::seconds(5));
    ~SingleInstance() { release(); }

    /// This copy is the first.
    bool first() const { return first_; }
    /// Has the first copy open FILE and waits until it has. False if this copy is to open it: the first one has ended,
    /// and this one may have taken its place, or it does not answer.
    bool handOver(const std::filesystem::path& file);
    /// Calls OPEN, from now on, with each file that a later copy hands over.
    void receive(Open open);
    /// Gives up being the first. Files that have not been opened go back to those who handed them over.
    void release();

private:
    enum class Answer { Opened, None, Silence };

    bool tryFirst();
    Answer send(const std::filesystem::path& file) const;
    void read(QLocalSocket& socket);

    QLockFile lock_;
    const QString serverName_; ///< empty: there is no place for a socket
    const std::chrono::milliseconds patience_;
    bool first_;
    Open open_;
    QLocalServer server_;
};

} // namespace quobrix
