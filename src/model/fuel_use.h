#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quobrix {

/// One filling of a tank.
struct FuelFill {
    std::string vehicle;                ///< VIN; empty: not known
    std::optional<std::int64_t> time{}; ///< s since 1970-01-01 00:00 UTC
    std::optional<double> odometer{};   ///< m
    std::optional<double> amount{};     ///< US gallons
    bool fullTank = false;              ///< afterwards
    bool missedFill = false;            ///< since the one before, the vehicle was filled without a record of it
    std::optional<double> totalPrice{}; ///< in whatever money a person counts
};

/// What a vehicle used from one full tank to the next.
struct FuelUse {
    std::int64_t begin = 0, end = 0; ///< the times of both fills
    double distance = 0;             ///< m, above 0
    double fuel = 0;                 ///< US gallons, above 0: all that was filled in after the first up to the last
    std::optional<double> price{};   ///< of that; nothing if any of it has none
};

/// FILLS by vehicle, then by time, without those that lack either.
std::vector<std::size_t> fuelOrder(std::span<const FuelFill> fills);

/// What was used up to each of FILLS, in their order: nothing unless the tank was full then and some time before, all
/// between was recorded, dates included, and odometers rose. Partial fills count for the next full tank.
std::vector<std::optional<FuelUse>> fuelUses(std::span<const FuelFill> fills);

/// The fill right before each of FILLS, of the same vehicle, whose odometer is not below: it, or a later one, is wrong.
std::vector<std::optional<std::size_t>> fallenOdometers(std::span<const FuelFill> fills);

/// What all that is known comes to.
struct FuelTotals {
    std::size_t fills = 0;
    double distance = 0, fuel = 0;                ///< of the uses
    double pricedDistance = 0, distancePrice = 0; ///< of the uses with a price
    double price = 0;                             ///< of all fills that have one
    /// Of the fills with a price that have one before them, with the average months (a twelfth of 365.25 days) since
    /// that one.
    double monthsPrice = 0, months = 0;
};
FuelTotals fuelTotals(std::span<const FuelFill> fills);

} // namespace quobrix
