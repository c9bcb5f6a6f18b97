#include "recorder/recordingsummary.h"

#include <QFileInfo>
#include <QHash>
#include <QLocale>

RecordingSummary RecordingSummary::of(const QStringList &files, qint64 seconds)
{
    RecordingSummary summary;
    summary.seconds = qMax<qint64>(0, seconds);
    // Partial songs may have moved into a folder of their own: the folder
    // named is the one holding most of the files, the later one on a tie.
    QHash<QString, int> perFolder;
    for (const QString &file : files) {
        const QFileInfo info(file);
        if (!info.isFile())
            continue;
        ++summary.files;
        summary.bytes += info.size();
        const int count = ++perFolder[info.absolutePath()];
        if (count >= perFolder.value(summary.folder))
            summary.folder = info.absolutePath();
    }
    return summary;
}

QString RecordingSummary::text() const
{
    if (files == 0)
        return tr("No file was written.");
    const QString duration = QStringLiteral("%1:%2:%3")
                                 .arg(seconds / 3600)
                                 .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
                                 .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    const QString size = QLocale::system().formattedDataSize(bytes, 1);
    if (files == 1)
        return tr("Wrote 1 file (%1, %2) to %3").arg(size, duration, folder);
    return tr("Wrote %1 files (%2, %3) to %4").arg(files).arg(size, duration, folder);
}
