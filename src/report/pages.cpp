#include "report/pages.h"

#include "base/utf8.h"
#include "report/typeset.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace quobrix {
namespace {

/// Divides what has been set into pages.
class Paginator {
public:
    Paginator(const std::string& title, const PageFormat& format, const TextMeasure& measure)
        : title_(oneLine(title)), format_(format),
          measure_(measure), room_{format.paper.width - 2 * format.margin,
                                   format.paper.height - 2 * format.margin - 2 * measure.lineHeight(FontRole::Small)} {}

    Size room() const { return room_; }

    std::vector<Drawing> divide(const Galley& galley) {
        beginPage();
        for (const SetStrip& strip : galley.strips)
            place(strip, galley);
        for (std::size_t i = 0; i < pages_.size(); ++i)
            number(pages_[i], text(TextId::PageOf, i + 1, pages_.size()));
        return std::move(pages_);
    }

private:
    void beginPage() {
        pages_.push_back({title_, {}, format_.paper, measure_.fontSize(), {}});
        top_ = 0;
        section_ = 0;
        tableHead_.reset();
    }

    void put(const Strip& strip) {
        for (const DrawingCommand& command : strip.commands)
            pages_.back().commands.push_back(moved(command, {format_.margin, format_.margin + top_}));
        top_ += strip.height;
    }

    /// The headings that must stand above STRIP on the page that is open.
    std::vector<const Strip*> headingsOf(const SetStrip& strip, const Galley& galley) const {
        std::vector<const Strip*> result;
        if (strip.section != section_) {
            const SetHeading& heading = galley.headings[strip.section - 1];
            result.push_back(strip.section > begun_ ? &heading.first : &heading.continued);
        }
        if (strip.tableHead && strip.tableHead != tableHead_)
            result.push_back(&galley.tableHeads[*strip.tableHead]);
        return result;
    }

    void place(const SetStrip& strip, const Galley& galley) {
        std::vector<const Strip*> headings = headingsOf(strip, galley);
        double height = strip.gap + strip.strip.height;
        for (const Strip* heading : headings)
            height += heading->height;
        if (top_ > 0 && (strip.newPage || top_ + height > room_.height)) {
            beginPage();
            headings = headingsOf(strip, galley);
        }
        if (top_ > 0)
            top_ += strip.gap;
        for (const Strip* heading : headings)
            put(*heading);
        put(strip.strip);
        section_ = strip.section;
        begun_ = std::max(begun_, section_);
        tableHead_ = strip.tableHead;
    }

    /// Below everything else: what this is, and which page of it.
    void number(Drawing& page, std::string text) const {
        const double baseline = format_.paper.height - format_.margin;
        const double room = room_.width - measure_.width(text, FontRole::Small) - measure_.fontSize();
        const auto put = [&](double x, std::string what, Anchor anchor) {
            page.commands.push_back(
                Text{{x, baseline}, std::move(what), anchor, FontRole::Small, ColourRole::SecondaryText});
        };
        page.description = text;
        put(format_.margin, elided(title_, FontRole::Small, room, measure_), Anchor::Start);
        put(format_.paper.width - format_.margin, std::move(text), Anchor::End);
    }

    std::string title_;
    const PageFormat& format_;
    const TextMeasure& measure_;
    Size room_;
    std::vector<Drawing> pages_;
    double top_ = 0;          ///< of what comes next, on the page that is open
    std::size_t section_ = 0; ///< the one that is going on there
    std::size_t begun_ = 0;   ///< the last one that has begun anywhere
    std::optional<std::size_t> tableHead_;
};

} // namespace

std::vector<Drawing> layOutPages(const Report& report, const PageFormat& format, const TextMeasure& measure) {
    Paginator paginator(report.title, format, measure);
    return paginator.divide(typeset(report, paginator.room(), measure));
}

} // namespace quobrix
