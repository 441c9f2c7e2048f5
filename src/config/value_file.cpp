#include "config/value_file.h"

#include "platform/file_system.h"
#include "texts/text.h"

namespace quobrix {
namespace {

constexpr std::size_t kMaxSize = 64 * 1024; // bytes

} // namespace

Result<void> saveValues(std::string_view text, const std::filesystem::path& path, IfThere ifThere) {
    Result<ReplacementFile> file = ReplacementFile::create(path);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())));
    return file->commit(ifThere);
}

Result<std::string> loadValues(const std::filesystem::path& path) {
    const Result<Bytes> bytes = readFile(path, kMaxSize);
    if (!bytes && bytes.error().kind == ErrorKind::Unsupported)
        return Error{ErrorKind::NotADocument, text(TextId::ValuesTooLarge)};
    if (!bytes)
        return bytes.error();
    return std::string(bytes->begin(), bytes->end());
}

bool isNoValues(const Error& error) {
    return error.kind == ErrorKind::NotADocument || error.kind == ErrorKind::Corrupt;
}

} // namespace quobrix
