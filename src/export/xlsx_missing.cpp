#include "export/xlsx.h"

namespace quobrix {

bool canWriteXlsx() { return false; }

Result<std::size_t> writeXlsx(std::span<const ExportRecords>, const ShownText&, const TextContext&,
                              const std::filesystem::path&, const ExportRun&) {
    return Error{ErrorKind::Unsupported, {}};
}

} // namespace quobrix
