#include "model/document_properties.h"

#include "base/path_text.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quobrix {
namespace {

std::string integerText(const TextContext& context, std::uint64_t value) {
    ValueText buffer;
    return std::string(
        formatInteger(context.units.locale().numbers, static_cast<std::int64_t>(value), std::span<char>(buffer)));
}

std::string bytesText(const TextContext& context, std::uint64_t bytes) {
    return context.units.formatValueWithUnits(UnitTypeId::ByteCount, static_cast<double>(bytes));
}

/// In the user's unit, which may be too large for a small file, and exactly.
std::string sizeText(const TextContext& context, std::uint64_t bytes) {
    return text(TextId::SizeInBytes, bytesText(context, bytes), integerText(context, bytes));
}

/// TIME: nanoseconds since 1970 UTC.
std::string timeText(const TextContext& context, std::int64_t time) {
    const std::int64_t seconds = std::clamp<std::int64_t>(
        time / 1'000'000'000, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
    return dateTimeText(context.units, context.zone.toLocal(static_cast<std::int32_t>(seconds)));
}

/// What of the file is free, in whole percent that are never 0 or 100 by rounding alone.
std::string freeText(const TextContext& context, const CompoundFile::Space& space) {
    if (space.freeBytes == 0 || space.fileBytes == 0)
        return text(TextId::NoneOfIt);
    const double share = 100.0 * static_cast<double>(space.freeBytes) / static_cast<double>(space.fileBytes);
    return fmt::format("{} ({} %)", bytesText(context, space.freeBytes),
                       static_cast<int>(std::clamp(std::round(share), 1.0, 99.0)));
}

} // namespace

std::string readOnlyText(const Error& reason) {
    switch (reason.kind) {
    case ErrorKind::AccessDenied:
        return text(TextId::ReadOnlyNoPermission);
    case ErrorKind::InUse:
        return text(TextId::ReadOnlyInUse);
    case ErrorKind::Changed:
        return text(TextId::ReadOnlyChanged);
    case ErrorKind::Unsupported:
        return text(TextId::ReadOnlyLaterVersion);
    case ErrorKind::Corrupt:
        return text(TextId::ReadOnlyDamaged, reason.detail);
    default:
        return text(TextId::ReadOnlyByWish);
    }
}

std::vector<DocumentProperty> documentProperties(TQuobrixDocument& document, const TextContext& context) {
    std::vector<DocumentProperty> result;
    const auto add = [&](std::string_view key, SourceText label, std::string value) {
        result.push_back({key, label, std::move(value)});
    };
    const auto addRecords = [&](std::string_view key, SourceText title, const Table* table) {
        add(key, title, integerText(context, table ? table->rowCount() : 0));
    };
    add("Path", SourceText("File"), document.hasFile() ? utf8(document.path()) : text(TextId::NotSavedYet));
    if (document.hasFile()) {
        const Result<FileStatus> status = fileStatus(document.path());
        add("Size", SourceText("Size"), status ? sizeText(context, status->size) : text(TextId::FileNotThere));
        add("FreeSpace", SourceText("Unused Space"), freeText(context, document.space()));
        if (status && status->created)
            add("Created", SourceText("Created"), timeText(context, *status->created));
        if (status)
            add("Modified", SourceText("Modified"), timeText(context, status->modified));
        const Result<FileStatus> backup = fileStatus(TDocument::backupPath(document.path()));
        add("Backup", SourceText("Last Backup"), backup ? timeText(context, backup->modified) : text(TextId::NoneOfIt));
    }
    for (const LogSpec& log : logs())
        addRecords(log.key, log.title, document.log(log));
    addRecords("Vehicles", document.vehicles().spec().title, &document.vehicles());
    addRecords("Loggers", document.loggers().spec().title, &document.loggers());
    addRecords("Drivers", document.drivers().spec().title, &document.drivers());
    add("Objects", SourceText("Objects"), integerText(context, document.store().objectCount()));
    add("Format", SourceText("Format"), text(TextId::FormatAndSchema, document.format(), document.store().version()));
    if (document.readOnlyReason())
        add("ReadOnly", SourceText("Read-Only"), readOnlyText(*document.readOnlyReason()));
    return result;
}

} // namespace quobrix
