#pragma once

#include <QString>

#include <functional>
#include <vector>

class GridData;

// Works out the order of a grid's rows by one column's cells.
class GridSorter
{
public:
    // Compares two cell texts of a Custom column: below 0, 0 or above 0.
    using CustomCompare = std::function<int(const QString &, const QString &)>;

    // The rows in their new order (new row -> old row); equal cells keep their order.
    static std::vector<int> order(const GridData &data, int col, bool descending,
                                  const CustomCompare &custom);
};
