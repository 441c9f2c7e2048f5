#include "report/render.h"

#include "base/markup.h"
#include "drawing/svg.h"
#include "texts/catalogue.h"

#include <fmt/format.h>

namespace quobrix {
namespace {

constexpr double kTextSize = 15; // CSS pixels
constexpr double kPictureWidth = 640;
constexpr double kShareWidth = 180;

constexpr const char* kStyle = R"(body{{margin:0 auto;max-width:60em;padding:1.5em;font:{size}px/1.4 {family};
color:var(--text);background:var(--ground)}}
h1{{font-size:1.6em;margin:0 0 .6em}}
h2{{font-size:1.15em;margin:1.6em 0 .6em;break-after:avoid}}
dl{{display:grid;grid-template-columns:max-content 1fr;gap:.15em 1.6em;margin:0}}
dt{{color:var(--secondary-text)}}
dd{{margin:0;overflow-wrap:anywhere}}
p{{margin:.4em 0;white-space:pre-line;overflow-wrap:anywhere}}
table{{border-collapse:collapse;margin:.6em 0}}
thead{{display:table-header-group}}
tr{{break-inside:avoid}}
th,td{{padding:.2em 1.6em .2em 0;text-align:left;vertical-align:top;font-weight:normal}}
th:last-child,td:last-child{{padding-right:0}}
thead th{{color:var(--secondary-text);border-bottom:1px solid var(--rule)}}
.figure{{text-align:right;font-variant-numeric:tabular-nums;white-space:nowrap}}
svg{{display:block;max-width:100%;height:auto;margin:.6em 0;break-inside:avoid}}
td svg{{float:left;margin:0 .8em 0 0}}
:root{{color-scheme:light dark;{light}}}
@media screen and (prefers-color-scheme:dark){{:root{{{dark}}}}}
@page{{margin:15mm}}
@media print{{body{{padding:0;max-width:none}}}}
)";

class HtmlRenderer {
public:
    explicit HtmlRenderer(const Report& report) {
        const std::string title = escapeMarkup(report.title);
        put("<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"{}\">\n<head>\n"
            "<meta charset=\"utf-8\"/>\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
            "<title>{}</title>\n<style>\n",
            escapeMarkup(textLanguage()), title);
        put(kStyle, fmt::arg("size", kTextSize), fmt::arg("family", kFontFamily),
            fmt::arg("light", cssColours(kLightPalette)), fmt::arg("dark", cssColours(kDarkPalette)));
        put("</style>\n</head>\n<body>\n<main>\n<h1>{}</h1>\n", title);
        for (const Section& section : sections(report))
            write(section);
        put("</main>\n</body>\n</html>\n");
    }
    std::string html() { return std::move(out_); }

private:
    template <class... Args>
    void put(fmt::format_string<Args...> format, Args&&... args) {
        fmt::format_to(std::back_inserter(out_), format, std::forward<Args>(args)...);
    }

    void write(const Section& section) {
        if (section.heading)
            put("<section>\n<h2>{}</h2>\n", escapeMarkup(section.heading->text));
        for (const Block& block : section.blocks)
            std::visit([this](const auto& what) { write(what); }, block);
        if (section.heading)
            put("</section>\n");
    }

    void write(const Heading&) {} // sections() has taken them out

    void write(const Facts& facts) {
        put("<dl>\n");
        for (const Facts::Fact& fact : facts.facts)
            put("<dt>{}</dt><dd>{}</dd>\n", escapeMarkup(fact.label), escapeMarkup(fact.text));
        put("</dl>\n");
    }

    void write(const Grid& grid) {
        const auto cell = [&](std::size_t column, const char* tag, const char* scope, const std::string& text,
                              const std::string& picture = {}) {
            put("<{0}{1}{2}>{3}{4}</{0}>", tag, scope, grid.columns[column].figures ? " class=\"figure\"" : "", picture,
                escapeMarkup(text));
        };
        const auto bar = [&](std::size_t row) {
            return writeInlineSvg(
                drawShare(grid.rows[row][0], grid.shares[row], kShareWidth, TableTextMeasure(kTextSize)));
        };
        put("<table>\n<thead>\n<tr>");
        for (std::size_t i = 0; i < grid.columns.size(); ++i)
            cell(i, "th", " scope=\"col\"", grid.columns[i].heading);
        put("</tr>\n</thead>\n<tbody>\n");
        for (std::size_t row = 0; row < grid.rows.size(); ++row) {
            put("<tr>");
            for (std::size_t i = 0; i < grid.columns.size(); ++i)
                cell(i, i == 0 ? "th" : "td", i == 0 ? " scope=\"row\"" : "", grid.rows[row][i],
                     i + 1 == grid.columns.size() && !grid.shares.empty() ? bar(row) : std::string());
            put("</tr>\n");
        }
        put("</tbody>\n</table>\n");
    }

    void write(const Picture& picture) {
        out_ += writeInlineSvg(picture.draw({kPictureWidth, kUnlimited}, TableTextMeasure(kTextSize)));
    }
    void write(const Paragraph& paragraph) { put("<p>{}</p>\n", escapeMarkup(paragraph.text)); }

    std::string out_;
};

} // namespace

std::string renderHtml(const Report& report) { return HtmlRenderer(report).html(); }

} // namespace quobrix
