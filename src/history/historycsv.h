#pragma once

#include <QString>

class QAbstractItemModel;
class QIODevice;

// Writes the rows of a history table (a HistoryModel, or what a filter over
// it shows, in its order) as comma-separated values: a header line, then
// time (ISO 8601 with the offset from UTC), station and title; UTF-8, lines
// ended by CR LF, a field quoted when it holds a comma, a quote or a line
// break, and its quotes doubled. Empty on success, else why it failed (a
// QSaveFile tells at its commit what the disk refused).
QString writeHistoryCsv(const QAbstractItemModel &rows, QIODevice &out);
