#include "device/logger_status.h"

#include <algorithm>
#include <initializer_list>

namespace quobrix {
namespace {

bool containsAny(std::string_view text, std::initializer_list<std::string_view> parts) {
    return std::ranges::any_of(parts, [&](std::string_view part) { return text.find(part) != std::string_view::npos; });
}

} // namespace

bool isNewerModel(std::string_view product) { return !containsAny(product, {"4730", "4731"}); }

bool hasVinMode(std::string_view product) {
    return containsAny(product, {"4731", "4751", "4755", "4771", "4775", "4756", "4776"});
}

bool hasVolumes(std::string_view product) { return containsAny(product, {"4756", "4776"}); }

bool knowsAnomalousVehicles(std::string_view product) { return containsAny(product, {"4730", "4750", "4770", "4774"}); }

} // namespace quobrix
