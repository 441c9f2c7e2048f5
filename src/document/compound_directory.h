#pragma once

#include "document/compound_pages.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace quobrix::cfb {

/// A name as the directory keeps it: 1 to 31 UTF-16 units. Names that differ only in case are the same name.
struct EntryName {
    std::array<char16_t, 32> units{};
    std::uint32_t length = 0;

    /// TEXT is UTF-8; nothing when it is empty, too long or not UTF-8.
    static std::optional<EntryName> fromText(std::string_view text);
    std::string text() const;
    std::uint32_t hash() const;
};

/// Negative, 0 or positive: the order of MS-CFB 2.6.4, shorter names first, then by upper-case units.
int compareNames(const EntryName& a, const EntryName& b);

/// The directory: all entries as they stand on disk, the tree of the root storage's members, and a hash of their
/// names.
class Directory {
public:
    /// A new directory with a root entry only.
    Directory();
    /// The entries of a file; entries that make no sense are not listed, and never changed.
    explicit Directory(Bytes entries);

    /// The stream or storage called NAME in the root storage, or kNoEntry.
    std::uint32_t find(const EntryName& name) const;
    /// Adds an empty stream; there must be nothing of that name.
    std::uint32_t insert(const EntryName& name);
    /// Removes an entry that find() yields; its index may be given to another.
    void erase(std::uint32_t index);

    /// As compareNames() for NAME and the name of an entry.
    int compare(const EntryName& name, std::uint32_t index) const;
    bool isMember(std::uint32_t index) const { return members_.contains(index); }
    bool isStream(std::uint32_t index) const { return type(index) == EntryType::Stream; }
    EntryName name(std::uint32_t index) const;
    std::uint32_t start(std::uint32_t index) const { return load32(at(index) + entry::kStart); }
    std::uint32_t size(std::uint32_t index) const { return load32(at(index) + entry::kSize); }
    /// The first sector and the size in bytes of a stream, or of the mini stream for entry 0.
    void setContent(std::uint32_t index, std::uint32_t start, std::uint32_t size);
    /// The members of the root storage in name order.
    std::vector<std::uint32_t> members() const;
    /// Unsupported if there are inner storages, Corrupt if entries are in use that members() does not list.
    Result<void> onlyStreams() const;
    /// Takes over what other programs may keep beside the content: class id, state bits and times.
    void copyAttributes(std::uint32_t index, const Directory& from, std::uint32_t fromIndex);

    const Pages& pages() const { return pages_; }
    void commit() { pages_.commit(); }
    /// The directory is as it was committed, or new.
    void rollBack();

    /// The fields of an entry that the tree consists of.
    std::uint32_t link(std::uint32_t index, std::uint32_t field) const { return load32(at(index) + field); }
    void setLink(std::uint32_t index, std::uint32_t field, std::uint32_t to);
    bool red(std::uint32_t index) const { return at(index)[entry::kColour] == static_cast<std::uint8_t>(Colour::Red); }
    void setRed(std::uint32_t index, bool red);

private:
    const std::uint8_t* at(std::uint32_t index) const { return pages_.data() + std::size_t{index} * kEntrySize; }
    std::uint8_t* change(std::uint32_t index) { return pages_.change(std::size_t{index} * kEntrySize); }
    std::uint32_t count() const { return pages_.count() * kEntriesPerPage; }
    EntryType type(std::uint32_t index) const { return static_cast<EntryType>(at(index)[entry::kType]); }
    bool sensible(std::uint32_t index) const;
    void load();
    void findMembers();
    std::optional<std::vector<std::uint32_t>> plainMembers() const;
    void walk(std::uint32_t top, SectorSet& seen, std::vector<std::uint32_t>* found) const;
    void prepareTree();
    void appendPage();

    struct Slot {
        std::uint32_t index = kNoEntry;
        std::uint32_t hash = 0; ///< of the name, so that most comparisons need not look at the entry
    };
    std::uint32_t hashOf(std::uint32_t index) const;
    void hashInsert(std::uint32_t index, std::uint32_t hash);
    void hashErase(std::uint32_t index);
    void rehash();

    Pages pages_;
    SectorSet members_; ///< entries of the root storage
    std::uint32_t memberCount_ = 0;
    bool treeChecked_ = false;             ///< the tree is known to be ordered and balanced
    std::vector<std::uint32_t> freeSlots_; ///< unused entries, the lowest last
    std::vector<Slot> slots_;              ///< open addressing by name; a power of two
    std::uint32_t slotsUsed_ = 0;          ///< erased ones included
};

} // namespace quobrix::cfb
