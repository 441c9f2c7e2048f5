#include "config/configuration_file.h"

#include "config/configuration_text.h"
#include "texts/text.h"

namespace quobrix {

Result<void> saveConfiguration(const LoggerConfiguration& configuration, const std::filesystem::path& path,
                               IfThere ifThere) {
    const std::string text = configurationText(configuration);
    Result<ReplacementFile> file = ReplacementFile::create(path);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())));
    return file->commit(ifThere);
}

Result<LoggerConfiguration> loadConfiguration(const std::filesystem::path& path) {
    const Result<Bytes> bytes = readFile(path, kMaxConfigurationText);
    if (!bytes && bytes.error().kind == ErrorKind::Unsupported)
        return Error{ErrorKind::NotADocument, text(TextId::ConfigurationTooLarge)};
    if (!bytes)
        return bytes.error();
    return readConfigurationText({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

bool isNoConfiguration(const Error& error) {
    return error.kind == ErrorKind::NotADocument || error.kind == ErrorKind::Corrupt;
}

} // namespace quobrix
