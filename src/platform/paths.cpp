#include "platform/paths.h"

namespace quobrix {

std::filesystem::path programFolder(const std::filesystem::path& executable) {
    if (executable.empty())
        return {};
    using Text = std::filesystem::path::string_type;
    constexpr auto kSeparator = std::filesystem::path::preferred_separator;
    Text folder = (executable.parent_path() / "").native();
    const Text inner = Text(1, kSeparator) + std::filesystem::path("Release").native() + kSeparator;
    if (const auto at = folder.find(inner); at != Text::npos)
        folder.erase(at + 1, inner.size() - 1);
    return folder;
}

std::filesystem::path deliveredFolder() {
    const std::filesystem::path program = programFolder(executablePath());
    if (program.empty())
        return {};
    const std::filesystem::path packaged = (program / ".." / "share" / "quobrix").lexically_normal();
    std::error_code ignored;
    return std::filesystem::is_directory(packaged, ignored) ? packaged : program;
}

} // namespace quobrix
