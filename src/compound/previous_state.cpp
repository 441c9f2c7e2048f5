#include "compound/previous_state.h"

#include "compound/layout.h"
#include "texts/text.h"

#include <algorithm>
#include <bit>

namespace quobrix::cfb {

namespace {

constexpr std::array<std::uint8_t, 8> kMark = {'B', 'e', 'f', 'o', 'r', 'e', 0, 1};

// Byte offsets within the first sector of a note; all from kNext on is hashed, and the second sector.
constexpr std::uint32_t kHash = 8;
constexpr std::uint32_t kNext = 16;    ///< u64: the hash of the header that the commit wrote
constexpr std::uint32_t kContent = 24; ///< u64: the hash of the sectors within the ranges that the state uses
constexpr std::uint32_t kPlace = 32;   ///< u32: the sector of the second part
constexpr std::uint32_t kRanges = 36;  ///< u32 each: first sector and count, which is 0 behind the last one
constexpr std::uint32_t kMostRanges = (kSectorSize - kRanges) / 8;
/// Reading over so many sectors is quicker than reading twice.
constexpr std::uint32_t kShortGap = 64;

/// Against accidents, not forgery.
class Hash {
public:
    void add(ByteView bytes) {
        for (; bytes.size() >= 8; bytes = bytes.subspan(8))
            mix(load32(bytes.data()) | std::uint64_t{load32(bytes.data() + 4)} << 32);
        for (const std::uint8_t byte : bytes)
            mix(byte);
    }
    std::uint64_t value() const { return value_ ^ value_ >> 32; }

private:
    void mix(std::uint64_t word) { value_ = std::rotl((value_ ^ word) * 0x9E3779B97F4A7C15u, 29); }

    std::uint64_t value_ = 0x243F6A8885A308D3u;
};

std::uint64_t hashOf(ByteView bytes) {
    Hash hash;
    hash.add(bytes);
    return hash.value();
}

void store64(std::uint8_t* to, std::uint64_t value) {
    store32(to, static_cast<std::uint32_t>(value));
    store32(to + 4, static_cast<std::uint32_t>(value >> 32));
}
std::uint64_t load64(const std::uint8_t* from) { return load32(from) | std::uint64_t{load32(from + 4)} << 32; }

std::uint64_t hashOf(const PreviousStateNote& note) {
    Hash hash;
    hash.add(ByteView(note.about).subspan(kNext));
    hash.add(note.header);
    return hash.value();
}

/// SECTORS, in ascending order, in so few ranges that a note holds them and few reads do: the shortest gaps are taken
/// in.
std::vector<Run> rangesOf(const std::vector<std::uint32_t>& sectors) {
    std::vector<std::uint32_t> gaps;
    for (std::size_t i = 1; i < sectors.size(); ++i)
        if (const std::uint32_t gap = sectors[i] - sectors[i - 1]; gap > 1)
            gaps.push_back(gap);
    std::uint32_t longest = kShortGap; // of the gaps that are taken in
    if (gaps.size() >= kMostRanges) {
        std::ranges::nth_element(gaps, gaps.begin() + (kMostRanges - 1), std::greater{});
        longest = std::max(longest, gaps[kMostRanges - 1]);
    }
    std::vector<Run> ranges;
    for (const std::uint32_t sector : sectors)
        if (ranges.empty() || sector - ranges.back().last() > longest)
            ranges.push_back({sector, 1});
        else
            ranges.back().count = sector - ranges.back().first + 1;
    return ranges;
}

/// Of the content of the sectors in RANGES that are USED.
template <class Used>
Result<std::uint64_t> hashContent(File& file, const std::vector<Run>& ranges, Used used) {
    constexpr std::uint32_t kMostAtOnce = 256;
    Hash hash;
    Bytes content;
    for (const Run& range : ranges)
        for (std::uint32_t first = range.first; first <= range.last(); first += kMostAtOnce) {
            std::uint32_t count = std::min(kMostAtOnce, range.last() - first + 1);
            while (count > 0 && !used(first + count - 1)) // the file may end there
                --count;
            content.resize(std::size_t{count} * kSectorSize);
            if (count > 0)
                QUOBRIX_TRY(file.readAt(sectorOffset(first), content));
            for (std::uint32_t i = 0; i < count; ++i)
                if (used(first + i))
                    hash.add(ByteView(content).subspan(std::size_t{i} * kSectorSize, kSectorSize));
        }
    return hash.value();
}

/// A file that began with another header.
class Past final : public File {
public:
    Past(File& file, const Sector& header) : file_(file), header_(header) {}
    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        QUOBRIX_TRY(file_.readAt(offset, out));
        if (offset < kSectorSize)
            std::copy_n(header_.begin() + static_cast<std::ptrdiff_t>(offset),
                        std::min<std::size_t>(out.size(), kSectorSize - static_cast<std::size_t>(offset)), out.begin());
        return {};
    }
    Result<std::uint64_t> size() override { return file_.size(); }
    Result<void> writeAt(std::uint64_t, ByteView) override { return refused(); }
    Result<void> resize(std::uint64_t) override { return refused(); }
    Result<void> flush() override { return refused(); }

private:
    static Error refused() { return {ErrorKind::ReadOnly, text(TextId::APastStateOfAFile)}; }

    File& file_;
    const Sector header_;
};

/// Whether the two sectors are where a commit that replaces the state of LAYOUT puts its note.
bool atTheirPlace(const Layout& layout, std::uint32_t about, std::uint32_t header) {
    const std::uint32_t marks = layout.fat.count() * kMarksPerPage;
    const auto used = [&](std::uint32_t sector) {
        return sector < marks && load32(layout.fat.at(std::size_t{4} * sector)) != kFreeSector;
    };
    std::uint32_t sector = 0;
    for (const std::uint32_t place : {about, header}) {
        while (used(sector))
            ++sector;
        if (place != sector++)
            return false;
    }
    return true;
}

/// The state that the note of which SECTOR holds the part ABOUT is of, if it is whole.
Result<std::unique_ptr<File>> stateOf(File& file, std::uint32_t sector, const Sector& about) {
    const Result<std::uint64_t> size = file.size();
    if (!size)
        return size.error();
    PreviousStateNote note{about, {}};
    const std::uint32_t place = load32(about.data() + kPlace);
    if (sectorOffset(place) + kSectorSize > *size)
        return std::unique_ptr<File>();
    QUOBRIX_TRY(file.readAt(sectorOffset(place), note.header));
    if (load64(about.data() + kHash) != hashOf(note))
        return std::unique_ptr<File>();
    auto past = std::make_unique<Past>(file, note.header);
    const Result<Layout> layout = readLayout(*past);
    if (!layout && layout.error().kind == ErrorKind::Io)
        return layout.error();
    if (!layout || layout->incomplete || !layout->damaged.empty() || !atTheirPlace(*layout, sector, place))
        return std::unique_ptr<File>();
    std::vector<Run> ranges;
    const std::uint32_t marks = layout->fat.count() * kMarksPerPage;
    for (std::uint32_t i = 0; i < kMostRanges; ++i) {
        const Run range{load32(about.data() + kRanges + 8 * i), load32(about.data() + kRanges + 8 * i + 4)};
        if (range.count == 0)
            break;
        if (range.count > marks || range.first > marks - range.count)
            return std::unique_ptr<File>();
        ranges.push_back(range);
    }
    const Result<std::uint64_t> content = hashContent(*past, ranges, [&](std::uint32_t used) {
        return load32(layout->fat.at(std::size_t{4} * used)) != kFreeSector;
    });
    if (!content && content.error().kind == ErrorKind::Io)
        return content.error();
    if (!content || *content != load64(about.data() + kContent))
        return std::unique_ptr<File>();
    return std::unique_ptr<File>(std::move(past));
}

} // namespace

PreviousStateNote notePreviousState(File& file, const Sector& header, const Sector& next, const AllocationTable& fat) {
    PreviousStateNote note;
    const auto replaced = fat.replaced();
    if (!replaced)
        return note;
    const std::vector<Run> ranges = rangesOf(*replaced);
    const auto content = hashContent(file, ranges, [&](std::uint32_t sector) { return fat.held(sector); });
    if (!content)
        return note;
    std::copy(kMark.begin(), kMark.end(), note.about.begin());
    store64(note.about.data() + kNext, hashOf(next));
    store64(note.about.data() + kContent, *content);
    store32(note.about.data() + kPlace, fat.spare().back());
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        store32(note.about.data() + kRanges + 8 * i, ranges[i].first);
        store32(note.about.data() + kRanges + 8 * i + 4, ranges[i].count);
    }
    note.header = header;
    store64(note.about.data() + kHash, hashOf(note));
    return note;
}

Result<std::unique_ptr<File>> previousState(File& file) {
    constexpr std::uint32_t kBlock = 1 << 20;
    constexpr int kMostNotes = 16; // of this one commit there is one; the others are there to waste time
    const Result<std::uint64_t> size = file.size();
    if (!size)
        return size.error();
    Sector present{};
    if (*size < kSectorSize)
        return std::unique_ptr<File>();
    QUOBRIX_TRY(file.readAt(0, present));
    const std::uint64_t end = std::min(*size / kSectorSize * kSectorSize, sectorOffset(kMostSectors));
    Bytes block;
    int notes = 0;
    for (std::uint64_t offset = kSectorSize; offset < end && notes < kMostNotes; offset += kBlock) {
        block.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, end - offset)));
        QUOBRIX_TRY(file.readAt(offset, block));
        for (std::size_t at = 0; at < block.size(); at += kSectorSize) {
            if (!std::equal(kMark.begin(), kMark.end(), block.begin() + static_cast<std::ptrdiff_t>(at)))
                continue;
            Sector about;
            std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(at), kSectorSize, about.begin());
            if (load64(about.data() + kNext) != hashOf(present) || ++notes > kMostNotes)
                continue;
            auto found = stateOf(file, static_cast<std::uint32_t>((offset + at) / kSectorSize - 1), about);
            if (!found || *found)
                return found;
        }
    }
    return std::unique_ptr<File>();
}

} // namespace quobrix::cfb
