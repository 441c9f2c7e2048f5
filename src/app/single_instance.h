#pragma once

#include <QLocalServer>
#include <QLockFile>

#include <filesystem>
#include <functional>
#include <memory>

namespace quobrix {

/// Lets one copy of the program run for each user, and takes the files that later copies were started with.
///
/// The lock lies with the user's settings: copies with settings of their own do not disturb each other. Where no lock
/// can be made, every copy runs.
class SingleInstance {
public:
    explicit SingleInstance(const std::filesystem::path& settingsFolder);

    /// This copy is the first.
    bool first() const { return first_; }
    /// Sends FILE to the first copy. False if it does not take it within two seconds.
    bool send(const std::filesystem::path& file) const;
    /// Calls OPEN, from now on, with each file that a later copy sends.
    void receive(std::function<void(const std::filesystem::path&)> open);

private:
    void read(QLocalSocket& socket);

    QLockFile lock_;
    QString serverName_;
    bool first_;
    std::function<void(const std::filesystem::path&)> open_;
    QLocalServer server_;
};

} // namespace quobrix
