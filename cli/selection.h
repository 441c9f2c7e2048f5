#pragma once

#include "cli/opened_document.h"
#include "cli/output.h"
#include "cli/units.h"
#include "export/records.h"
#include "model/logs.h"
#include "model/record_filter.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace quobrix::cli {

/// Which records of which documents, as it is typed.
struct SelectionOptions {
    std::string log; ///< one of logNames()
    std::vector<std::string> files;
    std::string find;
    std::string from, to, period;
    std::optional<std::string> vehicle, driver, logger;
    bool once = false; ///< what several files hold counts in one of them

    bool any() const {
        return once || vehicle || driver || logger || !(find.empty() && from.empty() && to.empty() && period.empty());
    }
};

/// The records that options choose, in the order of the files and of their logs.
class Selection {
public:
    /// Opens the files and chooses. Complains about what cannot be read; kDone if there is something to go on with.
    ExitCode choose(const SelectionOptions& options, const UserUnits& units);

    /// Leaves out what lies in other rows than FIRST to LAST.
    void keep(RowIndex first, RowIndex last);

    const LogSpec& log() const { return *log_; }
    /// The time that was asked for.
    const TimeRange& time() const { return time_; }
    /// A part for each file that could be read.
    const std::vector<TableRows>& rows() const { return rows_; }
    /// The columns that lists for people show.
    std::vector<ExportColumn> listColumns(const Table& table) const;
    /// The same records with COLUMNS_OF each table.
    template <class ColumnsOf>
    std::vector<ExportRecords> records(const ColumnsOf& columnsOf) const {
        std::vector<ExportRecords> result;
        for (std::size_t i = 0; i < rows_.size(); ++i)
            result.push_back({columnsOf(*rows_[i].table), rows_[i].rows, fileOf(i)});
        return result;
    }
    /// After what was chosen has been read: whether all of it was; complains if not.
    ExitCode completeness();

    /// What a part is told apart by; nothing where there is one file only.
    std::optional<std::string> fileOf(std::size_t part) const;

private:
    const LogSpec* log_ = nullptr;
    TimeRange time_;
    std::size_t files_ = 0; ///< that were asked for
    std::deque<OpenedDocument> documents_;
    std::vector<TableRows> rows_;
};

} // namespace quobrix::cli
