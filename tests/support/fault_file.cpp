#include "support/fault_file.h"

#include <algorithm>

namespace quobrix::test {

class FaultFile final : public File {
public:
    explicit FaultFile(FaultDisk& disk) : disk_(disk) {}

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        if (disk_.fails())
            return Error{disk_.failWith, ShownText::asItIs("read")};
        if (offset + out.size() > disk_.current_.size())
            return Error{ErrorKind::Corrupt, ShownText::asItIs("the file ends before")};
        std::copy_n(disk_.current_.begin() + static_cast<std::ptrdiff_t>(offset), out.size(), out.begin());
        return {};
    }

    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override {
        const bool fails = disk_.fails();
        if (fails) // a part of it, but never of the header
            bytes = bytes.first(offset == 0 ? disk_.random_() % 2 * bytes.size() : disk_.random_() % bytes.size());
        if (!bytes.empty()) {
            const FaultDisk::Write write{offset, {bytes.begin(), bytes.end()}};
            FaultDisk::apply(disk_.current_, write, 0, bytes.size());
            disk_.onTheWay_.push_back(write);
        }
        if (fails)
            return Error{disk_.failWith, ShownText::asItIs("write")};
        disk_.changed();
        return {};
    }

    Result<std::uint64_t> size() override {
        if (disk_.fails())
            return Error{disk_.failWith, ShownText::asItIs("size")};
        return disk_.current_.size();
    }

    Result<void> resize(std::uint64_t size) override {
        if (disk_.fails())
            return Error{disk_.failWith, ShownText::asItIs("resize")};
        disk_.current_.resize(static_cast<std::size_t>(size));
        for (FaultDisk::Write& write : disk_.onTheWay_)
            write.bytes.resize(std::min<std::size_t>(write.bytes.size(), size - std::min(size, write.offset)));
        std::erase_if(disk_.onTheWay_, [](const FaultDisk::Write& write) { return write.bytes.empty(); });
        disk_.sizes_.push_back(static_cast<std::size_t>(size));
        disk_.changed();
        return {};
    }

    Result<void> flush() override {
        if (disk_.fails()) {
            // As systems do: what could not be written is forgotten, though reading still shows it.
            disk_.applySome(disk_.durable_);
            disk_.onTheWay_.clear();
            disk_.sizes_.clear();
            return Error{disk_.failWith, ShownText::asItIs("flush")};
        }
        for (const std::size_t size : disk_.sizes_)
            disk_.durable_.resize(size);
        for (const FaultDisk::Write& write : disk_.onTheWay_)
            FaultDisk::apply(disk_.durable_, write, 0, write.bytes.size());
        disk_.onTheWay_.clear();
        disk_.sizes_.clear();
        disk_.changed();
        return {};
    }

private:
    FaultDisk& disk_;
};

std::unique_ptr<File> FaultDisk::file() { return std::make_unique<FaultFile>(*this); }

void FaultDisk::changed() {
    ++changes;
    if (afterEachChange)
        afterEachChange();
}

void FaultDisk::apply(Bytes& to, const Write& write, std::size_t begin, std::size_t end) {
    const std::size_t at = static_cast<std::size_t>(write.offset);
    to.resize(std::max(to.size(), at + end));
    std::copy(write.bytes.begin() + static_cast<std::ptrdiff_t>(begin),
              write.bytes.begin() + static_cast<std::ptrdiff_t>(end),
              to.begin() + static_cast<std::ptrdiff_t>(at + begin));
}

void FaultDisk::applySome(Bytes& to) {
    // File systems keep changes of size in order.
    for (std::size_t i = 0, count = random_() % (sizes_.size() + 1); i < count; ++i)
        to.resize(sizes_[i]);
    std::vector<const Write*> order;
    for (const Write& write : onTheWay_)
        order.push_back(&write);
    std::shuffle(order.begin(), order.end(), random_);
    const unsigned likely = random_() % 4; // all at once, few, most
    for (const Write* write : order) {
        const std::size_t size = write->bytes.size();
        const auto chosen = [&] { return likely == 0 || random_() % 4 < likely; };
        if (write->offset == 0 && size <= 512) {
            if (chosen())
                apply(to, *write, 0, size);
        } else if (random_() % 3 == 0) { // torn at any byte
            const std::size_t begin = random_() % 2 * (random_() % size);
            apply(to, *write, begin, begin + random_() % (size - begin + 1));
        } else { // any of its sectors
            const bool whole = random_() % 2;
            const bool wanted = chosen();
            for (std::size_t begin = 0; begin < size; begin += 512)
                if (whole ? wanted : chosen())
                    apply(to, *write, begin, std::min(begin + 512, size));
        }
    }
}

Bytes FaultDisk::powerCut() {
    Bytes image = durable_;
    applySome(image);
    return image;
}

} // namespace quobrix::test
