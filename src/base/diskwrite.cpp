#include "base/diskwrite.h"

#include <QCoreApplication>
#include <QFileDevice>

#include <cerrno>
#include <cstring>

namespace DiskWrite {

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("DiskWrite", text);
}

// The system's text for an error number, as the file device words it.
QString systemText(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

} // namespace

qint64 writeAll(QFileDevice &file, QByteArrayView data)
{
    qint64 done = 0;
    while (done < data.size()) {
        const qint64 n = file.write(data.data() + done, data.size() - done);
        if (n <= 0)
            break;
        done += n;
    }
    return done;
}

QString why(const QFileDevice &file)
{
    const QString text = file.errorString();
    if (file.error() == QFileDevice::ResourceError || text == systemText(ENOSPC) ||
        text == systemText(EDQUOT))
        return translated("The disk is full");
    if (text == systemText(EROFS))
        return translated("The disk is read-only");
    return text;
}

} // namespace DiskWrite
