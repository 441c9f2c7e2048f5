#pragma once

#include <QObject>

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace quobrix {

/// Finds out which files do not exist, on a thread of its own: a folder of the network may take its time to answer, or
/// never do.
class MissingFiles final : public QObject {
public:
    using Found = std::function<void(const std::vector<std::filesystem::path>& missing)>;

    /// FOUND is called on the thread of this object, and not any more once this has ended.
    explicit MissingFiles(Found found);
    ~MissingFiles() override;

    /// Looks for FILES; if it is still looking for others, after that.
    void look(std::vector<std::filesystem::path> files);

private:
    struct Link;
    void lookedFor(const std::vector<std::filesystem::path>& missing);

    Found found_;
    std::shared_ptr<Link> link_;
    std::vector<std::filesystem::path> next_;
    bool looking_ = false;
};

} // namespace quobrix
