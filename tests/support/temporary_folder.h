#pragma once

#include "base/path_text.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace quobrix::test {

/// An empty folder of its own, gone with this object. Its name has letters that no code page has together.
class TemporaryFolder {
public:
    TemporaryFolder()
        : path_(std::filesystem::temp_directory_path() /
                pathFromUtf8("quobrix_\u017Bo\u0301\u8ECA_" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
#ifdef _WIN32 // which removes no file that is read-only
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, ignored))
            std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
#endif
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / pathFromUtf8(name); }
    /// What is in it, in the order of names.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

private:
    std::filesystem::path path_;
};

} // namespace quobrix::test
