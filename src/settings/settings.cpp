#include "settings/settings.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <optional>

namespace quobrix {
namespace {

/// TEXT as a number, all of it or nothing.
template <class T>
std::optional<T> parse(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace

std::string MemorySettings::read(std::string_view section, std::string_view name) const {
    const auto found = values_.find({std::string(section), std::string(name)});
    return found == values_.end() ? std::string() : found->second;
}

void MemorySettings::write(std::string_view section, std::string_view name, std::string_view value) {
    const std::pair<std::string, std::string> key{section, name};
    if (value.empty())
        values_.erase(key);
    else
        values_.insert_or_assign(key, std::string(value));
}

Settings::Settings(std::unique_ptr<SettingsBackend> backend) : backend_(std::move(backend)) {}

std::string Settings::getText(std::string_view section, std::string_view name, std::string_view fallback) const {
    std::string text = backend_->read(section, name);
    return text.empty() ? std::string(fallback) : text;
}

std::int32_t Settings::getInteger(std::string_view section, std::string_view name, std::int32_t fallback) const {
    return parse<std::int32_t>(backend_->read(section, name)).value_or(fallback);
}

bool Settings::getBoolean(std::string_view section, std::string_view name, bool fallback) const {
    return getInteger(section, name, fallback ? 1 : 0) != 0;
}

double Settings::getReal(std::string_view section, std::string_view name, double fallback) const {
    const double value = parse<double>(backend_->read(section, name)).value_or(fallback);
    return std::isfinite(value) ? value : fallback;
}

void Settings::setText(std::string_view section, std::string_view name, std::string_view value, bool journal) {
    store(Type::Text, section, name, value, journal);
}

void Settings::setInteger(std::string_view section, std::string_view name, std::int32_t value, bool journal) {
    store(Type::Integer, section, name, value == kMissingInteger ? std::string() : fmt::to_string(value), journal);
}

void Settings::setBoolean(std::string_view section, std::string_view name, bool value, bool journal) {
    setInteger(section, name, value ? 1 : 0, journal);
}

void Settings::setReal(std::string_view section, std::string_view name, double value, bool journal) {
    store(Type::Text, section, name, std::isfinite(value) ? fmt::format("{:.9f}", value) : std::string(), journal);
}

void Settings::undoTo(std::size_t mark) {
    while (journal_.size() > mark) {
        const Entry entry = std::move(journal_.back());
        journal_.pop_back();
        store(entry.type, entry.section, entry.name, entry.previous, false);
    }
}

void Settings::discardTo(std::size_t mark) {
    if (mark < journal_.size())
        journal_.erase(journal_.begin() + static_cast<std::ptrdiff_t>(mark), journal_.end());
}

void Settings::store(Type type, std::string_view section, std::string_view name, std::string_view value, bool journal) {
    const std::string previous = backend_->read(section, name);
    if (journal && journalEnabled_)
        journal_.push_back({std::string(section), std::string(name), previous, type});
    if (previous == value) // a setting that stays as it is costs no write
        return;
    if (type == Type::Integer && !value.empty())
        backend_->writeInteger(section, name, value);
    else
        backend_->write(section, name, value);
}

} // namespace quobrix
