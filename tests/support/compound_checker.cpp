#include "support/compound_checker.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

namespace quobrix::test {

namespace {

using std::uint32_t;

constexpr uint32_t kEnd = 0xFFFFFFFE, kFree = 0xFFFFFFFF, kNone = 0xFFFFFFFF;

[[noreturn]] void fault(const std::string& what) { throw std::runtime_error(what); }
void require(bool condition, const std::string& what) {
    if (!condition)
        fault(what);
}

class Examiner {
public:
    explicit Examiner(const Bytes& file, CompoundImage& image) : file_(file), image_(image) {}

    void examine() {
        require(file_.size() >= 512, "no header");
        require(u32(0) == 0xE011CFD0 && u32(4) == 0xE11AB1A1, "signature");
        require(u16(26) == 3 && u16(28) == 0xFFFE && u16(30) == 9 && u16(32) == 6 && u32(56) == 4096, "header figures");
        require(u32(40) == 0, "directory sector count of a version 3 file");
        owners_.assign((file_.size() - 512) / 512, "");
        readFat();
        directory_ = chain(u32(48), "directory");
        const std::vector<uint32_t> miniFat = chain(u32(60), "mini FAT");
        require(miniFat.size() == u32(64), "mini FAT sector count");
        for (const uint32_t sector : miniFat)
            for (uint32_t i = 0; i < 128; ++i)
                miniFat_.push_back(u32(at(sector) + 4 * i));
        require(entry(0, 66, 1) == 5, "root entry");
        miniStream_ = entry(0, 120) > 0 ? chain(entry(0, 116), "mini stream") : std::vector<uint32_t>();
        require(entry(0, 120) <= miniStream_.size() * 512 && entry(0, 120) % 64 == 0, "mini stream size");
        miniOwners_.assign(entry(0, 120) / 64, "");

        entrySeen_.assign(directory_.size() * 4, false);
        entrySeen_[0] = true;
        readStorage(0, "");
        for (uint32_t i = 0; i < entrySeen_.size(); ++i)
            require(entrySeen_[i] || entry(i, 66, 1) == 0, "entry in no tree: " + std::to_string(i));
        for (uint32_t i = 0; i < fat_.size(); ++i)
            require(i < owners_.size() ? (fat_[i] == kFree) == owners_[i].empty() : fat_[i] == kFree,
                    "sector used and owned by nobody, or the other way round: " + std::to_string(i));
        for (uint32_t i = 0; i < miniFat_.size(); ++i)
            require(i < miniOwners_.size() ? (miniFat_[i] == kFree) == miniOwners_[i].empty() : miniFat_[i] == kFree,
                    "mini sector used and owned by nobody, or the other way round: " + std::to_string(i));
    }

private:
    uint32_t u16(std::size_t offset) const { return file_.at(offset) | file_.at(offset + 1) << 8; }
    uint32_t u32(std::size_t offset) const { return u16(offset) | u16(offset + 2) << 16; }
    static std::size_t at(uint32_t sector) { return (std::size_t{sector} + 1) * 512; }

    void own(uint32_t sector, const std::string& owner) {
        require(sector < owners_.size(), owner + ": sector beyond the file");
        require(owners_[sector].empty(), owner + ": sector owned by " + owners_[sector]);
        owners_[sector] = owner;
    }

    void readFat() {
        std::vector<uint32_t> pages;
        for (uint32_t i = 0; i < 109; ++i)
            pages.push_back(u32(76 + 4 * i));
        std::vector<uint32_t> lists;
        for (uint32_t list = u32(68); list != kEnd; list = u32(at(list) + 508)) {
            own(list, "DIFAT");
            lists.push_back(list);
            for (uint32_t i = 0; i < 127; ++i)
                pages.push_back(u32(at(list) + 4 * i));
        }
        require(lists.size() == u32(72), "DIFAT sector count");
        const uint32_t count = u32(44);
        require(count <= pages.size(), "FAT sector count");
        for (std::size_t i = 0; i < pages.size(); ++i)
            require((pages[i] != kFree) == (i < count), "FAT sector list");
        pages.resize(count);
        for (const uint32_t page : pages) {
            own(page, "FAT");
            for (uint32_t i = 0; i < 128; ++i)
                fat_.push_back(u32(at(page) + 4 * i));
        }
        for (const uint32_t page : pages)
            require(fat_.at(page) == 0xFFFFFFFD, "mark of a FAT sector");
        for (const uint32_t list : lists)
            require(fat_.at(list) == 0xFFFFFFFC, "mark of a DIFAT sector");
    }

    std::vector<uint32_t> chain(uint32_t first, const std::string& owner) {
        std::vector<uint32_t> sectors;
        for (uint32_t sector = first; sector != kEnd; sector = fat_.at(sector)) {
            own(sector, owner);
            sectors.push_back(sector);
        }
        return sectors;
    }

    uint32_t entry(uint32_t index, uint32_t field, int width = 4) const {
        const std::size_t offset = at(directory_.at(index / 4)) + index % 4 * 128 + field;
        return width == 1 ? file_.at(offset) : width == 2 ? u16(offset) : u32(offset);
    }

    std::u16string name(uint32_t index) const {
        const uint32_t bytes = entry(index, 64, 2);
        require(bytes >= 4 && bytes <= 64 && bytes % 2 == 0, "name length");
        std::u16string name;
        for (uint32_t i = 0; i < bytes / 2 - 1; ++i)
            name += static_cast<char16_t>(entry(index, 2 * i, 2));
        require(entry(index, bytes - 2, 2) == 0, "name terminator");
        return name;
    }

    static bool precedes(const std::u16string& a, const std::u16string& b) {
        const auto upper = [](std::u16string text) {
            for (char16_t& c : text)
                c = c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
            return text;
        };
        return a.size() != b.size() ? a.size() < b.size() : upper(a) < upper(b);
    }

    void readStorage(uint32_t index, const std::string& path) {
        const bool foreign = !path.empty(); // inner storages stay as their writer made them
        std::optional<std::size_t> blacks;
        std::u16string last;
        std::vector<uint32_t> storages;
        const std::function<void(uint32_t, bool, std::size_t, std::size_t)> walk =
            [&](uint32_t node, bool parentRed, std::size_t black, std::size_t depth) {
                if (node == kNone) {
                    require(foreign || black == blacks.value_or(black), "black height");
                    blacks = black;
                    return;
                }
                require(node < entrySeen_.size() && !entrySeen_[node], "tree link");
                entrySeen_[node] = true;
                require(depth < 64, "tree depth");
                image_.treeDepth = std::max(image_.treeDepth, depth);
                const bool red = entry(node, 67, 1) == 0;
                require(foreign || !red || !parentRed, "red below red");
                walk(entry(node, 68), red, black + !red, depth + 1);
                const std::u16string current = name(node);
                require(last.empty() || precedes(last, current), "name order");
                last = current;
                if (entry(node, 66, 1) == 1)
                    storages.push_back(node);
                else
                    readStream(node, path + std::string(current.begin(), current.end()));
                walk(entry(node, 72), red, black + !red, depth + 1);
            };
        const uint32_t top = entry(index, 76);
        require(foreign || top == kNone || entry(top, 67, 1) == 1, "red tree top");
        walk(top, false, 0, 1);
        for (const uint32_t storage : storages) {
            const std::u16string inner = name(storage);
            readStorage(storage, path + std::string(inner.begin(), inner.end()) + "/");
        }
    }

    void readStream(uint32_t index, const std::string& path) {
        require(entry(index, 66, 1) == 2, path + ": entry type");
        const uint32_t size = entry(index, 120);
        Bytes content;
        if (size == 0) {
            require(entry(index, 116) == kEnd, path + ": start of an empty stream");
        } else if (size < 4096) {
            for (uint32_t sector = entry(index, 116); sector != kEnd; sector = miniFat_.at(sector)) {
                require(sector < miniOwners_.size() && miniOwners_[sector].empty(), path + ": mini sector");
                miniOwners_[sector] = path;
                const auto from = file_.begin() + static_cast<std::ptrdiff_t>(at(miniStream_.at(sector / 8))) +
                                  static_cast<std::ptrdiff_t>(sector % 8 * 64);
                content.insert(content.end(), from, from + 64);
            }
            require(content.size() == (size + 63) / 64 * 64, path + ": length of its chain");
        } else {
            for (const uint32_t sector : chain(entry(index, 116), path)) {
                const auto from = file_.begin() + static_cast<std::ptrdiff_t>(at(sector));
                content.insert(content.end(), from, from + 512);
            }
            require(content.size() == (std::size_t{size} + 511) / 512 * 512, path + ": length of its chain");
        }
        content.resize(size);
        require(image_.streams.emplace(path, std::move(content)).second, path + ": two streams of a name");
    }

    const Bytes& file_;
    CompoundImage& image_;
    std::vector<uint32_t> fat_, miniFat_, directory_, miniStream_;
    std::vector<std::string> owners_, miniOwners_;
    std::vector<bool> entrySeen_;
};

} // namespace

CompoundImage examineCompoundFile(const Bytes& file) {
    CompoundImage image;
    try {
        Examiner(file, image).examine();
    } catch (const std::exception& error) {
        image.fault = error.what();
    }
    return image;
}

} // namespace quobrix::test
