#pragma once

#include "recorder/songtags.h"
#include "recorder/streamformat.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QCoreApplication>
#include <QString>

// Tags one song file with TagLib: MP3 and AAC (ADTS) files begin with an
// ID3v2.4 tag, Ogg files carry the tags as the comments of their header pages.
// The tags are written when the file begins, so that it is tagged even if the
// program ends before the song does, and completed with the final RECORDING
// value when it is closed. A tag that cannot be written never costs audio:
// the bytes pass untagged and error() says why.
class SongTagger
{
    Q_DECLARE_TR_FUNCTIONS(SongTagger)

public:
    // Room left in the first tag for what the close adds, so that the close
    // rewrites the tag in place instead of moving the audio behind it.
    static constexpr int Room = 512;

    SongTagger(StreamFormat format, const SongTags &tags);

    // The bytes the file begins with. MP3 and ADTS: the tag, then firstBytes;
    // call it as the file opens, with no bytes. Ogg: firstBytes, which must
    // reach past the header pages into the audio (as a file's first bytes from
    // SongFrames do), with the comment packet made of the tags; while no bytes
    // have come it waits and returns nothing.
    QByteArray start(QByteArrayView firstBytes);
    bool hasStarted() const { return m_started; }

    // Completes the tags of the closed file at path with the RECORDING value.
    // The tag is rewritten in place when it fits the room of the one there;
    // otherwise the file is written anew beside itself and replaces the old one
    // only when whole. Returns false, with error() saying why, when the tags
    // could not be written; the file keeps its audio either way.
    bool finish(const QString &path, const QString &recording);

    // Why the last start or finish could not tag; empty when it could.
    const QString &error() const { return m_error; }

private:
    bool replaceHead(const QString &path, const QByteArray &head, qint64 oldHeadSize);

    StreamFormat m_format;
    SongTags m_tags;
    bool m_started = false;
    QString m_error;
};
