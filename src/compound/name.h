#pragma once

#include "compound/format.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace quobrix::cfb {

/// The name of a directory entry, where it lies: 1 to 31 UTF-16 units. Names that differ only in case are one name.
class EntryName {
public:
    EntryName(const std::uint8_t* units, std::uint32_t length) : units_(units), length_(length) {}

    std::uint32_t length() const { return length_; }
    char16_t operator[](std::uint32_t i) const { return load16(units_ + 2 * i); }
    /// In UTF-8.
    std::string text() const;
    /// Equal for names that count as one; different in every run of the program.
    std::uint32_t hash() const;

private:
    const std::uint8_t* units_;
    std::uint32_t length_;
};

/// Negative, 0 or positive: the order of MS-CFB 2.6.4, shorter names first, then by upper-case units.
int compareNames(EntryName a, EntryName b);

/// A name as an entry holds it: up to 31 units, a terminator, zeros.
struct NameField {
    static constexpr std::uint32_t kMostUnits = 31;
    std::array<std::uint8_t, 2 * (kMostUnits + 1)> bytes{};
    std::uint32_t length = 0; ///< units

    /// TEXT is UTF-8; nothing when it is empty, too long or not UTF-8.
    static std::optional<NameField> fromText(std::string_view text);
    EntryName name() const { return {bytes.data(), length}; }
};

} // namespace quobrix::cfb
