#include "drawing/svg.h"

#include "base/markup.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <span>

namespace quobrix {
namespace {

constexpr const char* kVariables[] = {"text",     "secondary-text", "ground",     "heading-ground", "rule",
                                      "track",    "accent",         "step-low",   "step-middle",    "step-high",
                                      "step-top", "curve",          "curve-area", "line-1",         "line-2",
                                      "line-3",   "line-4",         "line-5",     "line-6"};
static_assert(std::size(kVariables) == kColourRoles);
constexpr const char* kAnchors[] = {"start", "middle", "end"};

std::string hex(Colour colour) { return fmt::format("#{:02x}{:02x}{:02x}", colour.red, colour.green, colour.blue); }

/// A length with three decimals at most: no reader sees more.
std::string number(double value) { return fmt::format("{:.7g}", std::round(value * 1000) / 1000 + 0.0); }

class SvgWriter {
public:
    /// Without a palette the colours are those of the page around it.
    SvgWriter(const Drawing& drawing, const Palette* palette) : drawing_(drawing), palette_(palette) {}

    std::string write() {
        put("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" viewBox=\"0 0 {0} {1}\" "
            "role=\"img\"",
            number(drawing_.size.width), number(drawing_.size.height));
        if (palette_)
            put(" version=\"1.1\" font-family=\"{}\"", kFontFamily);
        put(" font-size=\"{}\">\n", number(drawing_.fontSize));
        if (!drawing_.title.empty())
            put("<title>{}</title>\n", escapeMarkup(drawing_.title));
        if (!drawing_.description.empty())
            put("<desc>{}</desc>\n", escapeMarkup(drawing_.description));
        for (const DrawingCommand& command : drawing_.commands)
            std::visit([this](const auto& what) { draw(what); }, command);
        out_ += "</svg>\n";
        return std::move(out_);
    }

private:
    template <class... Args>
    void put(fmt::format_string<Args...> format, Args&&... args) {
        fmt::format_to(std::back_inserter(out_), format, std::forward<Args>(args)...);
    }

    std::string colour(ColourRole role) const { return palette_ ? hex((*palette_)[role]) : cssColour(role); }
    std::string stroke(const Stroke& stroke) const {
        std::string text =
            fmt::format("stroke=\"{}\" stroke-width=\"{}\"", colour(stroke.colour), number(stroke.width));
        if (const std::span<const double> lengths = dashLengths(stroke.dash); !lengths.empty())
            text += fmt::format(" stroke-dasharray=\"{}\"", fmt::join(lengths, ","));
        return text;
    }
    static std::string places(const std::vector<Point>& points) {
        std::string text;
        for (const Point& point : points)
            text += (text.empty() ? "" : " ") + number(point.x) + ',' + number(point.y);
        return text;
    }
    static std::string box(const Box& box) {
        return fmt::format("x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"", number(box.left), number(box.top),
                           number(box.width), number(box.height));
    }

    void draw(const Line& line) {
        put("<line x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\" {}/>\n", number(line.from.x), number(line.from.y),
            number(line.to.x), number(line.to.y), stroke(line.stroke));
    }
    void draw(const Polyline& polyline) {
        put("<polyline points=\"{}\" fill=\"none\" {}/>\n", places(polyline.points), stroke(polyline.stroke));
    }
    void draw(const Area& area) {
        put("<polygon points=\"{}\" fill=\"{}\"/>\n", places(area.points), colour(area.fill));
    }
    void draw(const Rectangle& rectangle) {
        put("<rect {} fill=\"{}\"/>\n", box(rectangle.box), colour(rectangle.fill));
    }
    void draw(const Bar& bar) {
        put("<rect {} rx=\"{}\" fill=\"{}\"/>\n", box(bar.box), number(Bar::kRadius), colour(bar.fill));
    }
    void draw(const Segments& segments) {
        put("<path d=\"");
        for (std::size_t i = 0; i + 1 < segments.points.size(); i += 2)
            put("M{},{}L{},{}", number(segments.points[i].x), number(segments.points[i].y),
                number(segments.points[i + 1].x), number(segments.points[i + 1].y));
        put("\" fill=\"none\" {}/>\n", stroke(segments.stroke));
    }
    /// One outline around what hangs together: between rectangles of their own, readers leave seams.
    void draw(const Columns& columns) {
        const auto& spans = columns.spans;
        const auto seen = [&](std::size_t i) { return i < spans.size() && spans[i].bottom > spans[i].top; };
        const auto x = [&](std::size_t i) { return number(columns.left + static_cast<double>(i) * columns.width); };
        put("<path d=\"");
        for (std::size_t begin = 0, end = 0; begin < spans.size(); begin = end + 1) {
            for (end = begin; seen(end); ++end)
                put("{}{},{}H{}", end == begin ? 'M' : 'L', x(end), number(spans[end].top), x(end + 1));
            for (std::size_t i = end; i-- > begin;)
                put("V{}H{}", number(spans[i].bottom), x(i));
            if (end > begin)
                put("Z");
        }
        put("\" fill=\"{}\"/>\n", colour(columns.fill));
    }
    void draw(const Marks& marks) {
        for (const Point place : marks.places)
            put("<polygon points=\"{}\" fill=\"{}\" stroke=\"{}\" stroke-width=\"1\"/>\n",
                places(outline(marks, place)), colour(marks.fill), colour(ColourRole::Ground));
    }
    /// A picture within the picture clips without a name, of which a page could hold two.
    void draw(const Clip& clip) {
        const Box& b = clip.box;
        put("<svg {} viewBox=\"{} {} {} {}\">\n", box(b), number(b.left), number(b.top), number(b.width),
            number(b.height));
    }
    void draw(const EndClip&) { put("</svg>\n"); }
    void draw(const Text& text) {
        const FontStyle style = fontStyle(text.font);
        put("<text x=\"{}\" y=\"{}\" fill=\"{}\"", number(text.place.x), number(text.place.y), colour(text.colour));
        if (text.anchor != Anchor::Start)
            put(" text-anchor=\"{}\"", kAnchors[static_cast<std::size_t>(text.anchor)]);
        if (style.scale != 1)
            put(" font-size=\"{}\"", number(drawing_.fontSize * style.scale));
        if (style.bold)
            put(" font-weight=\"bold\"");
        if (style.family && palette_)
            put(" font-family=\"{}, {}\"", style.family, kFontFamily);
        put(">{}</text>\n", escapeMarkup(text.text));
    }

    const Drawing& drawing_;
    const Palette* palette_;
    std::string out_;
};

} // namespace

std::string cssColour(ColourRole role) { return fmt::format("var(--{})", kVariables[static_cast<std::size_t>(role)]); }

std::string cssColours(const Palette& palette) {
    std::string declarations;
    for (std::size_t i = 0; i < kColourRoles; ++i)
        declarations += fmt::format("--{}:{};", kVariables[i], hex(palette.colours[i]));
    return declarations;
}

std::string writeSvg(const Drawing& drawing, const Palette& palette) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + SvgWriter(drawing, &palette).write();
}

std::string writeInlineSvg(const Drawing& drawing) { return SvgWriter(drawing, nullptr).write(); }

} // namespace quobrix
