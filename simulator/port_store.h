#pragma once

#include "simulator/logger.h"
#include "simulator/platform.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix::sim {

/// A serial port: the loggers that were ever attached to it, and which of them is attached now.
struct Port {
    std::vector<Logger> loggers;
    std::optional<std::size_t> attached;

    /// nullptr if nothing is attached.
    Logger* logger() { return attached ? &loggers[*attached] : nullptr; }
    const Logger* logger() const { return attached ? &loggers[*attached] : nullptr; }
    /// The logger SERIAL with what it kept from an earlier time, or a new one; attached from now on.
    Logger& attach(const std::string& serial);
};

enum class Memories { Skip, Read };

/// What is wrong with a port.
struct Faults {
    /// A function that fails.
    struct Failure {
        std::string function;     ///< as quobrix.h names it, without "Quobrix"
        std::int32_t result = -1; ///< what it returns
        std::uint32_t after = 0;  ///< calls that go well before
        bool once = false;        ///< fails one time only
    };
    double delay = 0;            ///< s that opening the port and each call to its logger take
    bool garbage = false;        ///< the lengths within the record sets that it hands over are wrong
    double drift = 0;            ///< s a day by which the logger's clock runs ahead …
    std::int64_t driftSince = 0; ///< … since then by the computer's, s since 1970-01-01 00:00 UTC
    std::vector<Failure> failures{};

    bool none() const { return delay == 0 && !garbage && drift == 0 && failures.empty(); }
    /// s that the clock has drifted until NOW.
    std::int64_t drifted(std::int64_t now) const;
};

/// The folder with one file a port, which programs in several processes read and change at the same time: every access
/// reads the file afresh under a lock of the folder, and a change is written beside it and renamed over it.
class PortStore {
public:
    explicit PortStore(std::filesystem::path folder) : folder_(std::move(folder)) {}

    const std::filesystem::path& folder() const { return folder_; }

    /// Letters and digits, at most 32: a name that can be no path.
    static bool isPortName(std::string_view name);
    bool exists(std::string_view name) const;
    /// Names of all ports, sorted. A folder that is not there has none.
    std::vector<std::string> ports() const;

    /// ErrorKind::NotFound if there is no such port, Corrupt if its file is damaged.
    Result<Port> read(std::string_view name, Memories memories) const;
    /// Makes the port if it is not there, and the folder.
    Result<void> create(std::string_view name) const;
    Result<void> remove(std::string_view name) const;

    /// Reads the port, hands it to CHANGE (Port& -> Result<void>) and writes it unless that fails.
    template <class F>
    Result<void> update(std::string_view name, F change) const {
        auto lock = lockFolder();
        if (!lock)
            return lock.error();
        auto port = readLocked(name, Memories::Read);
        if (!port)
            return port.error();
        QUOBRIX_TRY(change(*port));
        return writeLocked(name, *port);
    }

    /// Of a port that is not there: none.
    Faults faults(std::string_view name) const;
    /// ErrorKind::NotFound if there is no such port.
    Result<void> setFaults(std::string_view name, const Faults& faults) const;
    /// What this call of FUNCTION, by whatever program, is to fail with.
    std::optional<std::int32_t> failureOf(std::string_view name, std::string_view function) const;

    /// Held by the one who has the port open; ErrorKind::InUse if someone else has it.
    Result<FileLock> open(std::string_view name) const;

private:
    std::filesystem::path file(std::string_view name) const;
    std::filesystem::path faultFile(std::string_view name) const;
    Result<void> writeFaults(std::string_view name, const Faults& faults) const;
    Result<FileLock> lockFolder() const;
    Result<Port> readLocked(std::string_view name, Memories memories) const;
    Result<void> writeLocked(std::string_view name, const Port& port) const;

    std::filesystem::path folder_;
};

/// A port file's bytes:
///   8 bytes  "QBXPORT" and the format's version in one digit
///   u32      bytes of the head
///   u32      checksum of the head
///   head     u32 which logger is attached (0xFFFFFFFF: none), u32 count, and of each logger its values, u32 bytes and
///            u32 checksum of its memory
///   memories of the loggers, one behind the other
Bytes encodePort(const Port& port);
Result<Port> decodePort(ByteView bytes, Memories memories);

} // namespace quobrix::sim
