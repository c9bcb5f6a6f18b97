#include "history/historycsv.h"

#include "history/historymodel.h"

#include <QDateTime>
#include <QIODevice>

namespace {

constexpr qsizetype ChunkBytes = 1 << 16;

QByteArray field(const QString &text)
{
    QByteArray bytes = text.toUtf8();
    if (!bytes.contains(',') && !bytes.contains('"') && !bytes.contains('\n') && !bytes.contains('\r'))
        return bytes;
    return '"' + bytes.replace('"', "\"\"") + '"';
}

QString isoTime(qint64 msecs)
{
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(msecs);
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate);
}

} // namespace

QString writeHistoryCsv(const QAbstractItemModel &rows, QIODevice &out)
{
    QByteArray buffer;
    const auto flush = [&] {
        const bool written = out.write(buffer) == buffer.size();
        buffer.clear();
        return written;
    };
    const auto addLine = [&](const auto &column) {
        buffer += field(column(HistoryModel::TimeColumn)) + ',' + field(column(HistoryModel::StationColumn)) +
                  ',' + field(column(HistoryModel::TitleColumn)) + "\r\n";
    };
    addLine([&](int column) { return rows.headerData(column, Qt::Horizontal).toString(); });
    for (int row = 0; row < rows.rowCount(); ++row) {
        addLine([&](int column) {
            const QModelIndex index = rows.index(row, column);
            return column == HistoryModel::TimeColumn
                       ? isoTime(index.data(HistoryModel::SortRole).toLongLong())
                       : index.data().toString();
        });
        if (buffer.size() >= ChunkBytes && !flush())
            return out.errorString();
    }
    if (!flush())
        return out.errorString();
    return {};
}
