#include "simulator/port_store.h"

#include "simulator/fault.h"

#include "base/path_text.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace quobrix::sim {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPortMagic = "QBXPORT2";
constexpr std::size_t kPrefixSize = 8 + 4 + 4;
constexpr std::uint32_t kNothingAttached = 0xFFFFFFFFu;
// Windows takes every name that begins with COM3 and a dot for the serial port.
constexpr std::string_view kPrefix = "port-", kExtension = ".logger";

ByteView asBytes(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

/// The bytes of the head, by the file's first bytes; nothing if it is no port file.
std::optional<std::uint32_t> headSize(ByteView prefix) {
    ByteReader in(prefix);
    const ByteView magic = in.bytes(kPortMagic.size());
    const std::uint32_t size = in.u32();
    if (!in.complete() || !std::equal(magic.begin(), magic.end(), asBytes(kPortMagic).begin()))
        return std::nullopt;
    return size;
}

/// Up to COUNT bytes of the file's beginning.
Result<Bytes> readBeginning(std::ifstream& in, std::uintmax_t count) {
    Bytes bytes(static_cast<std::size_t>(count));
    in.seekg(0);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (in.bad())
        return fault(ErrorKind::Io, "the port's file cannot be read");
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    in.clear();
    return bytes;
}

} // namespace

Logger& Port::attach(const std::string& serial) {
    auto found = std::find_if(loggers.begin(), loggers.end(), [&](const Logger& l) { return l.serial == serial; });
    if (found == loggers.end()) {
        found = loggers.insert(loggers.end(), Logger{});
        found->serial = serial;
    }
    attached = static_cast<std::size_t>(found - loggers.begin());
    return *found;
}

Bytes encodePort(const Port& port) {
    ByteWriter head;
    head.u32(port.attached ? static_cast<std::uint32_t>(*port.attached) : kNothingAttached);
    head.u32(static_cast<std::uint32_t>(port.loggers.size()));
    for (const Logger& logger : port.loggers) {
        writeLogger(head, logger);
        head.u32(static_cast<std::uint32_t>(logger.memory.size()));
        head.u32(checksum(logger.memory));
    }
    ByteWriter out;
    out.bytes(asBytes(kPortMagic));
    out.u32(static_cast<std::uint32_t>(head.view().size()));
    out.u32(checksum(head.view()));
    out.bytes(head.view());
    for (const Logger& logger : port.loggers)
        out.bytes(logger.memory);
    return out.take();
}

Result<Port> decodePort(ByteView bytes, Memories memories) {
    const auto size = headSize(bytes);
    if (!size)
        return fault(ErrorKind::NotADocument, "not a port file of the simulated logger");
    ByteReader in(bytes);
    in.bytes(kPortMagic.size() + 4);
    const std::uint32_t headSum = in.u32();
    const ByteView headBytes = in.bytes(*size);
    if (!in.complete() || checksum(headBytes) != headSum)
        return fault(ErrorKind::Corrupt, "the port's file is damaged");

    ByteReader head(headBytes);
    const std::uint32_t attached = head.u32();
    const std::uint32_t count = head.count(1);
    Port port;
    for (std::uint32_t i = 0; i < count && head.complete(); ++i) {
        Logger logger = readLogger(head);
        const std::uint32_t memorySize = head.u32();
        const std::uint32_t memorySum = head.u32();
        if (memories == Memories::Read) {
            const ByteView memory = in.bytes(memorySize);
            if (!in.complete() || checksum(memory) != memorySum)
                return fault(ErrorKind::Corrupt, "the logger's memory is damaged");
            logger.memory.assign(memory.begin(), memory.end());
        }
        port.loggers.push_back(std::move(logger));
    }
    if (!head.finished() || (attached != kNothingAttached && attached >= count) ||
        (memories == Memories::Read && in.remaining() != 0))
        return fault(ErrorKind::Corrupt, "the port's file is damaged");
    if (attached != kNothingAttached)
        port.attached = attached;
    return port;
}

bool PortStore::isPortName(std::string_view name) {
    const auto plain = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    };
    return !name.empty() && name.size() <= 32 && std::all_of(name.begin(), name.end(), plain);
}

fs::path PortStore::file(std::string_view name) const {
    return folder_ / (std::string(kPrefix).append(name).append(kExtension));
}

bool PortStore::exists(std::string_view name) const {
    std::error_code error;
    return isPortName(name) && fs::is_regular_file(file(name), error);
}

std::int64_t Faults::drifted(std::int64_t now) const {
    constexpr double kSecondsPerDay = 86400;
    return std::llround(drift * static_cast<double>(now - driftSince) / kSecondsPerDay);
}

fs::path PortStore::faultFile(std::string_view name) const { return folder_ / ("." + std::string(name) + ".faults"); }

Faults PortStore::faults(std::string_view name) const {
    Faults faults;
    std::ifstream in(isPortName(name) ? faultFile(name) : fs::path());
    if (!(in >> faults.delay >> faults.garbage >> faults.drift >> faults.driftSince))
        return {};
    for (Faults::Failure f; in >> f.function >> f.result >> f.after >> f.once;)
        faults.failures.push_back(f);
    return faults;
}

Result<void> PortStore::setFaults(std::string_view name, const Faults& faults) const {
    if (!exists(name))
        return fault(ErrorKind::NotFound, std::string(name) + ": no such port");
    auto lock = lockFolder();
    if (!lock)
        return lock.error();
    return writeFaults(name, faults);
}

Result<void> PortStore::writeFaults(std::string_view name, const Faults& faults) const {
    const fs::path beside = folder_ / ("." + std::string(name) + ".newfaults");
    std::error_code error;
    if (faults.none()) {
        fs::remove(faultFile(name), error);
        return {};
    }
    std::ofstream out(beside, std::ios::trunc);
    out << faults.delay << ' ' << faults.garbage << ' ' << faults.drift << ' ' << faults.driftSince << '\n';
    for (const Faults::Failure& f : faults.failures)
        out << f.function << ' ' << f.result << ' ' << f.after << ' ' << f.once << '\n';
    out.close();
    if (out)
        fs::rename(beside, faultFile(name), error);
    return out && !error ? Result<void>() : fault(ErrorKind::Io, std::string(name) + ": its faults cannot be written");
}

std::optional<std::int32_t> PortStore::failureOf(std::string_view name, std::string_view function) const {
    const auto find = [&](Faults& faults) {
        return std::find_if(faults.failures.begin(), faults.failures.end(),
                            [&](const Faults::Failure& f) { return f.function == function; });
    };
    if (Faults unlocked = faults(name); find(unlocked) == unlocked.failures.end())
        return {};
    const auto lock = lockFolder();
    Faults current = faults(name);
    const auto failure = find(current);
    if (!lock || failure == current.failures.end())
        return {};
    std::optional<std::int32_t> result;
    if (failure->after > 0) {
        --failure->after;
    } else {
        result = failure->result;
        if (!failure->once)
            return result;
        current.failures.erase(failure);
    }
    static_cast<void>(writeFaults(name, current));
    return result;
}

std::vector<std::string> PortStore::ports() const {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
        const std::string stem = utf8(entry->path().stem());
        const std::string name = stem.starts_with(kPrefix) ? stem.substr(kPrefix.size()) : std::string();
        if (entry->path().extension() == kExtension && exists(name))
            names.push_back(name);
    }
    // COM2 before COM10: shorter names first.
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    return names;
}

Result<FileLock> PortStore::lockFolder() const { return FileLock::wait(folder_ / ".lock"); }

Result<FileLock> PortStore::open(std::string_view name) const {
    return FileLock::tryLock(folder_ / ("." + std::string(name) + ".open"));
}

Result<Port> PortStore::read(std::string_view name, Memories memories) const {
    if (!exists(name))
        return fault(ErrorKind::NotFound, std::string(name) + ": no such port");
    auto lock = lockFolder();
    if (!lock)
        return lock.error();
    return readLocked(name, memories);
}

Result<Port> PortStore::readLocked(std::string_view name, Memories memories) const {
    if (!exists(name))
        return fault(ErrorKind::NotFound, std::string(name) + ": no such port");
    std::error_code error;
    const std::uintmax_t fileSize = fs::file_size(file(name), error);
    std::ifstream in(file(name), std::ios::binary);
    if (error || !in)
        return fault(ErrorKind::Io, std::string(name) + ": the port's file cannot be read");
    std::uintmax_t wanted = fileSize;
    if (memories == Memories::Skip) {
        const auto prefix = readBeginning(in, std::min<std::uintmax_t>(fileSize, kPrefixSize));
        if (!prefix)
            return prefix.error();
        wanted = std::min<std::uintmax_t>(fileSize, kPrefixSize + headSize(*prefix).value_or(0));
    }
    const auto bytes = readBeginning(in, wanted);
    if (!bytes)
        return bytes.error();
    auto port = decodePort(*bytes, memories);
    if (!port)
        return fault(port.error().kind, std::string(name) + ": " + port.error().detail);
    return port;
}

Result<void> PortStore::writeLocked(std::string_view name, const Port& port) const {
    const fs::path target = file(name);
    const fs::path beside = folder_ / ("." + std::string(name) + ".new");
    const Bytes bytes = encodePort(port);
    std::ofstream out(beside, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    std::error_code error;
    if (out)
        fs::rename(beside, target, error);
    if (!out || error) {
        fs::remove(beside, error);
        return fault(ErrorKind::Io, std::string(name) + ": the port's file cannot be written in " + folder_.string());
    }
    return {};
}

Result<void> PortStore::create(std::string_view name) const {
    if (!isPortName(name))
        return fault(ErrorKind::NotFound, "\"" + std::string(name) + "\" is no port name");
    std::error_code error;
    fs::create_directories(folder_, error);
    if (error)
        return fault(ErrorKind::Io, folder_.string() + ": " + error.message());
    auto lock = lockFolder();
    if (!lock)
        return lock.error();
    return exists(name) ? Result<void>() : writeLocked(name, Port{});
}

Result<void> PortStore::remove(std::string_view name) const {
    if (!exists(name))
        return fault(ErrorKind::NotFound, std::string(name) + ": no such port");
    auto lock = lockFolder();
    if (!lock)
        return lock.error();
    std::error_code error;
    fs::remove(file(name), error);
    fs::remove(folder_ / ("." + std::string(name) + ".open"), error);
    fs::remove(faultFile(name), error);
    return {};
}

} // namespace quobrix::sim
