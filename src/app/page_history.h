#pragma once

#include "views/page.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace quobrix {

/// A page, and what of it is in view.
struct Visit {
    int page = 0;
    PagePlace place;

    bool shows(const Visit& other) const { return page == other.page && place.shows(other.place); }
};

/// What was looked at, and where in it the person is: the newest kMost visits.
class PageHistory {
public:
    static constexpr std::size_t kMost = 200;

    /// NOW is in view. What could be gone forward to is forgotten, unless it is what was in view before.
    void visit(Visit now);
    /// The place of the next visit backward (STEP -1) or forward (1) that is THERE and would show anything else than
    /// what is in view; nothing if there is none. What is not there may come back.
    std::optional<std::size_t> next(int step, const std::function<bool(const Visit&)>& there) const;
    /// What next() has given the place of is in view.
    const Visit& moveTo(std::size_t place);
    void clear() { visits_.clear(); }

private:
    std::vector<Visit> visits_;
    std::size_t now_ = 0; ///< place of what is in view, if there is any
};

} // namespace quobrix
