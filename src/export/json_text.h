#pragma once

#include <charconv>
#include <iterator>
#include <string>
#include <string_view>

namespace quobrix {

// What JSON (RFC 8259) is put together of.

/// TEXT in quotes. Control characters are escaped, those of Latin-1 too: a terminal obeys them.
std::string jsonText(std::string_view text);

template <class T>
std::string jsonNumber(T value) {
    char buffer[32]; // the shortest text of a double that reads back as it has at most 24 characters
    return {buffer, std::to_chars(std::begin(buffer), std::end(buffer), value).ptr};
}

template <class Items, class ToJson>
std::string jsonArray(const Items& items, const ToJson& toJson) {
    std::string text = "[";
    for (const auto& item : items)
        text += (text.size() > 1 ? "," : "") + toJson(item);
    return text + "]";
}

/// An object whose members are put together one after the other.
class JsonObject {
public:
    void add(std::string_view key, std::string_view json) {
        text_ += (text_.empty() ? '{' : ',') + jsonText(key) + ":";
        text_ += json;
    }
    std::string text() const { return text_.empty() ? "{}" : text_ + "}"; }

private:
    std::string text_;
};

} // namespace quobrix
