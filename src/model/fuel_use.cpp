#include "model/fuel_use.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace quobrix {
namespace {

constexpr double kMonth = 365.25 * 86'400 / 12; // s

/// Calls VISIT with each of FILLS and the one before of the same vehicle, or nothing, in the order of time.
template <class Visit>
void inOrder(std::span<const FuelFill> fills, Visit visit) {
    std::optional<std::size_t> before;
    for (const std::size_t fill : fuelOrder(fills)) {
        if (before && fills[*before].vehicle != fills[fill].vehicle)
            before.reset();
        visit(fill, before);
        before = fill;
    }
}

} // namespace

std::vector<std::size_t> fuelOrder(std::span<const FuelFill> fills) {
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < fills.size(); ++i)
        if (fills[i].time && !fills[i].vehicle.empty())
            order.push_back(i);
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return std::tie(fills[i].vehicle, fills[i].time); });
    return order;
}

std::vector<std::optional<FuelUse>> fuelUses(std::span<const FuelFill> fills) {
    std::vector<std::optional<FuelUse>> uses(fills.size());
    std::optional<FuelUse> open; // since the last full tank
    double begin = 0;            // its odometer
    // What was filled at a time that nobody knows belongs to the stretch that its odometer lies in.
    std::set<std::pair<std::string_view, double>> undated;
    for (const FuelFill& fill : fills)
        if (!fill.time && fill.odometer)
            undated.emplace(fill.vehicle, *fill.odometer);
    const auto holdsUndated = [&](const FuelFill& end) {
        const auto next = undated.upper_bound({end.vehicle, begin});
        return next != undated.end() && next->first == end.vehicle && next->second <= *end.odometer;
    };
    inOrder(fills, [&](std::size_t i, std::optional<std::size_t> before) {
        const FuelFill& fill = fills[i];
        const bool known = fill.odometer && std::isfinite(*fill.odometer) && fill.amount && *fill.amount > 0 &&
                           std::isfinite(*fill.amount);
        const bool rises = before && fills[*before].odometer && known && *fill.odometer > *fills[*before].odometer;
        if (!rises || fill.missedFill)
            open.reset();
        if (open) {
            open->fuel += *fill.amount;
            open->price =
                open->price && fill.totalPrice ? std::optional(*open->price + *fill.totalPrice) : std::nullopt;
            if (fill.fullTank) {
                open->end = *fill.time;
                open->distance = *fill.odometer - begin;
                if (!holdsUndated(fill))
                    uses[i] = open;
            }
        }
        if (fill.fullTank && known) {
            open = FuelUse{.begin = *fill.time, .price = 0.0};
            begin = *fill.odometer;
        }
    });
    return uses;
}

std::vector<std::optional<std::size_t>> fallenOdometers(std::span<const FuelFill> fills) {
    std::vector<std::optional<std::size_t>> fallen(fills.size());
    inOrder(fills, [&](std::size_t i, std::optional<std::size_t> before) {
        if (before && fills[i].odometer && fills[*before].odometer && !(*fills[i].odometer > *fills[*before].odometer))
            fallen[i] = before;
    });
    return fallen;
}

FuelTotals fuelTotals(std::span<const FuelFill> fills) {
    FuelTotals totals{.fills = fills.size()};
    for (const std::optional<FuelUse>& use : fuelUses(fills)) {
        if (!use)
            continue;
        totals.distance += use->distance;
        totals.fuel += use->fuel;
        if (use->price) {
            totals.pricedDistance += use->distance;
            totals.distancePrice += *use->price;
        }
    }
    inOrder(fills, [&](std::size_t i, std::optional<std::size_t> before) {
        if (!fills[i].totalPrice)
            return;
        totals.price += *fills[i].totalPrice;
        if (before) {
            totals.monthsPrice += *fills[i].totalPrice;
            totals.months += static_cast<double>(*fills[i].time - *fills[*before].time) / kMonth;
        }
    });
    return totals;
}

} // namespace quobrix
