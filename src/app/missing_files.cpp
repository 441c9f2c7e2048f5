#include "app/missing_files.h"

#include "base/mutex.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace quobrix {
namespace fs = std::filesystem;

/// What the thread knows of the object, which may end before it.
struct MissingFiles::Link {
    Mutex mutex;
    MissingFiles* object QUOBRIX_GUARDED_BY(mutex) = nullptr;
};

MissingFiles::MissingFiles(Found found) : found_(std::move(found)), link_(std::make_shared<Link>()) {
    const MutexLock lock(link_->mutex);
    link_->object = this;
}

MissingFiles::~MissingFiles() {
    const MutexLock lock(link_->mutex);
    link_->object = nullptr;
}

void MissingFiles::look(std::vector<fs::path> files) {
    if (looking_) {
        next_ = std::move(files);
        return;
    }
    if (files.empty())
        return;
    looking_ = true;
    std::thread([link = link_, files = std::move(files)]() mutable {
        std::erase_if(files, [](const fs::path& file) { // what cannot be told is taken to be there
            std::error_code ignored;
            return fs::status(file, ignored).type() != fs::file_type::not_found;
        });
        const MutexLock lock(link->mutex);
        if (MissingFiles* object = link->object)
            QMetaObject::invokeMethod(
                object, [object, missing = std::move(files)] { object->lookedFor(missing); }, Qt::QueuedConnection);
    }).detach();
}

void MissingFiles::lookedFor(const std::vector<fs::path>& missing) {
    looking_ = false;
    found_(missing);
    look(std::exchange(next_, {}));
}

} // namespace quobrix
