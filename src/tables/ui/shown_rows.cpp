#include "tables/ui/shown_rows.h"

#include "base/ui/qt_text.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace quobrix {
namespace {

constexpr double kBlank = std::numeric_limits<double>::quiet_NaN();

double numberOf(const Value& value) {
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return static_cast<double>(*number);
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? 1 : 0;
    return kBlank;
}

std::vector<double> numberKeys(const Column& column, std::span<const RowIndex> rows) {
    std::vector<double> keys;
    keys.reserve(rows.size());
    for (const RowIndex row : rows)
        keys.push_back(numberOf(column.value(row)));
    return keys;
}

/// The texts as a person's language orders them: which place each of them has.
std::vector<double> ranksOf(const std::vector<const std::string*>& texts) {
    // Without a language, as in English: not by the numbers of the letters.
    QCollator collator(QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::vector<QCollatorSortKey> keys;
    keys.reserve(texts.size());
    for (const std::string* text : texts)
        keys.push_back(collator.sortKey(toQt(*text)));
    std::vector<std::uint32_t> order(texts.size()); // sorted in place of the keys, which are slow to move
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return keys[a].compare(keys[b]) < 0; });

    std::vector<double> ranks(texts.size());
    double rank = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && keys[order[i - 1]].compare(keys[order[i]]) != 0)
            ++rank;
        ranks[order[i]] = texts[order[i]]->empty() ? kBlank : rank;
    }
    return ranks;
}

} // namespace

/// The rank of each row's text among the different texts. Names come again in many rows, so each text is ordered once;
/// and while there is no new one, as when a list is turned upside down, the ranks of the last time hold.
std::vector<double> ShownRows::textKeys(const Column& column, std::span<const RowIndex> rows,
                                        const TextContext& context) {
    std::vector<const double*> rankOfRow;
    rankOfRow.reserve(rows.size());
    for (const RowIndex row : rows) {
        const auto known = ranks_->find(column.text(row, context));
        if (known == ranks_->end())
            break;
        rankOfRow.push_back(&known->second);
    }
    if (rankOfRow.size() < rows.size()) {
        rankOfRow.clear();
        auto fresh = std::make_shared<Ranks>();
        std::vector<const std::string*> texts;
        std::vector<double*> places;
        for (const RowIndex row : rows) {
            const auto [entry, isNew] = fresh->try_emplace(column.text(row, context));
            rankOfRow.push_back(&entry->second);
            if (isNew) {
                texts.push_back(&entry->first);
                places.push_back(&entry->second);
            }
        }
        const std::vector<double> ranks = ranksOf(texts);
        for (std::size_t i = 0; i < ranks.size(); ++i)
            *places[i] = ranks[i];
        ranks_ = std::move(fresh);
    }
    std::vector<double> keys;
    keys.reserve(rows.size());
    for (const double* rank : rankOfRow)
        keys.push_back(*rank);
    return keys;
}

void ShownRows::reset(RowIndex stored, const RowFilter& filter) {
    stored_ = stored;
    sorted_ = false;
    rows_.clear();
    places_.clear();
    rows_.reserve(filter ? 0 : stored);
    for (RowIndex row = 0; row < stored; ++row)
        if (!filter || filter(row))
            rows_.push_back(row);
}

void ShownRows::unsort() {
    if (!sorted_)
        return;
    sorted_ = false;
    places_.clear();
    if (rows_.size() == stored_)
        std::iota(rows_.begin(), rows_.end(), RowIndex{0});
    else
        std::ranges::sort(rows_);
}

void ShownRows::sort(const Column& column, const TextContext& context, bool downward) {
    unsort();
    // A damaged column may have fewer rows.
    const auto filled = static_cast<std::size_t>(std::ranges::lower_bound(rows_, column.rowCount()) - rows_.begin());
    const std::span<const RowIndex> known = std::span(rows_).first(filled);
    const bool asText = column.kind() == ColumnKind::Text || column.kind() == ColumnKind::Selection;
    const std::vector<double> keys = asText ? textKeys(column, known, context) : numberKeys(column, known);

    struct Entry {
        double key;
        RowIndex row;
    };
    std::vector<Entry> entries;
    std::vector<RowIndex> blank;
    entries.reserve(filled);
    for (std::size_t place = 0; place < rows_.size(); ++place) {
        if (place < filled && !std::isnan(keys[place]))
            entries.push_back({downward ? -keys[place] : keys[place], rows_[place]});
        else
            blank.push_back(rows_[place]);
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    std::ranges::transform(entries, rows_.begin(), &Entry::row);
    std::ranges::copy_backward(blank, rows_.end());
    sorted_ = true;
    places_.clear();
}

void ShownRows::rowsInserted(std::span<const RowRun> runs) {
    stored_ += countRows(runs);
    places_.clear();
    const RowShift shift(runs);
    for (RowIndex& row : rows_)
        row = shift.with(row);
}

void ShownRows::show(std::span<const RowRun> runs) {
    places_.clear();
    const auto before = static_cast<std::ptrdiff_t>(rows_.size());
    for (const RowRun& run : runs)
        for (RowIndex row = run.first; row < run.end(); ++row)
            rows_.push_back(row);
    if (!sorted_)
        std::inplace_merge(rows_.begin(), rows_.begin() + before, rows_.end());
}

void ShownRows::rowsRemoved(std::span<const RowRun> runs) {
    stored_ -= countRows(runs);
    places_.clear();
    const RowShift shift(runs);
    for (RowIndex& row : rows_)
        row = shift.goes(row) ? kGone : shift.without(row);
}

void ShownRows::dropGone() {
    std::erase(rows_, kGone);
    places_.clear();
}

void ShownRows::arrange(std::span<const std::size_t> from) {
    std::vector<RowIndex> rows;
    rows.reserve(from.size());
    for (const std::size_t place : from)
        rows.push_back(rows_[place]);
    rows_ = std::move(rows);
    places_.clear();
}

void ShownRows::insertAt(std::size_t place, std::span<const RowIndex> rows) {
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(place), rows.begin(), rows.end());
    places_.clear();
}

void ShownRows::eraseAt(std::size_t place, std::size_t count) {
    const auto first = rows_.begin() + static_cast<std::ptrdiff_t>(place);
    rows_.erase(first, first + static_cast<std::ptrdiff_t>(count));
    places_.clear();
}

std::optional<std::size_t> ShownRows::placeOf(RowIndex row) const {
    if (row >= stored_)
        return {};
    if (row < rows_.size() && rows_[row] == row) // most lists are neither sorted nor filtered
        return row;
    if (places_.empty()) {
        places_.resize(stored_, kNoPlace);
        for (std::size_t place = 0; place < rows_.size(); ++place)
            if (rows_[place] < stored_)
                places_[rows_[place]] = static_cast<std::uint32_t>(place);
    }
    return places_[row] == kNoPlace ? std::nullopt : std::optional<std::size_t>(places_[row]);
}

} // namespace quobrix
