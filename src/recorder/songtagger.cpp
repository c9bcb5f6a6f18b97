#include "recorder/songtagger.h"

#include "recorder/oggpagescanner.h"

#include <QFile>
#include <QSaveFile>

#include <commentsframe.h>
#include <id3v2header.h>
#include <id3v2tag.h>
#include <opusfile.h>
#include <tbytevectorstream.h>
#include <textidentificationframe.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

namespace {

// An ID3v2 header: "ID3", version, flags and a four-byte size.
constexpr qsizetype Id3HeaderSize = 10;
// How much of a file is read to find its Ogg header pages.
constexpr qsizetype OggHeadRead = OggPageScanner::HeaderLimit + 2 * 65536;
constexpr qint64 CopyChunk = 1 << 20;

TagLib::String taglibText(const QString &text)
{
    return TagLib::String(text.toStdString(), TagLib::String::UTF8);
}

TagLib::ByteVector byteVector(QByteArrayView bytes)
{
    return TagLib::ByteVector(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

QByteArray byteArray(const TagLib::ByteVector &bytes)
{
    return QByteArray(bytes.data(), bytes.size());
}

TagLib::PropertyMap properties(const SongTags &tags)
{
    TagLib::PropertyMap map;
    const auto set = [&map](const char *key, const QString &value) {
        if (!value.isEmpty())
            map.replace(key, TagLib::StringList(taglibText(value)));
    };
    set("ARTIST", tags.artist);
    set("TITLE", tags.title);
    set("ALBUM", tags.album);
    set("DATE", tags.date.isValid() ? tags.date.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) : QString());
    set("COMMENT", tags.comment);
    set("ENCODEDBY", QStringLiteral("Tunecatch"));
    set("RECORDING", tags.recording);
    return map;
}

// An ID3v2.4 tag, its text in UTF-8. With size, its padding is chosen so that
// the whole tag has that size where it can; otherwise the padding is Room.
QByteArray id3Tag(const SongTags &tags, qsizetype size)
{
    TagLib::ID3v2::Tag tag;
    tag.setProperties(properties(tags));
    qsizetype frames = 0;
    for (TagLib::ID3v2::Frame *frame : tag.frameList()) {
        if (auto *text = dynamic_cast<TagLib::ID3v2::TextIdentificationFrame *>(frame))
            text->setTextEncoding(TagLib::String::UTF8);
        else if (auto *comment = dynamic_cast<TagLib::ID3v2::CommentsFrame *>(frame))
            comment->setTextEncoding(TagLib::String::UTF8);
        frames += frame->render().size();
    }
    qsizetype padding = size - Id3HeaderSize - frames;
    if (padding < 0 || size == 0)
        padding = SongTagger::Room;
    // TagLib pads a tag to the size its header gives when that is not too much.
    tag.header()->setTagSize(static_cast<unsigned int>(frames + padding));
    return byteArray(tag.render(TagLib::ID3v2::v4));
}

// The size of the ID3v2 tag a file begins with, 0 when it begins without one.
qsizetype id3TagSize(QByteArrayView head, qint64 fileSize)
{
    if (head.size() < Id3HeaderSize || !head.startsWith("ID3"))
        return 0;
    const TagLib::ID3v2::Header header(byteVector(head.first(Id3HeaderSize)));
    const qint64 size = header.completeTagSize();
    return size > Id3HeaderSize && size <= fileSize ? qsizetype(size) : 0;
}

// Where the header pages at the start of Ogg bytes end; -1 when they do not
// begin with a header page. What follows them (audio, or a page a splice cut
// into) is left as it is.
qsizetype oggHeaderEnd(QByteArrayView bytes)
{
    OggPageScanner scanner;
    QList<StreamPiece> pieces = scanner.push(bytes);
    pieces += scanner.finish();
    qsizetype end = -1;
    for (const StreamPiece &piece : pieces) {
        if (piece.kind != StreamPiece::Kind::Header)
            break;
        end = piece.end();
    }
    return end;
}

template <typename OggFile>
bool retag(TagLib::ByteVectorStream &stream, const SongTags &tags, const char *packetId, bool framingBit,
           bool keepSize, QByteArray &result)
{
    OggFile file(&stream, false);
    if (!file.isValid() || !file.tag())
        return false;
    TagLib::Ogg::XiphComment *comment = file.tag();
    comment->removeAllFields();
    comment->removeAllPictures();
    comment->setProperties(properties(tags));
    TagLib::ByteVector packet(packetId);
    packet.append(comment->render(framingBit));
    // Zeros after the comments are padding for Vorbis and Opus decoders alike.
    const qsizetype oldSize = file.packet(1).size();
    const qsizetype size =
        keepSize ? std::max<qsizetype>(oldSize, packet.size()) : packet.size() + SongTagger::Room;
    packet.resize(static_cast<unsigned int>(size), '\0');
    file.setPacket(1, packet);
    // The packet is set by hand: the codec's own save would render it again unpadded.
    if (!file.TagLib::Ogg::File::save())
        return false;
    result = byteArray(*stream.data());
    return true;
}

// The header pages with their comment packet made of the tags. keepSize keeps
// the packet the size it was where the tags fit; otherwise Room is added.
bool retagOggHeaders(QByteArrayView headers, const SongTags &tags, bool keepSize, QByteArray &result)
{
    {
        TagLib::ByteVectorStream stream(byteVector(headers));
        if (retag<TagLib::Ogg::Vorbis::File>(stream, tags, "\x03vorbis", true, keepSize, result))
            return true;
    }
    TagLib::ByteVectorStream stream(byteVector(headers));
    return retag<TagLib::Ogg::Opus::File>(stream, tags, "OpusTags", false, keepSize, result);
}

} // namespace

SongTagger::SongTagger(StreamFormat format, const SongTags &tags) : m_format(format), m_tags(tags) {}

QByteArray SongTagger::start(QByteArrayView firstBytes)
{
    m_error.clear();
    if (m_format != StreamFormat::Ogg) {
        m_started = true;
        return id3Tag(m_tags, 0) + firstBytes.toByteArray();
    }
    if (firstBytes.isEmpty())
        return {};
    m_started = true;
    const qsizetype headerEnd = oggHeaderEnd(firstBytes);
    QByteArray headers;
    if (headerEnd < 0 || !retagOggHeaders(firstBytes.first(headerEnd), m_tags, false, headers)) {
        m_error = tr("The song file does not begin with Ogg Vorbis or Opus headers; it is written untagged.");
        return firstBytes.toByteArray();
    }
    return headers + firstBytes.sliced(headerEnd).toByteArray();
}

bool SongTagger::finish(const QString &path, const QString &recording)
{
    m_error.clear();
    m_tags.recording = recording;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = tr("Could not read %1 to complete its tags: %2").arg(path, file.errorString());
        return false;
    }
    const qint64 fileSize = file.size();
    if (m_format != StreamFormat::Ogg) {
        const qsizetype oldSize = id3TagSize(file.read(Id3HeaderSize), fileSize);
        file.close();
        return replaceHead(path, id3Tag(m_tags, oldSize), oldSize);
    }
    const QByteArray head = file.read(OggHeadRead);
    file.close();
    const qsizetype headerEnd = oggHeaderEnd(head);
    QByteArray headers;
    if (headerEnd < 0 || !retagOggHeaders(QByteArrayView(head).first(headerEnd), m_tags, true, headers)) {
        m_error = tr("%1 does not begin with Ogg Vorbis or Opus headers; its tags were left as they are.")
                      .arg(path);
        return false;
    }
    return replaceHead(path, headers, headerEnd);
}

// Puts head where the first oldHeadSize bytes of the file are: in place when
// the sizes match, otherwise through a whole new copy that replaces the file
// only once it is complete.
bool SongTagger::replaceHead(const QString &path, const QByteArray &head, qint64 oldHeadSize)
{
    if (head.size() == oldHeadSize) {
        QFile file(path);
        if (file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) && file.write(head) == head.size())
            return true;
        m_error = tr("Could not complete the tags of %1: %2").arg(path, file.errorString());
        return false;
    }
    QFile old(path);
    QSaveFile copy(path);
    // Unbuffered, so that a write the disk cuts short is seen before the commit.
    bool ok = old.open(QIODevice::ReadOnly) && old.seek(oldHeadSize) &&
              copy.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && copy.write(head) == head.size();
    while (ok && !old.atEnd()) {
        const QByteArray chunk = old.read(CopyChunk);
        ok = !chunk.isEmpty() && copy.write(chunk) == chunk.size();
    }
    if (ok && copy.commit())
        return true;
    copy.cancelWriting();
    const QString why = old.error() != QFileDevice::NoError ? old.errorString() : copy.errorString();
    m_error = tr("Could not complete the tags of %1: %2").arg(path, why);
    return false;
}
