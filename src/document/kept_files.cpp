#include "document/kept_files.h"

#include "platform/paths.h"

namespace quobrix {

namespace fs = std::filesystem;

bool KeptFiles::contains(const fs::path& path, const FileSnapshot& now) const {
    const auto found = files_.find(comparablePath(path));
    return found != files_.end() && found->second == now;
}

void KeptFiles::add(const fs::path& path, const FileSnapshot& left) {
    files_.insert_or_assign(comparablePath(path), left);
}

void KeptFiles::follow(const fs::path& path, const FileSnapshot& before, const FileSnapshot& after) {
    if (contains(path, before))
        add(path, after);
}

} // namespace quobrix
