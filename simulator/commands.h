#pragma once

#include "simulator/port_store.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The commands of quobrix-sim. Each one's error says in one line what is wrong; what they tell goes to standard
/// output.
namespace quobrix::sim {

/// What attach and set may change of a logger; what is missing stays as it is.
struct Settings {
    std::optional<std::string> product;
    std::optional<std::int64_t> clockOffset; ///< s ahead of the computer's clock
    bool clockNeverSet = false;              ///< the clock runs from the year 2000
    std::vector<double> bandLimits;          ///< three, MPH
    std::vector<double> braking;             ///< two, m/s2
    std::vector<double> acceleration;        ///< two, m/s2
    std::vector<std::string> parameters;     ///< up to five "IDENTIFIER:SECONDS"; the slots left over are not selected
    std::optional<bool> led, vinMode, armed, logDownloads;
    std::optional<std::int32_t> volume, carType;
    std::optional<std::uint32_t> flags, capacity;
};

struct RecordOptions {
    std::string drive; ///< a path
    std::string vin;
    std::optional<std::string> told; ///< by the vehicle instead of its VIN, perhaps nothing
    std::string start;               ///< "YYYY-MM-DD HH:MM:SS", local; empty: so that the drive ends now
    std::int32_t driver = 0;
    bool disconnected = false;
};

struct GenerateOptions {
    std::uint32_t trips = 0;
    std::uint64_t seed = 1;
    std::string end; ///< "YYYY-MM-DD HH:MM:SS", local, of the last trip; empty: a fixed day
};

struct FaultOptions {
    double delay = 0;              ///< s
    bool garbage = false;          ///< in the lengths within record sets
    double drift = 0;              ///< s a day, of the logger's clock
    std::vector<std::string> fail; ///< "FUNCTION" or "FUNCTION=RESULT"
    std::uint32_t after = 0;
    bool once = false;
};

Result<void> attach(const PortStore& store, const std::string& port, const std::string& serial,
                    const Settings& settings);
Result<void> detach(const PortStore& store, const std::string& port);
Result<void> list(const PortStore& store);
Result<void> set(const PortStore& store, const std::string& port, const Settings& settings);
Result<void> record(const PortStore& store, const std::string& port, const RecordOptions& options);
Result<void> generate(const PortStore& store, const std::string& port, const GenerateOptions& options);
/// Adds three months in a household's VEHICLE, "wagon" or "pickup".
Result<void> household(const PortStore& store, const std::string& port, const std::string& vehicle);
/// Makes the port as faulty as OPTIONS say, and no more than that.
Result<void> fault(const PortStore& store, const std::string& port, const FaultOptions& options);
Result<void> memory(const PortStore& store, const std::string& port, bool clear);
/// Writes the image of the main log, as the maker's software saves a log to a file.
Result<void> exportLog(const PortStore& store, const std::string& port, const std::filesystem::path& target);

/// All that the port's logger holds as one JSON object.
Result<std::string> dumpJson(const PortStore& store, const std::string& port);

} // namespace quobrix::sim
