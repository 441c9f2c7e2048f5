#pragma once

#include <cstdint>

namespace quobrix::sim {

/// A small generator (SplitMix64) whose numbers are the same on every platform, as the standard library's
/// distributions are not.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    /// An independent sequence for part number INDEX of something with one SEED.
    Random(std::uint64_t seed, std::uint64_t index) : state_(seed * 0x9E3779B97F4A7C15u) {
        state_ = next() + index * 0xD1342543DE82EF95u;
    }

    std::uint64_t next() {
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    double uniform(double low, double high) { return low + (high - low) * static_cast<double>(next() >> 11) * 0x1p-53; }
    /// From LOW to HIGH, both included.
    std::int32_t integer(std::int32_t low, std::int32_t high) {
        return low + static_cast<std::int32_t>(next() % static_cast<std::uint64_t>(high - low + 1));
    }
    bool chance(double probability) { return uniform(0, 1) < probability; }

private:
    std::uint64_t state_;
};

} // namespace quobrix::sim
