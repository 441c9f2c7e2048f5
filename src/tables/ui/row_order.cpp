#include "tables/ui/row_order.h"

#include "base/ui/qt_text.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <unordered_map>

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

std::vector<double> numberKeys(const Column& column, RowIndex rows) {
    std::vector<double> keys(rows);
    for (RowIndex row = 0; row < rows; ++row)
        keys[row] = numberOf(column.value(row));
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
std::vector<double> RowOrder::textKeys(const Column& column, RowIndex rows, const TextContext& context) {
    std::vector<const double*> rankOfRow;
    rankOfRow.reserve(rows);
    for (RowIndex row = 0; row < rows; ++row) {
        const auto known = ranks_->find(column.text(row, context));
        if (known == ranks_->end())
            break;
        rankOfRow.push_back(&known->second);
    }
    if (rankOfRow.size() < rows) {
        rankOfRow.clear();
        auto fresh = std::make_shared<Ranks>();
        std::vector<const std::string*> texts;
        std::vector<double*> places;
        for (RowIndex row = 0; row < rows; ++row) {
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
    std::vector<double> keys(rows);
    for (RowIndex row = 0; row < rows; ++row)
        keys[row] = *rankOfRow[row];
    return keys;
}

void RowOrder::reset(RowIndex rows) {
    size_ = rows;
    rows_.clear();
    places_.clear();
}

void RowOrder::sort(const Column& column, RowIndex rows, const TextContext& context, bool downward) {
    const RowIndex filled = std::min(rows, column.rowCount());
    const bool asText = column.kind() == ColumnKind::Text || column.kind() == ColumnKind::Selection;
    const std::vector<double> keys = asText ? textKeys(column, filled, context) : numberKeys(column, filled);

    struct Entry {
        double key;
        RowIndex row;
    };
    std::vector<Entry> entries;
    std::vector<RowIndex> blank;
    entries.reserve(filled);
    for (RowIndex row = 0; row < rows; ++row) {
        if (row < filled && !std::isnan(keys[row]))
            entries.push_back({downward ? -keys[row] : keys[row], row});
        else
            blank.push_back(row);
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });

    reset(rows);
    rows_.reserve(rows);
    for (const Entry& entry : entries)
        rows_.push_back(entry.row);
    rows_.insert(rows_.end(), blank.begin(), blank.end());
}

void RowOrder::insert(std::span<const RowRun> runs) {
    size_ += countRows(runs);
    if (rows_.empty())
        return;
    const RowShift shift(runs);
    for (RowIndex& row : rows_)
        row = shift.with(row);
    for (const RowRun& run : runs)
        for (RowIndex row = run.first; row < run.end(); ++row)
            rows_.push_back(row);
    places_.clear();
}

void RowOrder::remove(std::span<const RowRun> runs) {
    size_ -= countRows(runs);
    places_.clear();
    const RowShift shift(runs);
    std::erase_if(rows_, [&](RowIndex row) { return shift.goes(row); });
    for (RowIndex& row : rows_)
        row = shift.without(row);
}

RowOrder RowOrder::without(std::size_t place, std::size_t count) const {
    RowOrder rest;
    rest.size_ = size_ - count;
    rest.rows_.reserve(rest.size_);
    for (std::size_t i = 0; i < size_; ++i)
        if (i < place || i >= place + count)
            rest.rows_.push_back(rowAt(i));
    return rest;
}

std::size_t RowOrder::placeOf(RowIndex row) const {
    if (rows_.empty())
        return row;
    if (places_.empty()) {
        places_.resize(*std::ranges::max_element(rows_) + 1);
        for (std::size_t place = 0; place < rows_.size(); ++place)
            places_[rows_[place]] = place;
    }
    return row < places_.size() ? places_[row] : 0;
}

} // namespace quobrix
