#include "controls/gridsorter.h"

#include "base/conversions.h"
#include "controls/griddata.h"

#include <QDateTime>

#include <algorithm>
#include <numeric>

namespace {

// Orders rows by keys worked out once per row, not once per comparison;
// equal keys keep their order either way.
template <typename Key>
void orderByKeys(std::vector<int> &rows, const std::vector<Key> &keys, bool descending)
{
    const auto key = [&keys](int row) -> const Key & { return keys[static_cast<std::size_t>(row)]; };
    if (descending)
        std::stable_sort(rows.begin(), rows.end(), [&key](int a, int b) { return key(b) < key(a); });
    else
        std::stable_sort(rows.begin(), rows.end(), [&key](int a, int b) { return key(a) < key(b); });
}

} // namespace

std::vector<int> GridSorter::order(const GridData &data, int col, bool descending,
                                   const CustomCompare &custom)
{
    const int index = data.indexAt(col);
    const int count = data.itemCount();
    const auto cell = [&data, index](int row) -> const GridCell & {
        return data.item(row).cells[static_cast<std::size_t>(index)];
    };
    const auto keysOf = [count](auto &&keyOf) {
        std::vector<std::decay_t<decltype(keyOf(0))>> keys;
        keys.reserve(static_cast<std::size_t>(count));
        for (int row = 0; row < count; ++row)
            keys.push_back(keyOf(row));
        return keys;
    };
    std::vector<int> rows(static_cast<std::size_t>(count));
    std::iota(rows.begin(), rows.end(), 0);

    switch (data.column(col).type) {
    case GridColumnType::Number:
        orderByKeys(rows, keysOf([&](int row) { return Convert::leadingNumber(cell(row).text); }),
                    descending);
        break;
    case GridColumnType::Date:
        orderByKeys(rows, keysOf([&](int row) {
                        const QDateTime when = GridData::cellDate(cell(row).text);
                        return when.isValid() ? double(when.toMSecsSinceEpoch()) : -1e300;
                    }),
                    descending);
        break;
    case GridColumnType::CheckBox:
        orderByKeys(rows, keysOf([&](int row) { return (cell(row).flags & GridCell::Checked) ? 1 : 0; }),
                    descending);
        break;
    case GridColumnType::Text:
        // Folded once, compared as they stand: the order of a comparison
        // without regard to case, at the cost of a plain one.
        orderByKeys(rows, keysOf([&](int row) { return cell(row).text.toCaseFolded(); }), descending);
        break;
    case GridColumnType::Custom:
        std::stable_sort(rows.begin(), rows.end(), [&](int a, int b) {
            if (descending)
                std::swap(a, b);
            return custom(cell(a).text, cell(b).text) < 0;
        });
        break;
    }
    return rows;
}
