#include "export/export_file.h"

#include "export/csv.h"
#include "export/json.h"
#include "export/xlsx.h"
#include "tables/table.h"
#include "texts/text.h"

#include <string>
#include <string_view>

namespace quobrix {
namespace {

/// Collects what is written to a new file into blocks.
class FileSink {
public:
    explicit FileSink(File& file) : file_(file) {}

    bool put(std::string_view bytes) {
        constexpr std::size_t kBlock = 1 << 20;
        pending_ += bytes;
        return pending_.size() < kBlock || flush();
    }
    Result<void> finish() {
        flush();
        return result_;
    }

private:
    bool flush() {
        if (result_)
            result_ = file_.writeAt(offset_,
                                    ByteView(reinterpret_cast<const std::uint8_t*>(pending_.data()), pending_.size()));
        offset_ += pending_.size();
        pending_.clear();
        return static_cast<bool>(result_);
    }

    File& file_;
    std::uint64_t offset_ = 0;
    std::string pending_;
    Result<void> result_;
};

} // namespace

std::size_t ExportContent::rowCount() const {
    std::size_t count = 0;
    for (const ExportRecords& part : records)
        count += part.rows.size();
    return count;
}

ExportContent contentOf(const RecordTable& table) {
    ExportContent content{.title = text(table.title), .made = table.made};
    ExportRecords& records = content.records.emplace_back();
    RowIndex rows = 0;
    for (const RecordTable::Shown& shown : table.columns) {
        records.columns.push_back({shown.column, shown.heading});
        rows = table.columns.front().column->rowCount();
    }
    for (RowIndex row = 0; row < rows; ++row)
        records.rows.push_back(row);
    return content;
}

Result<std::size_t> writeExport(const ExportContent& content, FileFormat format, const TextContext& context,
                                ReplacementFile& file, const ExportRun& run) {
    if (format == FileFormat::Xlsx)
        return writeXlsx(content.records, content.title, context, file.temporary(), run);
    FileSink blocks(file.file());
    bool cancelled = false;
    const ExportSink sink = [&](std::string_view bytes) {
        cancelled = run.record && !run.record();
        return !cancelled && blocks.put(bytes);
    };
    if (format == FileFormat::Json)
        writeJson(content.records, sink);
    else
        writeCsv(content.records, context, sink);
    if (cancelled)
        return Error{ErrorKind::Cancelled, {}};
    QUOBRIX_TRY(blocks.finish());
    return std::size_t{0};
}

} // namespace quobrix
