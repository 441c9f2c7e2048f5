#include "cli/reading.h"

#include "base/path_text.h"
#include "cli/units.h"
#include "messages/file_messages.h"
#include "model/trip_report.h"
#include "report/render.h"
#include "tables/declare.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <span>

namespace quobrix::cli {
namespace {

/// A log as the list command knows it, and the columns of its table for people.
struct Log {
    std::string_view name;
    const Table* (*table)(TQuobrixDocument&);
    std::span<const PersistentType* const> columns;
};
constexpr Log kLogs[] = {
    {"trips", [](TQuobrixDocument& document) -> const Table* { return &document.trips(); },
     kTypesOf<TTripLogRecordColumn, TTripLogStartTimeColumn, TTripLogDurationColumn, TTripLogDistanceColumn,
              TTripLogMaximumSpeedColumn, TTripLogAverageSpeedColumn, TTripLogTimeInTopSpeedBandColumn,
              TTripLogHardBrakesColumn, TTripLogPanicBrakesColumn, TTripLogHardAccelerationsColumn,
              TTripLogPanicAccelerationsColumn, TTripLogVinColumn, TTripLogDriverIDColumn,
              TTripLogQuobrixSerialNumberColumn, TTripLogCommentsColumn>},
    {"troubles", [](TQuobrixDocument& document) -> const Table* { return &document.troubles(); },
     kTypesOf<TTroubleLogRecordColumn, TTroubleLogTimeRecordedColumn, TTroubleLogVinColumn,
              TTroubleLogQuobrixSerialNumberColumn, TTroubleLogTroubleCodeColumn,
              TTroubleLogTroubleCodeDescriptionColumn, TTroubleLogCommentsColumn>},
    {"activity", [](TQuobrixDocument& document) -> const Table* { return &document.activity(); },
     kTypesOf<TSecurityLogRecordColumn, TSecurityLogTimeRecordedColumn, TSecurityLogQuobrixSerialNumberColumn,
              TSecurityLogVinColumn, TSecurityLogEventDescriptionColumn, TSecurityLogCommentsColumn>},
    {"accidents", [](TQuobrixDocument& document) -> const Table* { return document.accidents(); },
     kTypesOf<TAccidentLogTableRecordColumn, TAccidentLogTableStartTimeColumn, TAccidentLogTableMaximumSpeedColumn,
              TAccidentLogTableVinColumn, TAccidentLogTableQuobrixSerialNumberColumn, TAccidentLogTableCommentsColumn>},
};

/// Whether everything that was asked of the document is known to have been read.
ExitCode completeness(TQuobrixDocument& document, const std::string& file) {
    if (document.outdated()) {
        complain(fmt::format(
            "{} was changed by another program while it was read, so not everything is here; try again", file));
        return kIncomplete;
    }
    const std::vector<std::string> affected = document.affectedLogs();
    const std::optional<std::string> doubt = document.doubt();
    if (affected.empty() && !doubt)
        return kDone;
    const std::string missing =
        affected.empty() ? fmt::format("{} is damaged ({}), and there may be more than is shown here", file, *doubt)
                         : fmt::format("parts of {} cannot be read and are missing here ({}){}", file,
                                       fmt::join(affected, ", "), doubt ? ", and there may be more" : "");
    complain(fmt::format("{}; \"quobrix-cli check {}\" says what is damaged", missing, file));
    return kIncomplete;
}

} // namespace

bool openForReading(TQuobrixDocument& document, const std::string& file) {
    const Result<void> opened = document.open(pathFromUtf8(file), TDocument::Access::Read);
    if (opened)
        return true;
    std::string text = fileMessage(opened.error(), FileAction::Open, file).text;
    if (opened.error().kind == ErrorKind::Corrupt)
        text += fmt::format(" \"quobrix-cli check --repair {} --into NEW.car\" saves what can be found in it.", file);
    complain(text);
    return false;
}

std::vector<std::string> logNames() {
    std::vector<std::string> names;
    for (const Log& log : kLogs)
        names.emplace_back(log.name);
    return names;
}

ExitCode list(const ListOptions& options) {
    UserUnits units(localeOf(options.format));
    if (options.format != Format::Json || options.units) // json is in base units
        if (const ExitCode code = units.load(options.units); code != kDone)
            return code;
    TQuobrixDocument document;
    if (!openForReading(document, options.file))
        return kFailed;

    const auto* log = std::ranges::find(kLogs, std::string_view(options.log), &Log::name);
    const Table* table = log->table(document);
    if (!table && document.store().findLostSingletons())
        table = log->table(document);
    const TAccidentLogTable none; // the one log that a document may not have yet
    Output output;
    writeRecords(output, table ? *table : none, options.format, log->columns, units.context());
    return output.finish(completeness(document, options.file));
}

ExitCode report(const ReportOptions& options) {
    std::int64_t trip = 0;
    const char* const end = options.trip.data() + options.trip.size();
    if (const auto [parsed, error] = std::from_chars(options.trip.data(), end, trip);
        error != std::errc{} || parsed != end) {
        complain(fmt::format("\"{}\" is no number of a trip; see quobrix-cli --help", options.trip));
        return kUsage;
    }
    UserUnits units(localeOf(Format::Table));
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    TQuobrixDocument document;
    if (!openForReading(document, options.file))
        return kFailed;

    const auto count = static_cast<std::int64_t>(document.trips().rowCount());
    if (trip < 1 || trip > count) {
        const ExitCode complete = completeness(document, options.file);
        if (complete == kDone)
            complain(count == 0 ? fmt::format("{} holds no trips", options.file)
                                : fmt::format("{} has no trip {}; its trips are 1 to {}", options.file, trip, count));
        return kFailed;
    }
    Output output;
    const Report shown = tripReport(document.trips(), static_cast<RowIndex>(trip - 1), units.context());
    if (options.html)
        output.putData(renderHtml(shown));
    else
        output.put(renderText(shown));
    return output.finish(completeness(document, options.file));
}

} // namespace quobrix::cli
