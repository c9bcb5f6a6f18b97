#pragma once

#include <QList>
#include <QString>

#include <optional>

// How the user left the station grid's columns: each column's width and
// position (by the column's index) and the column the rows were sorted by.
// Kept in the settings as one line of text; a line that does not describe
// exactly the grid's columns is not taken at all.
struct ColumnState
{
    QList<int> widths;
    QList<int> positions;
    int sortIndex = -1; // the sorted column's index; -1 for none
    bool descending = false;

    static constexpr int MinimumWidth = 4;
    static constexpr int MaximumWidth = 4000;

    QString toText() const;
    static std::optional<ColumnState> fromText(const QString &text, int columnCount);
};
