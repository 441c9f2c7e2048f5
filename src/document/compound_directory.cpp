#include "document/compound_directory.h"

#include "document/compound_tree.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::uint32_t kErasedSlot = 0xFFFFFFFE;

/// Simple upper-casing of the scripts whose letters foreign files are likely to be named in.
char16_t upper(char16_t unit) {
    if (unit < 0x80)
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    const auto within = [unit](char16_t first, char16_t last) { return unit >= first && unit <= last; };
    if ((within(0xE0, 0xFE) && unit != 0xF7) || (within(0x3B1, 0x3CB) && unit != 0x3C2) || within(0x430, 0x44F))
        return static_cast<char16_t>(unit - 32);
    if (within(0x450, 0x45F))
        return static_cast<char16_t>(unit - 80);
    if (unit == 0xFF)
        return 0x178;
    // Latin Extended-A and Cyrillic beyond the basic alphabet go in pairs, upper before lower.
    const bool oddIsLower = (within(0x100, 0x137) && unit != 0x131) || within(0x14A, 0x177) || within(0x460, 0x481);
    const bool evenIsLower = within(0x139, 0x148) || within(0x179, 0x17E);
    if ((oddIsLower && unit % 2 == 1) || (evenIsLower && unit % 2 == 0))
        return static_cast<char16_t>(unit - 1);
    return unit;
}

/// UNIT(i) is the name's i-th UTF-16 unit.
template <class Unit>
std::uint32_t hashName(std::uint32_t length, Unit unit) {
    std::uint32_t hash = length;
    for (std::uint32_t i = 0; i < length; ++i)
        hash = (hash ^ upper(unit(i))) * 0x9E3779B1u;
    return hash ^ hash >> 15;
}

template <class UnitA, class UnitB>
int compareUnits(std::uint32_t lengthA, UnitA a, std::uint32_t lengthB, UnitB b) {
    if (lengthA != lengthB)
        return lengthA < lengthB ? -1 : 1;
    for (std::uint32_t i = 0; i < lengthA; ++i)
        if (const int difference = upper(a(i)) - upper(b(i)); difference != 0)
            return difference;
    return 0;
}

/// The units of an entry's name, where it lies in its page.
auto unitsAt(const std::uint8_t* entry) {
    return [entry](std::uint32_t i) { return static_cast<char16_t>(load16(entry + entry::kName + 2 * i)); };
}
auto nameUnits(const EntryName& name) {
    return [&name](std::uint32_t i) { return name.units[i]; };
}
/// In UTF-16 units, without the terminator.
std::uint32_t lengthAt(const std::uint8_t* entry) { return load16(entry + entry::kNameBytes) / 2u - 1; }

} // namespace

std::optional<EntryName> EntryName::fromText(std::string_view text) {
    EntryName name;
    const auto append = [&name](char32_t unit) {
        if (name.length + 1 < name.units.size()) // the last one is the terminator's
            name.units[name.length++] = static_cast<char16_t>(unit);
        else
            name.length = static_cast<std::uint32_t>(name.units.size());
    };
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t width = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (width == 0 || width > text.size() - i)
            return {};
        char32_t c = width == 1 ? lead : lead & (0x7Fu >> width);
        for (std::size_t k = 1; k < width; ++k)
            c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
        if (c >= 0x10000) {
            append(0xD800 + ((c - 0x10000) >> 10 & 0x3FF));
            append(0xDC00 + (c & 0x3FF));
        } else {
            append(c);
        }
        i += width;
    }
    if (name.length == 0 || name.length >= name.units.size())
        return {};
    return name;
}

std::string EntryName::text() const {
    std::string text;
    for (std::uint32_t i = 0; i < length; ++i) {
        char32_t c = units[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < length && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000)
            c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00u);
        const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
        if (c < 0x80) {
            text += static_cast<char>(c);
        } else if (c < 0x800) {
            text += static_cast<char>(0xC0 | c >> 6);
            tail(0);
        } else if (c < 0x10000) {
            text += static_cast<char>(0xE0 | c >> 12);
            tail(6);
            tail(0);
        } else {
            text += static_cast<char>(0xF0 | c >> 18);
            tail(12);
            tail(6);
            tail(0);
        }
    }
    return text;
}

std::uint32_t EntryName::hash() const { return hashName(length, nameUnits(*this)); }

int compareNames(const EntryName& a, const EntryName& b) {
    return compareUnits(a.length, nameUnits(a), b.length, nameUnits(b));
}

Directory::Directory() : treeChecked_(true) {
    appendPage();
    freeSlots_.pop_back();
    std::uint8_t* root = change(0);
    constexpr std::u16string_view kRootName = u"Root Entry"; // MS-CFB 2.6.2 wants it so
    for (std::uint32_t i = 0; i < kRootName.size(); ++i)
        store16(root + entry::kName + 2 * i, kRootName[i]);
    store16(root + entry::kNameBytes, static_cast<std::uint16_t>(2 * kRootName.size() + 2));
    root[entry::kType] = static_cast<std::uint8_t>(EntryType::Root);
    setRed(0, false);
    store32(root + entry::kStart, kEndOfChain);
    rehash();
}

Directory::Directory(Bytes entries) : pages_(std::move(entries)) { load(); }

void Directory::load() {
    treeChecked_ = false;
    members_.clear();
    freeSlots_.clear();
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
    rehash();
    const std::size_t mask = slots_.size() - 1;
    for (const std::uint32_t index : found) {
        const std::uint32_t hash = hashOf(index);
        const auto sameName = [&](const Slot& slot) {
            return slot.hash == hash && compareUnits(lengthAt(at(index)), unitsAt(at(index)), lengthAt(at(slot.index)),
                                                     unitsAt(at(slot.index))) == 0;
        };
        // Of two entries of one name only the first can be meant.
        std::size_t place = hash & mask;
        while (slots_[place].index != kNoEntry && !sameName(slots_[place]))
            place = (place + 1) & mask;
        if (slots_[place].index != kNoEntry) {
            --memberCount_;
            continue;
        }
        members_.insert(index);
        slots_[place] = {index, hash};
        ++slotsUsed_;
    }
}

EntryName Directory::name(std::uint32_t index) const {
    EntryName name;
    name.length = lengthAt(at(index));
    std::generate_n(name.units.begin(), name.length,
                    [unit = unitsAt(at(index)), i = 0u]() mutable { return unit(i++); });
    return name;
}

int Directory::compare(const EntryName& name, std::uint32_t index) const {
    return compareUnits(name.length, nameUnits(name), lengthAt(at(index)), unitsAt(at(index)));
}

std::vector<std::uint32_t> Directory::members() const {
    if (auto order = treeInOrder(*this, memberCount_); order && order->size() == memberCount_)
        return *std::move(order);
    std::vector<std::pair<EntryName, std::uint32_t>> named;
    for (const std::uint32_t index : members_.members())
        named.emplace_back(name(index), index);
    std::sort(named.begin(), named.end(),
              [](const auto& a, const auto& b) { return compareNames(a.first, b.first) < 0; });
    std::vector<std::uint32_t> order;
    for (const auto& [unused, index] : named)
        order.push_back(index);
    return order;
}

Result<void> Directory::onlyStreams() const {
    for (std::uint32_t index = 1; index < count(); ++index)
        if (type(index) == EntryType::Storage)
            return Error{ErrorKind::Unsupported, "the file holds inner storages"};
    for (std::uint32_t index = 1; index < count(); ++index)
        if (type(index) != EntryType::Unused && !isMember(index))
            return Error{ErrorKind::Corrupt, "directory entry " + std::to_string(index) + " makes no sense"};
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
    const auto order = treeInOrder(*this, memberCount_);
    if (!order || order->size() != memberCount_)
        rebuildTree(*this, members());
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

std::uint32_t Directory::insert(const EntryName& name) {
    prepareTree();
    if (freeSlots_.empty())
        appendPage();
    const std::uint32_t index = freeSlots_.back();
    freeSlots_.pop_back();
    std::uint8_t* slot = change(index);
    std::fill_n(slot, kEntrySize, std::uint8_t{0});
    for (std::uint32_t i = 0; i < name.length; ++i)
        store16(slot + entry::kName + 2 * i, name.units[i]);
    store16(slot + entry::kNameBytes, static_cast<std::uint16_t>(2 * name.length + 2));
    slot[entry::kType] = static_cast<std::uint8_t>(EntryType::Stream);
    store32(slot + entry::kChild, kNoEntry);
    store32(slot + entry::kStart, kEndOfChain);
    insertIntoTree(*this, index);
    members_.insert(index);
    ++memberCount_;
    if (2 * (slotsUsed_ + 1) > slots_.size())
        rehash(); // takes the new member in
    else
        hashInsert(index, name.hash());
    return index;
}

void Directory::erase(std::uint32_t index) {
    prepareTree();
    eraseFromTree(*this, index);
    hashErase(index);
    members_.erase(index);
    --memberCount_;
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

std::uint32_t Directory::find(const EntryName& name) const {
    const std::size_t mask = slots_.size() - 1;
    const std::uint32_t hash = name.hash();
    for (std::size_t at = hash & mask; slots_[at].index != kNoEntry; at = (at + 1) & mask)
        if (slots_[at].index != kErasedSlot && slots_[at].hash == hash && compare(name, slots_[at].index) == 0)
            return slots_[at].index;
    return kNoEntry;
}

std::uint32_t Directory::hashOf(std::uint32_t index) const { return hashName(lengthAt(at(index)), unitsAt(at(index))); }

void Directory::hashInsert(std::uint32_t index, std::uint32_t hash) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].index != kNoEntry)
        at = (at + 1) & mask;
    slots_[at] = {index, hash};
    ++slotsUsed_;
}

void Directory::hashErase(std::uint32_t index) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hashOf(index) & mask;
    while (slots_[at].index != index)
        at = (at + 1) & mask;
    slots_[at].index = kErasedSlot;
}

void Directory::rehash() {
    std::size_t size = 64;
    while (size < 3 * std::size_t{memberCount_})
        size *= 2;
    slots_.assign(size, Slot{});
    slotsUsed_ = 0;
    for (const std::uint32_t index : members_.members())
        hashInsert(index, hashOf(index));
}

} // namespace quobrix::cfb
