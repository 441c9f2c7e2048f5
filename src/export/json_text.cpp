#include "export/json_text.h"

#include "base/utf8.h"

#include <fmt/format.h>

namespace quobrix {

std::string jsonText(std::string_view text) {
    const std::string valid = validUtf8(text);
    std::string result = "\"";
    for (std::size_t at = 0; at < valid.size(); ++at) {
        const auto byte = static_cast<unsigned char>(valid[at]);
        if (byte == '"' || byte == '\\')
            result += '\\';
        if (byte == 0xC2 && static_cast<unsigned char>(valid[at + 1]) < 0xA0)
            result += fmt::format("\\u{:04x}", static_cast<unsigned char>(valid[++at]));
        else if (byte < 0x20 || byte == 0x7F)
            result += fmt::format("\\u{:04x}", byte);
        else
            result += valid[at];
    }
    return result + '"';
}

} // namespace quobrix
