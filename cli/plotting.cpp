#include "cli/plotting.h"

#include "cli/opened_document.h"
#include "cli/reading.h"
#include "cli/units.h"
#include "cli/writing.h"
#include "drawing/svg.h"
#include "messages/message.h"
#include "model/logger_tables.h"
#include "paper/page_setup.h"
#include "paper/painter.h"
#include "paper/printout.h"
#include "plots/comparison.h"
#include "plots/plot_figures.h"
#include "plots/plot_report.h"
#include "plots/time_window.h"
#include "settings/file_settings.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/fine_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <variant>

namespace quobrix::cli {
namespace {

constexpr double kFontSize = 12; // of a picture
constexpr int kLeastSide = 100, kMostSide = 10'000;

Bytes fileOf(const std::string& text) { return {text.begin(), text.end()}; }

std::optional<Size> sizeOf(const std::string& text) {
    int sides[2] = {};
    const char *at = text.data(), *const end = at + text.size();
    for (int& side : sides) {
        const auto [parsed, error] = std::from_chars(at, end, side);
        if (error != std::errc{} || side < kLeastSide || side > kMostSide)
            return {};
        at = parsed;
        if (&side == sides && (at == end || *at++ != 'x'))
            return {};
    }
    return at == end ? std::optional(Size{static_cast<double>(sides[0]), static_cast<double>(sides[1])}) : std::nullopt;
}

/// What TEXT is as a figure of the column, or complains.
std::optional<double> figureIn(const Column& column, const std::string& text, const UserUnits& units) {
    const Parsed parsed = column.parse(text, units.context());
    if (const auto* whole = std::get_if<std::int64_t>(&parsed.value))
        return static_cast<double>(*whole);
    if (const auto* figure = std::get_if<double>(&parsed.value))
        return *figure;
    complain(parsed.ok() ? quobrix::text(TextId::CliNoFigure, text)
                         : quobrix::text(TextId::CliNotUnderstood, text, parsed.refusal));
    return {};
}

/// A place on the axis of DATA.
std::optional<double> placeIn(const PlotData& data, const std::string& text, const UserUnits& units) {
    if (data.axis == PlotAxis::Distance)
        return figureIn(TTripLogDistanceColumn(), text, units);
    const std::optional<double> seconds = figureIn(TTripLogTimesColumn(), text, units);
    return seconds && data.axis == PlotAxis::UntilStandstill ? std::optional(-*seconds) : seconds;
}

/// What of the axis OPTIONS ask for, on areas of WIDTH; complains if that cannot be shown.
std::optional<PlotRange> rangeOf(const PlottingOptions& options, const PlotData& data, double width,
                                 const UserUnits& units) {
    PlotRange range = data.whole;
    for (const auto& [given, end] : {std::pair(&options.from, &range.from), std::pair(&options.to, &range.to)})
        if (!given->empty()) {
            const std::optional<double> place = placeIn(data, *given, units);
            if (!place)
                return {};
            *end = *place;
        }
    if (range.from >= range.to || range.from >= data.whole.to || range.to <= data.whole.from) {
        const auto place = [&](double at) { return placeText(data, at, units.context()); };
        complain(text(TextId::CliPlotNoRange, place(range.from), place(range.to), place(data.whole.from),
                      place(data.whole.to)));
        return {};
    }
    const ZoomResult zoomed = zoomedTo(data, range, width);
    if (!zoomed.maximumReached)
        return zoomed.range;
    const double least = zoomed.range.length();
    complain(text(TextId::CliPlotLeast, makeMessage(MessageId::MaximumZoom).text,
                  data.axis == PlotAxis::Distance ? lengthText(units.context().units, UnitTypeId::Distance, least)
                                                  : durationText(static_cast<std::int64_t>(std::ceil(least - 1e-6)))));
    return {};
}

} // namespace

std::vector<std::string> plottedRecordNames() {
    return {std::string(logSpec(LogId::Trips).recordName), std::string(logSpec(LogId::Accidents).recordName)};
}

ExitCode plot(const PlottingOptions& options) {
    const LogSpec& log = *std::ranges::find(logs(), std::string_view(options.record), &LogSpec::recordName);
    const std::vector<std::string> numbers(options.files.begin(), options.files.end() - 1);
    const std::string& source = options.files.back();
    if (numbers.empty() || (log.id != LogId::Trips && numbers.size() > 1) || numbers.size() > kMostCompared) {
        complain(text(TextId::CliPlotNumbers, kMostCompared));
        return kUsage;
    }
    if (!std::ranges::all_of(numbers, isNumber))
        return kUsage;
    if (options.by && numbers.size() == 1) {
        complain(text(TextId::CliPlotByOfOne));
        return kUsage;
    }
    const std::optional<Size> size = sizeOf(options.size);
    if (!size) {
        complain(text(TextId::CliPlotSize, options.size, kLeastSide, kMostSide));
        return kUsage;
    }
    if (!mayReplace(options.out, std::span(&source, 1)))
        return kUsage;
    const std::optional<FileFormat> format = chosenFormat(options.format, options.out, kPlotFormats);
    if (!format)
        return kUsage;
    std::unique_ptr<FilePainter> painter;
    std::unique_ptr<const TextMeasure> measure = std::make_unique<const TableTextMeasure>(kFontSize);
    if (*format != FileFormat::Svg) {
        Result<std::unique_ptr<FilePainter>> loaded = loadFilePainter();
        if (!loaded) {
            complain(text(TextId::CliPlotNoPainter, options.out, loaded.error().detail));
            return kUsage;
        }
        painter = *std::move(loaded);
        measure = painter->measure(kFontSize);
    }
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;

    PlotView view;
    Settings settings(userSettings());
    view.options = plotOptions(settings);
    view.options.lines = options.lines || (view.options.lines && !options.areas);
    view.options.bands = options.bands.value_or(view.options.bands);
    view.options.brakes = options.events.value_or(view.options.brakes);
    view.options.accelerations = options.events.value_or(view.options.accelerations);
    if (options.normalize) {
        view.options.normalize = true;
        const TIOVerticalAxisMaximumColumn column;
        const std::optional<double> maximum = figureIn(column, *options.normalize, units);
        if (!maximum)
            return kUsage;
        if (!column.requirements().required.contains(*maximum)) {
            complain(text(TextId::CliPlotMaximum, *options.normalize,
                          column.figureText(column.requirements().required.upper, units.context())));
            return kUsage;
        }
        view.options.maximum = *maximum;
    }

    OpenedDocument document;
    if (!document.open(source))
        return kFailed;
    const TextContext context = units.context();
    std::vector<PlotData> plots;
    std::vector<RowIndex> rows;
    for (const std::string& number : numbers) {
        const std::optional<RowIndex> row = rowOf(log, number, document);
        if (!row)
            return kFailed;
        if (std::ranges::find(rows, *row) != rows.end()) {
            complain(text(TextId::CliPlotTwice, number));
            return kUsage;
        }
        rows.push_back(*row);
        const Table& table = document.table(log);
        plots.push_back(log.id == LogId::Trips ? tripPlot(static_cast<const TTripLogTable&>(table), *row, context)
                                               : stopPlot(static_cast<const TAccidentLogTable&>(table), *row, context));
    }
    PlotData data = plots.size() == 1
                        ? std::move(plots.front())
                        : comparedPlot(plots, options.by == "distance" ? PlotAxis::Distance : PlotAxis::Elapsed);
    if (data.panels.empty()) {
        complain(data.emptyText);
        return kFailed;
    }
    if (!options.from.empty() || !options.to.empty()) {
        Size room = *size;
        if (*format == FileFormat::Pdf) {
            const PageFormat page = PageSetup::load(settings).formatFor({{}, {}, true});
            room.width = page.paper.width - page.margins.left - page.margins.right;
            measure = painter->measure(kListFontSize);
        }
        view.range = rangeOf(options, data, layOutPlot(data, view, context, room, *measure).width(), units);
        if (!view.range)
            return kUsage;
    }
    const ShownText title = plotTitle(data, context);
    Bytes file;
    Size taken = *size;
    if (*format == FileFormat::Pdf) {
        file = painter->pdf(
            layOut(ShownPlot::report(std::move(data), view, context), PageSetup::load(settings), *painter));
    } else {
        const Drawing drawing = ShownPlot(std::move(data), view, context).draw(*size, *measure, 1);
        taken = drawing.size;
        file = painter ? painter->png(drawing, 1) : fileOf(writeSvg(drawing, kPaperPalette));
    }
    if (file.empty()) {
        complain(text(TextId::CliPlotTooLarge, options.out));
        return kFailed;
    }
    const ExitCode written = writeOut(options.out, file);
    if (written == kFailed)
        return kFailed;
    const ExitCode complete = document.completeness();
    if (taken.width > size->width || taken.height > size->height)
        complain(text(TextId::CliPlotEnlarged, std::lround(std::ceil(taken.width)),
                      std::lround(std::ceil(taken.height)), title));
    Output output;
    output.put(text(TextId::CliExported, options.out, title));
    return output.finish(std::max(written, complete), text(TextId::CliHasBeenWritten, options.out));
}

} // namespace quobrix::cli
