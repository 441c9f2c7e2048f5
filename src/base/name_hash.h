#pragma once

#include <cstdint>
#include <string_view>

namespace quobrix {

/// The identity of a persistent class or a column key: h = h × 31 + c over the name's characters taken as signed
/// bytes, from 0, modulo 2^32. Files carry it, so a class that is renamed is another class.
constexpr std::uint32_t nameHash(std::string_view name) {
    std::uint32_t hash = 0;
    for (const char c : name)
        hash = hash * 31u + static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(c)));
    return hash;
}

static_assert(nameHash("TVehicleNamesTable") == 1971099582u);

} // namespace quobrix
