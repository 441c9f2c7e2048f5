#include "app/page_history.h"

#include <utility>

namespace quobrix {

void PageHistory::visit(Visit now) {
    if (!visits_.empty() && visits_[now_].shows(now)) {
        visits_[now_] = std::move(now);
        return;
    }
    if (!visits_.empty())
        visits_.erase(visits_.begin() + static_cast<std::ptrdiff_t>(now_) + 1, visits_.end());
    if (visits_.size() == kMost)
        visits_.erase(visits_.begin());
    visits_.push_back(std::move(now));
    now_ = visits_.size() - 1;
}

std::optional<std::size_t> PageHistory::next(int step, const std::function<bool(const Visit&)>& there) const {
    for (auto place = static_cast<std::ptrdiff_t>(now_) + step; place >= 0 && place < std::ssize(visits_);
         place += step)
        if (const Visit& visit = visits_[static_cast<std::size_t>(place)]; !visits_[now_].shows(visit) && there(visit))
            return static_cast<std::size_t>(place);
    return std::nullopt;
}

const Visit& PageHistory::moveTo(std::size_t place) {
    now_ = place;
    return visits_[place];
}

} // namespace quobrix
