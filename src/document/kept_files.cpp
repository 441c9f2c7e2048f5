#include "document/kept_files.h"

namespace quobrix {
namespace {

namespace fs = std::filesystem;

/// The same whatever links lead there, be it by the folder or by the file.
fs::path withoutLinks(const fs::path& path) {
    std::error_code failed;
    fs::path real = fs::weakly_canonical(path, failed);
    return failed ? path : real;
}

} // namespace

bool KeptFiles::contains(const fs::path& path, const FileSnapshot& now) const {
    const auto found = files_.find(withoutLinks(path));
    return found != files_.end() && found->second == now;
}

void KeptFiles::add(const fs::path& path, const FileSnapshot& left) {
    files_.insert_or_assign(withoutLinks(path), left);
}

void KeptFiles::follow(const fs::path& path, const FileSnapshot& before, const FileSnapshot& after) {
    if (contains(path, before))
        add(path, after);
}

} // namespace quobrix
