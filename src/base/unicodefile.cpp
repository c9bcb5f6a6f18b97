#include "base/unicodefile.h"

#include "base/apperror.h"
#include "base/diskwrite.h"

#include <QFile>
#include <QFileInfo>

namespace ModUnicodeFile {

bool readBytes(const QString &path, QByteArray &buffer, bool detectBom)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const qint64 length = file.size();
    if (detectBom) {
        const QByteArray mark = file.read(2);
        if (mark.size() == 2 && static_cast<unsigned char>(mark[0]) == 0xFF &&
            static_cast<unsigned char>(mark[1]) == 0xFE) {
            // One byte fewer than the file holds after the mark; a two-byte file
            // would need a buffer of -1 bytes, which is refused and ignored.
            const qint64 wanted = length - 3;
            if (wanted >= 0) {
                QByteArray data = file.read(wanted);
                if (data.size() == wanted)
                    buffer = std::move(data);
            }
            return true;
        }
        file.seek(0);
    }
    QByteArray data = file.readAll();
    if (data.size() == length)
        buffer = std::move(data);
    return false;
}

void writeBytes(const QString &path, const QByteArray &buffer, bool writeBom)
{
    const bool readOnly = isReadOnly(path);
    if (!readOnly)
        QFile::remove(path);

    QFile file(path);
    // Unbuffered: the failing write itself says why, not a flush that forgets it.
    if (readOnly || !file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        throw AppError::pathFileAccess(path);
    const QByteArrayView bom = writeBom ? QByteArrayView("\xFF\xFE") : QByteArrayView();
    const bool written =
        DiskWrite::writeAll(file, bom) == bom.size() && DiskWrite::writeAll(file, buffer) == buffer.size();
    QString why = written ? QString() : DiskWrite::why(file);
    file.close();
    if (written && file.error() != QFileDevice::NoError)
        why = DiskWrite::why(file);
    if (!written || file.error() != QFileDevice::NoError)
        throw AppError(AppError::PathFileAccess, AppError::tr("Could not write %1: %2").arg(path, why));
}

bool readText(const QString &path, QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return false;
    text = QString::fromLocal8Bit(bytes);
    return true;
}

bool isReadOnly(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir() && !(info.permissions() & QFileDevice::WriteOwner);
}

} // namespace ModUnicodeFile
