#include "summary/deleted_summaries.h"

#include "base/path_text.h"
#include "texts/text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kMagic{"QuobrixDeleted\0\1", 16}; // the last byte is the version
constexpr std::size_t kKeySize = SummaryText::kWidth + 4 + 4;
constexpr std::uint64_t kMostKeyBytes = std::uint64_t(1) << 25; // more than a database can hold trips

/// Whether one of KEYS, ascending, matches KEY; those by its logger and time may.
bool holds(const std::vector<SummaryKey>& keys, const SummaryKey& key) {
    const auto [first, end] =
        std::equal_range(keys.begin(), keys.end(), key, [](const SummaryKey& left, const SummaryKey& right) {
            return std::pair(left.logger.view(), left.recordedStart) <
                   std::pair(right.logger.view(), right.recordedStart);
        });
    return std::any_of(first, end, [&](const SummaryKey& other) { return other.matches(key); });
}

std::vector<SummaryKey> ascending(std::vector<SummaryKey> keys) {
    std::ranges::sort(keys);
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

} // namespace

std::weak_ordering SummaryKey::operator<=>(const SummaryKey& other) const {
    if (const auto order = logger.view() <=> other.logger.view(); order != 0)
        return order;
    if (const auto order = recordedStart <=> other.recordedStart; order != 0)
        return order;
    return samplesSum <=> other.samplesSum;
}

SummaryKey keyOf(const SummaryRecord& record) { return {record.logger, record.recordedStart, record.samplesSum}; }

Bytes deletedSummariesBytes(std::span<const SummaryKey> keys) {
    ByteWriter out;
    out.reserve(kMagic.size() + keys.size() * kKeySize);
    out.bytes({reinterpret_cast<const std::uint8_t*>(kMagic.data()), kMagic.size()});
    for (const SummaryKey& key : keys) {
        const std::string_view logger = key.logger.view();
        for (std::size_t i = 0; i < SummaryText::kWidth; ++i)
            out.u8(static_cast<std::uint8_t>(i < logger.size() ? logger[i] : 0));
        out.i32(key.recordedStart);
        out.u32(key.samplesSum);
    }
    return out.take();
}

Result<std::vector<SummaryKey>> readDeletedSummaries(ByteView bytes) {
    ByteReader in(bytes);
    const ByteView magic = in.bytes(kMagic.size());
    if (!std::equal(magic.begin(), magic.end(), kMagic.begin(), kMagic.end(),
                    [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); }) ||
        in.remaining() % kKeySize != 0)
        return Error{ErrorKind::Corrupt, {}};
    std::vector<SummaryKey> keys;
    keys.reserve(in.remaining() / kKeySize);
    while (in.remaining() > 0) {
        SummaryKey key{SummaryText::fromBytes(in.bytes(SummaryText::kWidth))};
        key.recordedStart = in.i32();
        key.samplesSum = in.u32();
        keys.push_back(key);
    }
    return ascending(std::move(keys));
}

Result<void> DeletedSummaries::load(const std::filesystem::path& database) {
    path_ = std::filesystem::path(database).replace_extension(".cdi");
    keys_.clear();
    const Result<std::unique_ptr<File>> file = files_.open(path_, FileMode::Read);
    if (!file)
        return file.error().kind == ErrorKind::NotFound ? Result<void>{} : file.error();
    const Result<std::uint64_t> size = (*file)->size();
    if (!size)
        return size.error();
    Result<std::vector<SummaryKey>> keys = Error{ErrorKind::Corrupt, {}};
    if (*size <= kMostKeyBytes) {
        Bytes bytes(static_cast<std::size_t>(*size));
        QUOBRIX_TRY((*file)->readAt(0, bytes));
        keys = readDeletedSummaries(bytes);
    }
    if (!keys)
        return Error{ErrorKind::Corrupt, text(TextId::SummaryDeletedDamaged, utf8(path_))};
    keys_ = *std::move(keys);
    return {};
}

bool DeletedSummaries::contains(const SummaryKey& key) const { return holds(keys_, key); }

Result<void> DeletedSummaries::add(std::span<const SummaryKey> keys) {
    std::vector<SummaryKey> all = keys_;
    all.insert(all.end(), keys.begin(), keys.end());
    return save(ascending(std::move(all)));
}

Result<void> DeletedSummaries::forget(std::span<const SummaryKey> keys) {
    const std::vector<SummaryKey> forgotten = ascending({keys.begin(), keys.end()});
    std::vector<SummaryKey> left = keys_;
    std::erase_if(left, [&](const SummaryKey& key) { return holds(forgotten, key); });
    return save(std::move(left));
}

Result<void> DeletedSummaries::save(std::vector<SummaryKey> keys) {
    if (keys == keys_)
        return {};
    Result<ReplacementFile> file = ReplacementFile::create(path_, {}, files_);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, deletedSummariesBytes(keys)));
    QUOBRIX_TRY(file->commit());
    keys_ = std::move(keys);
    return {};
}

} // namespace quobrix
