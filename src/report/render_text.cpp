#include "report/render.h"

#include "base/utf8.h"

#include <algorithm>

namespace quobrix {
namespace {

void appendCell(std::string& line, std::string_view cell, std::size_t width, bool right) {
    const std::string text = oneLine(cell);
    const std::string padding(width - std::min(width, characterCount(text)), ' ');
    line += right ? padding + text : text + padding;
}

void appendLine(std::string& out, std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    out += line + '\n';
}

/// Each line begins with INDENT.
void appendGrid(std::string& out, const Grid& grid, std::string_view indent) {
    std::vector<std::string> headings;
    for (const Grid::Column& column : grid.columns)
        headings.push_back(column.heading);
    std::vector<std::size_t> widths(headings.size());
    const auto widen = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], characterCount(oneLine(cells[i])));
    };
    const auto append = [&](const std::vector<std::string>& cells) {
        std::string line(indent);
        for (std::size_t i = 0; i < widths.size(); ++i) {
            line += i == 0 ? "" : "  ";
            appendCell(line, cells[i], widths[i], grid.columns[i].figures);
        }
        appendLine(out, std::move(line));
    };
    widen(headings);
    std::ranges::for_each(grid.rows, widen);
    append(headings);
    std::ranges::for_each(grid.rows, append);
}

class TextRenderer {
public:
    explicit TextRenderer(const Report& report) : out_(oneLine(report.title) + '\n') {
        if (!report.blocks.empty() && !std::holds_alternative<Heading>(report.blocks.front()))
            out_ += '\n';
        for (const Block& block : report.blocks)
            std::visit([this](const auto& what) { write(what); }, block);
    }
    std::string text() { return std::move(out_); }

private:
    void write(const Heading& heading) { out_ += '\n' + oneLine(heading.text) + '\n'; }

    void write(const Facts& facts) {
        std::size_t width = 0;
        for (const Facts::Fact& fact : facts.facts)
            width = std::max(width, characterCount(oneLine(fact.label)));
        for (const Facts::Fact& fact : facts.facts) {
            std::string line = "  ";
            appendCell(line, fact.label, width, false);
            appendLine(line + "  " + oneLine(fact.text));
        }
    }

    void write(const Grid& grid) { appendGrid(out_, grid, "  "); }

    void write(const Picture& picture) {
        constexpr double kAnyWidth = 600;
        const Drawing drawing = picture.draw({kAnyWidth, kUnlimited}, TableTextMeasure(12));
        appendLine("  " + oneLine(drawing.title + ": " + drawing.description));
    }
    void write(const Paragraph& paragraph) {
        const std::string lines = harmlessLines(paragraph.text);
        for (std::string_view rest = lines; !rest.empty();) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            appendLine("  " + std::string(rest.substr(0, end)));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    void appendLine(std::string line) { quobrix::appendLine(out_, std::move(line)); }

    std::string out_;
};

} // namespace

std::string renderText(const Report& report) { return TextRenderer(report).text(); }

std::string renderText(const Grid& grid) {
    std::string text;
    appendGrid(text, grid, "");
    return text;
}

} // namespace quobrix
