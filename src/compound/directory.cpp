#include "compound/directory.h"

#include "compound/tree.h"
#include "texts/text.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

/// With this many new entries for each old one, a new tree is built more quickly than they are inserted.
constexpr std::uint32_t kManyAdded = 2;
/// A large index lies outside the processor's cache: this many places are fetched before they are needed.
constexpr std::size_t kPrefetched = 8;

} // namespace

Directory::Directory() : treeChecked_(true) {
    appendPage();
    freeSlots_.pop_back();
    std::uint8_t* root = change(0);
    constexpr std::u16string_view kRootName = u"Root Entry"; // as MS-CFB 2.6.2 requires
    for (std::uint32_t i = 0; i < kRootName.size(); ++i)
        store16(root + entry::kName + 2 * i, kRootName[i]);
    store16(root + entry::kNameBytes, static_cast<std::uint16_t>(2 * kRootName.size() + 2));
    root[entry::kType] = static_cast<std::uint8_t>(EntryType::Root);
    setRed(0, false);
    store32(root + entry::kStart, kEndOfChain);
}

Directory::Directory(Pages entries) : pages_(std::move(entries)) {
    pages_.commit();
    load();
}

void Directory::load() {
    treeChecked_ = false;
    members_.clear();
    added_.clear();
    addedCount_ = 0;
    freeSlots_.clear();
    hidden_.clear();
    findMembers();
    for (std::uint32_t index = count(); index-- > 1;)
        if (type(index) == EntryType::Unused && load16(at(index) + entry::kNameBytes) == 0)
            freeSlots_.push_back(index);
}

void Directory::rollBack() {
    pages_.rollBack();
    if (pages_.count() == 0)
        *this = Directory();
    else
        load();
}

bool Directory::sensible(std::uint32_t index) const {
    const std::uint32_t nameBytes = load16(at(index) + entry::kNameBytes);
    return (type(index) == EntryType::Stream || type(index) == EntryType::Storage) && nameBytes >= 4 &&
           nameBytes <= 64 && nameBytes % 2 == 0 && load16(at(index) + nameBytes - 2) == 0;
}

/// Marks in SEEN, and lists in FOUND, what hangs on TOP. Needs no recursion: a foreign writer may have made a list of
/// it.
void Directory::walk(std::uint32_t top, SectorSet& seen, std::vector<std::uint32_t>* found) const {
    std::vector<std::uint32_t> open{top};
    while (!open.empty()) {
        const std::uint32_t index = open.back();
        open.pop_back();
        if (index == 0 || index >= count() || seen.contains(index) || !sensible(index))
            continue;
        seen.insert(index);
        if (found != nullptr)
            found->push_back(index);
        open.push_back(link(index, entry::kRight));
        open.push_back(link(index, entry::kLeft));
    }
}

/// The members where they are all there is: no inner storage, and exactly one link to each entry. One pass through the
/// entries tells, which for large directories is several times faster than following the tree.
std::optional<std::vector<std::uint32_t>> Directory::plainMembers() const {
    std::vector<bool> linked(count());
    const auto follow = [&](std::uint32_t to) {
        if (to == kNoEntry)
            return true;
        if (to == 0 || to >= count() || linked[to])
            return false;
        linked[to] = true;
        return true;
    };
    if (!follow(link(0, entry::kChild)))
        return {};
    std::vector<std::uint32_t> found;
    found.reserve(count());
    for (std::uint32_t index = 1; index < count(); ++index) {
        if (type(index) == EntryType::Unused)
            continue;
        if (!isStream(index) || !sensible(index) || !follow(link(index, entry::kLeft)) ||
            !follow(link(index, entry::kRight)))
            return {};
        found.push_back(index);
    }
    const auto links = std::count(linked.begin(), linked.end(), true);
    if (links != std::ssize(found) ||
        !std::all_of(found.begin(), found.end(), [&](std::uint32_t index) { return linked[index]; }))
        return {};
    return found;
}

void Directory::findMembers() {
    std::vector<std::uint32_t> found;
    if (auto plain = plainMembers()) {
        found = *std::move(plain);
    } else {
        // Whatever no tree leads to belonged here: a damaged link or entry has cut it off.
        SectorSet seen;
        walk(link(0, entry::kChild), seen, &found);
        for (std::uint32_t index = 1; index < count(); ++index)
            if (sensible(index) && type(index) == EntryType::Storage)
                walk(link(index, entry::kChild), seen, nullptr);
        for (std::uint32_t index = 1; index < count(); ++index)
            if (sensible(index) && !seen.contains(index))
                found.push_back(index);
    }
    memberCount_ = static_cast<std::uint32_t>(found.size());
    names_ = NameIndex(found.size());
    std::vector<std::uint32_t> hashes;
    hashes.reserve(found.size());
    for (const std::uint32_t index : found)
        hashes.push_back(name(index).hash());
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (i + kPrefetched < found.size())
            names_.prefetch(hashes[i + kPrefetched]);
        // Of two entries of one name only the first can be meant.
        const std::uint32_t index = found[i];
        if (const std::uint32_t first = find(name(index), hashes[i]); first != kNoEntry) {
            --memberCount_;
            if (const auto [behind, only] = hidden_.emplace(first, index); !only)
                hidden_[index] = std::exchange(behind->second, index);
            continue;
        }
        members_.insert(index);
        names_.insert(hashes[i], index);
    }
}

std::vector<std::uint32_t> Directory::members() const {
    if (auto order = treeInOrder(*this, memberCount_); order && order->size() == memberCount_)
        return *std::move(order);
    std::vector<std::uint32_t> order = members_.members();
    sortByName(order);
    return order;
}

/// A natural merge sort: objects are written in the order of their ids, which is that of their names.
void Directory::sortByName(std::vector<std::uint32_t>& entries) const {
    std::vector<std::vector<std::uint32_t>::iterator> runs{entries.begin()};
    while (runs.back() != entries.end()) {
        auto next = runs.back() + 1;
        while (next != entries.end() && precedes(*(next - 1), *next))
            ++next;
        runs.push_back(next);
    }
    for (std::size_t width = 1; width + 1 < runs.size(); width *= 2)
        for (std::size_t i = 0; i + width + 1 < runs.size(); i += 2 * width)
            std::inplace_merge(runs[i], runs[i + width], runs[std::min(i + 2 * width, runs.size() - 1)],
                               [this](std::uint32_t a, std::uint32_t b) { return precedes(a, b); });
}

Result<void> Directory::onlyStreams() const {
    for (std::uint32_t index = 1; index < count(); ++index)
        if (type(index) == EntryType::Storage)
            return Error{ErrorKind::Unsupported, text(TextId::TheFileHoldsInnerStorages)};
    for (std::uint32_t index = 1; index < count(); ++index)
        if (type(index) != EntryType::Unused && !isMember(index))
            return Error{ErrorKind::Corrupt, text(TextId::DirectoryEntryMakesNoSense, index)};
    return {};
}

void Directory::copyAttributes(std::uint32_t index, const Directory& from, std::uint32_t fromIndex) {
    std::copy(from.at(fromIndex) + entry::kAttributes, from.at(fromIndex) + entry::kStart,
              change(index) + entry::kAttributes);
}

/// Before the first change of structure: a tree of a foreign writer, or a damaged one, is built anew.
void Directory::prepareTree() {
    if (treeChecked_)
        return;
    treeChecked_ = true;
    const std::uint32_t inTree = memberCount_ - addedCount_;
    const auto order = treeInOrder(*this, inTree);
    if (order && order->size() == inTree)
        return;
    rebuildTree(*this, members());
    added_.clear();
    addedCount_ = 0;
}

void Directory::settle() {
    if (addedCount_ == 0)
        return;
    prepareTree();
    std::vector<std::uint32_t> added = added_.members();
    const std::uint32_t inTree = memberCount_ - addedCount_;
    added_.clear();
    addedCount_ = 0;
    if (added.size() < std::size_t{kManyAdded} * inTree) {
        for (const std::uint32_t index : added)
            insertIntoTree(*this, index);
        return;
    }
    const auto before = treeInOrder(*this, inTree);
    sortByName(added);
    std::vector<std::uint32_t> all;
    std::merge(before->begin(), before->end(), added.begin(), added.end(), std::back_inserter(all),
               [this](std::uint32_t a, std::uint32_t b) { return precedes(a, b); });
    rebuildTree(*this, all);
}

void Directory::appendPage() {
    const std::uint32_t first = count();
    pages_.grow(pages_.count() + 1, 0);
    for (std::uint32_t index = first + kEntriesPerPage; index-- > first;) {
        std::uint8_t* slot = change(index);
        store32(slot + entry::kLeft, kNoEntry);
        store32(slot + entry::kRight, kNoEntry);
        store32(slot + entry::kChild, kNoEntry);
        freeSlots_.push_back(index);
    }
}

std::uint32_t Directory::insert(const NameField& name) {
    if (freeSlots_.empty())
        appendPage();
    const std::uint32_t index = freeSlots_.back();
    freeSlots_.pop_back();
    std::uint8_t* slot = change(index);
    std::fill_n(std::copy(name.bytes.begin(), name.bytes.end(), slot), kEntrySize - name.bytes.size(), std::uint8_t{0});
    store16(slot + entry::kNameBytes, static_cast<std::uint16_t>(2 * name.length + 2));
    slot[entry::kType] = static_cast<std::uint8_t>(EntryType::Stream);
    for (const std::uint32_t link : {entry::kLeft, entry::kRight, entry::kChild})
        store32(slot + link, kNoEntry);
    store32(slot + entry::kStart, kEndOfChain);
    names_.insert(name.name().hash(), index);
    addMember(index);
    return index;
}

void Directory::addMember(std::uint32_t index) {
    members_.insert(index);
    ++memberCount_;
    added_.insert(index);
    ++addedCount_;
}

void Directory::erase(std::uint32_t index) {
    prepareTree();
    if (added_.contains(index)) {
        added_.erase(index);
        --addedCount_;
    } else {
        eraseFromTree(*this, index);
    }
    members_.erase(index);
    --memberCount_;
    if (const auto behind = hidden_.find(index); behind != hidden_.end()) {
        // Nothing hides it any more: whoever opens the file next finds it.
        names_.replace(name(index).hash(), index, behind->second);
        addMember(behind->second);
        hidden_.erase(behind);
    } else {
        names_.erase(name(index).hash(), index);
    }
    std::uint8_t* slot = change(index);
    std::fill_n(slot, kEntrySize, std::uint8_t{0});
    store32(slot + entry::kLeft, kNoEntry);
    store32(slot + entry::kRight, kNoEntry);
    store32(slot + entry::kChild, kNoEntry);
    freeSlots_.push_back(index);
}

void Directory::setContent(std::uint32_t index, std::uint32_t start, std::uint32_t size) {
    if (this->start(index) == start && this->size(index) == size)
        return;
    std::uint8_t* slot = change(index);
    store32(slot + entry::kStart, start);
    store32(slot + entry::kSize, size);
    store32(slot + entry::kSize + 4, 0);
}

void Directory::setLink(std::uint32_t index, std::uint32_t field, std::uint32_t to) {
    if (link(index, field) != to)
        store32(change(index) + field, to);
}

void Directory::setRed(std::uint32_t index, bool red) {
    const auto colour = static_cast<std::uint8_t>(red ? Colour::Red : Colour::Black);
    if (at(index)[entry::kColour] != colour)
        change(index)[entry::kColour] = colour;
}

std::uint32_t Directory::find(EntryName name) const {
    // Objects are mostly asked for in the order in which they were written: then it is the next entry.
    const std::uint32_t next = lastFound_ + 1;
    if (next < count() && isMember(next) && compareNames(this->name(next), name) == 0)
        return lastFound_ = next;
    const std::uint32_t index = find(name, name.hash());
    if (index != kNoEntry)
        lastFound_ = index;
    return index;
}

std::uint32_t Directory::find(EntryName name, std::uint32_t hash) const {
    return names_.find(hash, [&](std::uint32_t index) { return compareNames(this->name(index), name) == 0; });
}

} // namespace quobrix::cfb
