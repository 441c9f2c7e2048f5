#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// The text of a settings file: "[section]" lines and "name=value" lines. Control characters, backslashes and, in
/// names, the characters with a meaning of their own are written as \xHH, so any text can be a name or a value. Lines
/// that are neither (comments, what a later version may add) are kept as they are and where they are.
class IniText {
public:
    IniText() = default;
    /// TEXT is UTF-8 with LF or CRLF line ends. Of a name given twice in a section, the last one counts.
    explicit IniText(std::string_view text);

    /// The value, or an empty text.
    std::string value(std::string_view section, std::string_view name) const;
    /// Replaces or adds the value; an empty one removes every line of that name.
    void setValue(std::string_view section, std::string_view name, std::string_view value);
    std::string text() const;

private:
    enum class Kind { Section, Entry, Other };
    struct Line {
        Kind kind;
        std::string name;  ///< of the section or of the value, decoded
        std::string value; ///< decoded
        std::string text;  ///< as it stands in the file
    };

    static Line parseLine(std::string_view text);

    std::vector<Line> lines_;
};

} // namespace quobrix
