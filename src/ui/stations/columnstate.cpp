#include "ui/stations/columnstate.h"

#include <QStringList>

#include <algorithm>

namespace {

QString joined(const QList<int> &numbers)
{
    QStringList texts;
    for (int number : numbers)
        texts << QString::number(number);
    return texts.join(u' ');
}

// count numbers from low to high, or nothing.
std::optional<QList<int>> numbers(const QString &text, int count, int low, int high)
{
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    if (words.size() != count)
        return std::nullopt;
    QList<int> result;
    for (const QString &word : words) {
        bool ok = false;
        const int value = word.toInt(&ok);
        if (!ok || value < low || value > high)
            return std::nullopt;
        result << value;
    }
    return result;
}

} // namespace

QString ColumnState::toText() const
{
    const QString sort =
        sortIndex < 0 ? QStringLiteral("-1") : QString::number(sortIndex) + (descending ? u" d" : u" a");
    return joined(widths) + u';' + joined(positions) + u';' + sort;
}

std::optional<ColumnState> ColumnState::fromText(const QString &text, int columnCount)
{
    const QStringList parts = text.split(u';');
    if (parts.size() != 3)
        return std::nullopt;
    const auto widths = numbers(parts[0], columnCount, MinimumWidth, MaximumWidth);
    auto positions = numbers(parts[1], columnCount, 0, columnCount - 1);
    if (!widths || !positions)
        return std::nullopt;
    // Every position exactly once.
    QList<int> sorted = *positions;
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
        return std::nullopt;

    ColumnState state{*widths, *positions};
    const QStringList sort = parts[2].split(u' ', Qt::SkipEmptyParts);
    if (sort == QStringList{QStringLiteral("-1")})
        return state;
    bool ok = false;
    state.sortIndex = sort.value(0).toInt(&ok);
    if (sort.size() != 2 || !ok || state.sortIndex < 0 || state.sortIndex >= columnCount ||
        (sort[1] != u"a" && sort[1] != u"d"))
        return std::nullopt;
    state.descending = sort[1] == u"d";
    return state;
}
