#pragma once

#include "base/utf8.h"
#include "drawing/text_measure.h"

namespace quobrix::test {

/// Every character of every font is 6 wide, every line 12 high; the size of the body is 10.
class FixedMeasure final : public TextMeasure {
public:
    double fontSize() const override { return 10; }
    double width(std::string_view text, FontRole) const override {
        return 6 * static_cast<double>(characterCount(text));
    }
    double ascent(FontRole) const override { return 9; }
    double lineHeight(FontRole) const override { return 12; }
};

/// The texts of DRAWING in the order in which they are painted.
inline std::vector<std::string> textsOf(const Drawing& drawing) {
    std::vector<std::string> texts;
    for (const DrawingCommand& command : drawing.commands)
        if (const auto* text = std::get_if<Text>(&command))
            texts.push_back(text->text);
    return texts;
}

} // namespace quobrix::test
