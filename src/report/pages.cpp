#include "report/pages.h"

#include "base/utf8.h"
#include "report/typeset.h"
#include "texts/text.h"

namespace quobrix {

/// What has been set, and where the pages begin in it.
class Pages::Layout {
public:
    Layout(Report report, const PageFormat& format, const TextMeasure& measure)
        : report_(std::move(report)), title_(oneLine(report_.title)), format_(format),
          measure_(measure), room_{format.paper.width - format.margins.left - format.margins.right,
                                   format.paper.height - format.margins.top - format.margins.bottom -
                                       2 * measure.lineHeight(FontRole::Small)},
          galley_(typeset(report_, room_, measure)) {
        for (std::size_t strip = 0; strip < galley_.strips.size();) {
            begins_.push_back(strip);
            strip = fill(strip, [](const auto&, double) {});
        }
    }

    const std::string& title() const { return title_; }
    const PageFormat& format() const { return format_; }
    std::size_t count() const { return begins_.size(); }

    bool fits() const { return !galley_.crowded; }

    Drawing page(std::size_t index) const {
        Drawing page{title_, text(TextId::PageOf, index + 1, count()), format_.paper, measure_.fontSize(), {}};
        put(index, page, 0);
        number(page);
        return page;
    }

    /// All pages one below the other, without what stands at their feet.
    Drawing together() const {
        Drawing all{title_, {}, {format_.paper.width, 0}, measure_.fontSize(), {}};
        for (const Block& block : report_.blocks)
            if (const auto* picture = std::get_if<Picture>(&block))
                all.description += (all.description.empty() ? "" : "\n") +
                                   picture->draw({room_.width, kUnlimited}, measure_).description;
        all.commands.emplace_back(Rectangle{});
        double top = 0;
        for (std::size_t index = 0; index < count(); ++index)
            top += put(index, all, top) + measure_.fontSize();
        all.size.height = top + format_.margins.top + format_.margins.bottom - measure_.fontSize();
        all.commands.front() = Rectangle{{0, 0, all.size.width, all.size.height}, ColourRole::Ground};
        return all;
    }

private:
    /// Puts what fits onto the page that begins with the strip FIRST, each by PUT(strip or heading, top); the strip
    /// that the next page begins with.
    template <class Put>
    std::size_t fill(std::size_t first, const Put& put) const {
        const std::size_t begun = first == 0 ? 0 : galley_.strips[first - 1].section; // the last section before
        std::size_t section = 0, tableHead = 0;                                       // going on here
        double top = 0;
        for (std::size_t i = first; i < galley_.strips.size(); ++i) {
            const SetStrip& strip = galley_.strips[i];
            const Strip* headings[2] = {};
            if (strip.section != section) {
                const SetHeading& heading = galley_.headings[strip.section - 1];
                headings[0] = strip.section > begun ? &heading.first : &heading.continued;
            }
            if (strip.tableHead != 0 && strip.tableHead != tableHead)
                headings[1] = &galley_.tableHeads[strip.tableHead - 1];
            double height = strip.gap + strip.height;
            for (const Strip* heading : headings)
                height += heading ? heading->height : 0;
            if (i > first && (strip.newPage || top + height > room_.height))
                return i;
            top += i > first ? strip.gap : 0;
            for (const Strip* heading : headings)
                if (heading) {
                    put(*heading, top);
                    top += heading->height;
                }
            put(strip, top);
            top += strip.height;
            section = strip.section;
            tableHead = strip.tableHead;
        }
        return galley_.strips.size();
    }

    /// Adds what stands on the page INDEX to DRAWING, whose margin begins at TOP; its height.
    double put(std::size_t index, Drawing& drawing, double top) const {
        const Point corner{format_.margins.left, format_.margins.top + top};
        double height = 0;
        const auto place = [&](std::vector<DrawingCommand> commands, double at, double itsHeight) {
            for (DrawingCommand& command : commands)
                drawing.commands.push_back(moved(std::move(command), {corner.x, corner.y + at}));
            height = at + itsHeight;
        };
        struct Put {
            const decltype(place)& at;
            void operator()(const Strip& heading, double top) const { at(heading.commands, top, heading.height); }
            void operator()(const SetStrip& strip, double top) const { at(strip.commands(), top, strip.height); }
        };
        fill(begins_[index], Put{place});
        return height;
    }

    /// Below everything else: what this is, and which page of it.
    void number(Drawing& page) const {
        const double baseline = format_.paper.height - format_.margins.bottom;
        const double room = room_.width - measure_.width(page.description, FontRole::Small) - measure_.fontSize();
        const auto put = [&](double x, std::string what, Anchor anchor) {
            page.commands.push_back(
                Text{{x, baseline}, std::move(what), anchor, FontRole::Small, ColourRole::SecondaryText});
        };
        put(format_.margins.left, elided(title_, FontRole::Small, room, measure_), Anchor::Start);
        put(format_.paper.width - format_.margins.right, page.description, Anchor::End);
    }

    Report report_;
    std::string title_; ///< in one line
    PageFormat format_;
    const TextMeasure& measure_;
    Size room_;
    Galley galley_;
    std::vector<std::size_t> begins_; ///< of the pages, by strip
};

Pages::Pages(Report report, const PageFormat& format, const TextMeasure& measure)
    : layout_(std::make_unique<const Layout>(std::move(report), format, measure)) {}
Pages::Pages(Pages&&) noexcept = default;
Pages& Pages::operator=(Pages&&) noexcept = default;
Pages::~Pages() = default;

const std::string& Pages::title() const { return layout_->title(); }
const PageFormat& Pages::format() const { return layout_->format(); }
std::size_t Pages::count() const { return layout_->count(); }
bool Pages::fits() const { return layout_->fits(); }
Drawing Pages::page(std::size_t index) const { return layout_->page(index); }

Drawing drawReport(Report report, double width, const TextMeasure& measure) {
    const double margin = 1.5 * measure.fontSize();
    return Pages::Layout(std::move(report), {{width, kUnlimited}, {margin, margin, margin, margin}}, measure)
        .together();
}

} // namespace quobrix
