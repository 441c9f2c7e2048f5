#pragma once

#include "compound/name.h"
#include "compound/name_index.h"
#include "compound/pages.h"

#include <map>
#include <optional>
#include <vector>

namespace quobrix::cfb {

/// The directory: all entries as they stand on disk, the tree of the root storage's members, and a hash of their
/// names.
class Directory {
public:
    /// A new directory with a root entry only.
    Directory();
    /// The entries of a file; entries that make no sense are not listed, and never changed.
    explicit Directory(Pages entries);

    /// The stream or storage called NAME in the root storage, or kNoEntry.
    std::uint32_t find(EntryName name) const;
    /// Adds an empty stream; there must be nothing of that name. It is not in the tree before settle().
    std::uint32_t insert(const NameField& name);
    /// Removes an entry that find() yields; its index may be given to another. In a damaged directory there may be more
    /// of that name: find() then yields the next one.
    void erase(std::uint32_t index);

    bool isMember(std::uint32_t index) const { return members_.contains(index); }
    /// A member for which the tree must have a place; false for those inserted after the last settle().
    bool belongsInTree(std::uint32_t index) const { return isMember(index) && !added_.contains(index); }
    bool isStream(std::uint32_t index) const { return type(index) == EntryType::Stream; }
    EntryName name(std::uint32_t index) const {
        return {at(index) + entry::kName, load16(at(index) + entry::kNameBytes) / 2u - 1};
    }
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
    /// Completes the tree, so that the pages can be written.
    void settle();
    void commit() { pages_.commit(); }
    /// The directory is as it was committed, or new.
    void rollBack();

    /// The fields of an entry that the tree consists of.
    std::uint32_t link(std::uint32_t index, std::uint32_t field) const { return load32(at(index) + field); }
    void setLink(std::uint32_t index, std::uint32_t field, std::uint32_t to);
    bool red(std::uint32_t index) const { return at(index)[entry::kColour] == static_cast<std::uint8_t>(Colour::Red); }
    void setRed(std::uint32_t index, bool red);

private:
    const std::uint8_t* at(std::uint32_t index) const { return pages_.at(std::size_t{index} * kEntrySize); }
    std::uint8_t* change(std::uint32_t index) { return pages_.change(std::size_t{index} * kEntrySize); }
    std::uint32_t count() const { return pages_.count() * kEntriesPerPage; }
    EntryType type(std::uint32_t index) const { return static_cast<EntryType>(at(index)[entry::kType]); }
    bool sensible(std::uint32_t index) const;
    std::uint32_t find(EntryName name, std::uint32_t hash) const;
    void load();
    void findMembers();
    std::optional<std::vector<std::uint32_t>> plainMembers() const;
    void walk(std::uint32_t top, SectorSet& seen, std::vector<std::uint32_t>* found) const;
    void prepareTree();
    bool precedes(std::uint32_t a, std::uint32_t b) const { return compareNames(name(a), name(b)) < 0; }
    void sortByName(std::vector<std::uint32_t>& entries) const;
    void appendPage();
    void addMember(std::uint32_t index);

    Pages pages_;
    SectorSet members_; ///< entries of the root storage
    SectorSet added_;   ///< those that are not in the tree yet
    std::uint32_t addedCount_ = 0;
    std::uint32_t memberCount_ = 0;
    bool treeChecked_ = false;             ///< the tree is known to be ordered and balanced
    std::vector<std::uint32_t> freeSlots_; ///< unused entries, the lowest last
    NameIndex names_;
    mutable std::uint32_t lastFound_ = 0;
    std::map<std::uint32_t, std::uint32_t> hidden_; ///< by entry: another one of its name, which counts only without it
};

} // namespace quobrix::cfb
