#include "cli/selection.h"

#include "model/record_comparison.h"
#include "texts/text.h"
#include "units/time_zone.h"

#include <algorithm>

namespace quobrix::cli {
namespace {

/// The time that OPTIONS ask for; complains if they cannot be understood.
std::optional<TimeRange> timeOf(const SelectionOptions& options, const TextContext& context) {
    if (!options.period.empty())
        return rangeOf(*std::ranges::find(periods(), std::string_view(options.period), &Period::name), currentTime(),
                       context.zone);
    TimeRange range;
    for (const std::string* typed : {&options.from, &options.to}) {
        if (typed->empty())
            continue;
        const std::optional<TimeRange> moment = parseMoment(*typed, context);
        if (!moment) {
            complain(text(TextId::CliNoMoment, *typed));
            return {};
        }
        (typed == &options.from ? range.from : range.until) = typed == &options.from ? moment->from : moment->until;
    }
    if (range.from && range.until && *range.from >= *range.until) {
        complain(text(TextId::CliFromBehindTo, options.from, options.to));
        return {};
    }
    return range;
}

ShownText unknownText(RecordName what, const RecordCriteria& criteria) {
    switch (what) {
    case RecordName::Vehicle:
        return text(TextId::CliNoSuchVehicle, *criteria.vehicle);
    case RecordName::Driver:
        return text(TextId::CliNoSuchDriver, *criteria.driver);
    case RecordName::Logger:
        break;
    }
    return text(TextId::CliNoSuchLogger, *criteria.logger);
}

} // namespace

ExitCode Selection::choose(const SelectionOptions& options, const UserUnits& units) {
    log_ = &*std::ranges::find(logs(), std::string_view(options.log), &LogSpec::name);
    if (options.driver && !log_->driver) {
        complain(text(TextId::CliLogWithoutDrivers, text(log_->title)));
        return kUsage;
    }
    const TextContext context = units.context();
    const std::optional<TimeRange> time = timeOf(options, context);
    if (!time)
        return kUsage;
    time_ = *time;
    const RecordCriteria criteria{options.find, *time, options.vehicle, options.driver, options.logger};

    files_ = options.files.size();
    std::vector<RecordName> unknown;
    bool found = false;
    for (const std::string& file : options.files) {
        if (!documents_.emplace_back().open(file)) {
            documents_.pop_back();
            continue;
        }
        const Table& table = documents_.back().table(*log_);
        std::vector<const Column*> searched;
        for (const ExportColumn& column : listColumns(table))
            searched.push_back(column.column);
        rows_.push_back({&table, findRecords(*log_, table, searched, criteria, context)});
        found = found || !rows_.back().rows.empty();
        std::vector<RecordName> here = unknownNames(*log_, table, criteria);
        if (rows_.size() == 1)
            unknown = std::move(here);
        else
            std::erase_if(unknown, [&](RecordName what) { return std::ranges::find(here, what) == here.end(); });
    }
    if (rows_.empty())
        return kFailed;
    if (!found && !unknown.empty()) { // an empty list would look as if there were no such records
        completeness();
        complain(unknownText(unknown.front(), criteria));
        return kFailed;
    }
    if (options.once)
        dropRepeated(*log_, rows_);
    return kDone;
}

void Selection::keep(RowIndex first, RowIndex last) {
    for (TableRows& part : rows_)
        std::erase_if(part.rows, [=](RowIndex row) { return row < first || row > last; });
}

std::vector<ExportColumn> Selection::listColumns(const Table& table) const {
    std::vector<ExportColumn> columns;
    for (const PersistentType* type : log_->list())
        columns.push_back({&table.columnOf(*type)});
    return columns;
}

std::optional<std::string> Selection::fileOf(std::size_t part) const {
    return files_ > 1 ? std::optional(documents_[part].file()) : std::nullopt;
}

ExitCode Selection::completeness() {
    ExitCode code = documents_.size() == files_ ? kDone : kIncomplete;
    for (OpenedDocument& document : documents_)
        if (document.completeness() != kDone)
            code = kIncomplete;
    return code;
}

} // namespace quobrix::cli
