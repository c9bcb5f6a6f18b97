#pragma once

#include <QByteArrayView>
#include <QString>

class QFileDevice;

// Writing to files so that a failure is said in words.
namespace DiskWrite {

// Writes all of data, trying again after a short write: a disk that fills up
// part-way through a write reports why only on the next try. Returns the
// bytes written; fewer than data holds means the file failed (see why).
qint64 writeAll(QFileDevice &file, QByteArrayView data);

// Why the last operation on the file failed, in words: "The disk is full"
// for a full disk or a used-up quota, "The disk is read-only" for a file
// system mounted read-only, the system's own text otherwise.
QString why(const QFileDevice &file);

} // namespace DiskWrite
