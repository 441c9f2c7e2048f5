#pragma once

#include "model/log_columns.h"
#include "model/parameters.h"

namespace quobrix {

#define COLUMN(Name, Base, Unit, Heading, Tooltip, Needs)                                                              \
    QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, Heading, Tooltip, Needs)
#include "model/logger_tables.def"
#include "model/options.def"
#undef COLUMN

/// Per logger, the time of its most recent download.
class TDownloadTable final : public Table {
    QUOBRIX_TABLE_CLASS(TDownloadTable, true)
    void record(const std::string& serialNumber, std::int32_t time);
};

/// Per logger, the time at which its memory was last cleared.
class TClearTable final : public Table {
    QUOBRIX_TABLE_CLASS(TClearTable, true)
    void record(const std::string& serialNumber, std::int32_t time);
};

/// The speed bands to be written to the logger.
class TCurrentSpeedBandsTable final : public Table {
    QUOBRIX_TABLE_CLASS(TCurrentSpeedBandsTable, true)
};

/// The parameters and sampling intervals to be written to the logger.
class TCurrentParametersTable final : public Table {
    QUOBRIX_TABLE_CLASS(TCurrentParametersTable, true)
};

} // namespace quobrix
