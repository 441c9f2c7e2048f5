#include "compound/tree.h"

#include <algorithm>
#include <bit>

namespace quobrix::cfb {

namespace {

constexpr std::uint32_t kRoot = 0; ///< the root entry; the tree hangs on its child link

enum Side : bool { kLeft, kRight };
constexpr Side opposite(Side side) { return side == kLeft ? kRight : kLeft; }

/// The tree's links, and the way from its top to the place in work: entries hold no link to their parent.
class Tree {
public:
    explicit Tree(Directory& directory) : directory_(directory) {}

    void insert(std::uint32_t node) {
        descend(directory_.name(node), kNoEntry);
        setChild(node, kLeft, kNoEntry);
        setChild(node, kRight, kNoEntry);
        directory_.setRed(node, true);
        if (path_.empty())
            directory_.setLink(kRoot, entry::kChild, node);
        else
            setChild(path_.back(), side_, node);
        balanceInserted(node);
    }

    void erase(std::uint32_t node) {
        descend(directory_.name(node), node);
        const std::size_t place = path_.size();
        std::uint32_t heir = child(node, kLeft) == kNoEntry ? child(node, kRight) : child(node, kLeft);
        bool removedRed = isRed(node);
        if (child(node, kLeft) == kNoEntry || child(node, kRight) == kNoEntry) {
            replace(place, node, heir);
        } else {
            // The next in order takes the node's place and colour, and leaves its own to its right child.
            path_.push_back(node);
            std::uint32_t next = child(node, kRight);
            side_ = kRight;
            while (child(next, kLeft) != kNoEntry) {
                path_.push_back(next);
                next = child(next, kLeft);
                side_ = kLeft;
            }
            heir = child(next, kRight);
            removedRed = isRed(next);
            setChild(path_.back(), side_, heir);
            setChild(next, kLeft, child(node, kLeft));
            setChild(next, kRight, child(node, kRight));
            directory_.setRed(next, isRed(node));
            path_[place] = next;
            replace(place, node, next);
        }
        if (!removedRed)
            balanceErased(heir);
    }

private:
    std::uint32_t child(std::uint32_t node, Side side) const {
        return directory_.link(node, side == kLeft ? entry::kLeft : entry::kRight);
    }
    void setChild(std::uint32_t node, Side side, std::uint32_t to) {
        directory_.setLink(node, side == kLeft ? entry::kLeft : entry::kRight, to);
    }
    bool isRed(std::uint32_t node) const { return node != kNoEntry && directory_.red(node); }
    Side sideOf(std::uint32_t parent, std::uint32_t node) const {
        return child(parent, kLeft) == node ? kLeft : kRight;
    }

    /// Fills path_ with the ancestors of the place where NAME belongs, or of the entry UNTIL.
    void descend(EntryName name, std::uint32_t until) {
        path_.clear();
        for (std::uint32_t at = directory_.link(kRoot, entry::kChild); at != until; at = child(at, side_)) {
            path_.push_back(at);
            side_ = compareNames(name, directory_.name(at)) < 0 ? kLeft : kRight;
        }
    }

    /// Replaces NODE, which hangs below the first DEPTH ancestors of the path, by WITH.
    void replace(std::size_t depth, std::uint32_t node, std::uint32_t with) {
        if (depth == 0)
            directory_.setLink(kRoot, entry::kChild, with);
        else
            setChild(path_[depth - 1], sideOf(path_[depth - 1], node), with);
    }

    /// Rotates NODE, below the first DEPTH ancestors, down to SIDE; its child of the other side goes up.
    std::uint32_t rotate(std::size_t depth, std::uint32_t node, Side side) {
        const std::uint32_t up = child(node, opposite(side));
        setChild(node, opposite(side), child(up, side));
        replace(depth, node, up);
        setChild(up, side, node);
        return up;
    }

    void balanceInserted(std::uint32_t node) {
        while (path_.size() >= 2 && isRed(path_.back())) {
            std::uint32_t parent = path_.back();
            const std::size_t grandDepth = path_.size() - 2;
            const std::uint32_t grand = path_[grandDepth];
            const Side side = sideOf(grand, parent);
            const std::uint32_t uncle = child(grand, opposite(side));
            if (isRed(uncle)) {
                directory_.setRed(parent, false);
                directory_.setRed(uncle, false);
                directory_.setRed(grand, true);
                node = grand;
                path_.resize(grandDepth);
                continue;
            }
            if (sideOf(parent, node) != side)
                parent = rotate(grandDepth + 1, parent, side);
            directory_.setRed(parent, false);
            directory_.setRed(grand, true);
            rotate(grandDepth, grand, opposite(side));
            break;
        }
        directory_.setRed(directory_.link(kRoot, entry::kChild), false);
    }

    /// One black entry is missing on the way to NODE, the child on side_ of the path's last.
    void balanceErased(std::uint32_t node) {
        while (!path_.empty() && !isRed(node)) {
            const std::uint32_t parent = path_.back();
            std::size_t depth = path_.size() - 1;
            const Side side = side_;
            std::uint32_t sibling = child(parent, opposite(side));
            if (isRed(sibling)) {
                directory_.setRed(sibling, false);
                directory_.setRed(parent, true);
                rotate(depth, parent, side);
                path_.insert(path_.begin() + static_cast<std::ptrdiff_t>(depth), sibling);
                ++depth;
                sibling = child(parent, opposite(side));
            }
            if (!isRed(child(sibling, kLeft)) && !isRed(child(sibling, kRight))) {
                directory_.setRed(sibling, true);
                node = parent;
                path_.pop_back();
                if (!path_.empty())
                    side_ = sideOf(path_.back(), node);
                continue;
            }
            if (!isRed(child(sibling, opposite(side)))) {
                directory_.setRed(child(sibling, side), false);
                directory_.setRed(sibling, true);
                path_.push_back(sibling); // only for the depth of its parent
                sibling = rotate(depth + 1, sibling, opposite(side));
                path_.pop_back();
            }
            directory_.setRed(sibling, directory_.red(parent));
            directory_.setRed(parent, false);
            directory_.setRed(child(sibling, opposite(side)), false);
            rotate(depth, parent, side);
            return;
        }
        if (node != kNoEntry)
            directory_.setRed(node, false);
    }

    Directory& directory_;
    std::vector<std::uint32_t> path_;
    Side side_ = kLeft; ///< which child of the path's last is meant
};

} // namespace

std::optional<std::vector<std::uint32_t>> treeInOrder(const Directory& directory, std::uint32_t most) {
    struct Step {
        std::uint32_t node;
        std::uint32_t blacks; ///< on the way to it, itself included
    };
    std::vector<std::uint32_t> order;
    order.reserve(most);
    std::vector<Step> above;
    std::optional<std::uint32_t> blacksToEnds;
    const std::size_t deepest = 2 * static_cast<std::size_t>(std::bit_width(most)) + 2;
    Step at{directory.link(kRoot, entry::kChild), 0};
    const auto endsAlike = [&](std::uint32_t blacks) { return blacks == blacksToEnds.value_or(blacks); };
    for (bool parentRed = false;;) {
        if (at.node != kNoEntry) {
            if (!directory.belongsInTree(at.node))
                return {};
            const bool red = directory.red(at.node);
            if (above.size() == deepest || order.size() + above.size() >= most || (red && parentRed))
                return {};
            at.blacks += red ? 0 : 1;
            above.push_back(at);
            parentRed = red;
            at.node = directory.link(at.node, entry::kLeft);
            continue;
        }
        if (!endsAlike(at.blacks))
            return {};
        blacksToEnds = at.blacks;
        if (above.empty())
            return order;
        at = above.back();
        above.pop_back();
        if (!order.empty() && compareNames(directory.name(order.back()), directory.name(at.node)) >= 0)
            return {};
        order.push_back(at.node);
        parentRed = directory.red(at.node);
        at.node = directory.link(at.node, entry::kRight);
    }
}

void rebuildTree(Directory& directory, const std::vector<std::uint32_t>& entries) {
    // The middle entry goes to the top of each part; the levels are then full down to the last, whose entries are red.
    const auto fullLevels = static_cast<std::uint32_t>(std::bit_width(entries.size() + 1) - 1);
    const auto build = [&](const auto& self, std::size_t begin, std::size_t end, std::uint32_t level) -> std::uint32_t {
        if (begin == end)
            return kNoEntry;
        const std::size_t middle = begin + (end - begin) / 2;
        const std::uint32_t node = entries[middle];
        directory.setRed(node, level == fullLevels);
        directory.setLink(node, entry::kLeft, self(self, begin, middle, level + 1));
        directory.setLink(node, entry::kRight, self(self, middle + 1, end, level + 1));
        return node;
    };
    directory.setLink(kRoot, entry::kChild, build(build, 0, entries.size(), 0));
}

void insertIntoTree(Directory& directory, std::uint32_t index) { Tree(directory).insert(index); }

void eraseFromTree(Directory& directory, std::uint32_t index) { Tree(directory).erase(index); }

} // namespace quobrix::cfb
