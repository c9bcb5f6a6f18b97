#include "catalogue/stationlistfile.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringTokenizer>
#include <QUrl>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

using ReadResult = StationListFile::ReadResult;

const QString xspfNamespace = QStringLiteral("http://xspf.org/ns/0/");

ReadResult failure(const QString &error)
{
    ReadResult result;
    result.error = error;
    return result;
}

bool isControl(QChar c)
{
    return c.unicode() < 0x20 || c.unicode() == 0x7f;
}

// Line ends and other control characters would split a line of a list.
QString oneLine(QStringView text)
{
    QString result = text.toString();
    for (QChar &c : result) {
        if (isControl(c))
            c = u' ';
    }
    return result.trimmed();
}

// A byte-order mark names the encoding; without one, UTF-8 is tried first,
// then Latin-1, which older M3U and PLS files are written in. Null when the
// bytes are no text at all.
QString decodeText(const QByteArray &bytes)
{
    QString text;
    if (const auto bom = QStringConverter::encodingForData(bytes)) {
        text = QStringDecoder(*bom).decode(bytes);
    } else {
        QStringDecoder utf8(QStringConverter::Utf8);
        text = utf8.decode(bytes);
        if (utf8.hasError())
            text = QString::fromLatin1(bytes);
    }
    for (const QChar c : std::as_const(text)) {
        if (isControl(c) && c != u'\t' && c != u'\n' && c != u'\r')
            return QString();
    }
    return text;
}

// Gathers a list's entries, counting those that are no internet station.
class Collector
{
public:
    // False once the list holds more stations than an import takes.
    bool add(QStringView name, QStringView address)
    {
        const QStringView trimmed = address.trimmed();
        if (!StationListFile::isInternetAddress(trimmed)) {
            ++m_result.refused;
            return true;
        }
        if (m_result.entries.size() >= StationListFile::maxEntries) {
            m_tooMany = true;
            return false;
        }
        m_result.entries.append({oneLine(name), trimmed.toString()});
        return true;
    }
    ReadResult finish()
    {
        if (m_tooMany) {
            return failure(StationListFile::tr("The list holds more than %1 stations; nothing was imported.")
                               .arg(StationListFile::maxEntries));
        }
        if (m_result.entries.isEmpty() && m_result.refused > 0) {
            return failure(StationListFile::tr("The list holds no internet stations: every entry is a file "
                                               "or a relative path; nothing was imported."));
        }
        if (m_result.entries.isEmpty())
            return failure(StationListFile::tr("The list holds no stations."));
        return std::move(m_result);
    }

private:
    ReadResult m_result;
    bool m_tooMany = false;
};

ReadResult notAList()
{
    return failure(
        StationListFile::tr("The file is not a station list (M3U, PLS or XSPF); nothing was imported."));
}

// The name after "#EXTINF:": what follows the first comma outside the quoted
// attribute values that some lists put before it.
QStringView extinfName(QStringView info)
{
    bool quoted = false;
    for (qsizetype i = 0; i < info.size(); ++i) {
        if (info[i] == u'"')
            quoted = !quoted;
        else if (info[i] == u',' && !quoted)
            return info.sliced(i + 1).trimmed();
    }
    return {};
}

// Whether a line of a list without the "#EXTM3U" header can be a location:
// an address with a scheme, a path or a media file's name. Lines of prose make
// the file something other than a list.
bool looksLikeLocation(QStringView line)
{
    static const QString mediaSuffixes[] = {
        QStringLiteral(".mp3"),  QStringLiteral(".ogg"), QStringLiteral(".opus"), QStringLiteral(".flac"),
        QStringLiteral(".aac"),  QStringLiteral(".m4a"), QStringLiteral(".wav"),  QStringLiteral(".m3u"),
        QStringLiteral(".m3u8"), QStringLiteral(".pls"), QStringLiteral(".xspf"),
    };
    if (line.contains(u"://") || line.contains(u'/') || line.contains(u'\\'))
        return true;
    for (const QString &suffix : mediaSuffixes) {
        if (line.endsWith(suffix, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

ReadResult readM3u(QStringView text)
{
    Collector collector;
    QStringView name;
    bool header = false;
    bool first = true;
    for (const QStringView raw : qTokenize(text, u'\n')) {
        const QStringView line = raw.trimmed();
        if (line.isEmpty())
            continue;
        if (first) {
            header = line.startsWith(u"#EXTM3U", Qt::CaseInsensitive);
            first = false;
        }
        if (line.startsWith(u'#')) {
            if (line.startsWith(u"#EXTINF:", Qt::CaseInsensitive))
                name = extinfName(line.sliced(8));
            continue;
        }
        if (!header && !looksLikeLocation(line))
            return notAList();
        if (!collector.add(name, line))
            break;
        name = {};
    }
    return collector.finish();
}

// "FileN=" and "TitleN=" lines, in the order of their numbers, whatever
// "NumberOfEntries" says.
ReadResult readPls(QStringView text)
{
    QMap<int, StationListEntry> byNumber;
    for (const QStringView raw : qTokenize(text, u'\n')) {
        const QStringView line = raw.trimmed();
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0)
            continue;
        const QStringView key = line.first(equals).trimmed();
        const QStringView value = line.sliced(equals + 1).trimmed();
        const bool isFile = key.startsWith(u"file", Qt::CaseInsensitive);
        const bool isTitle = key.startsWith(u"title", Qt::CaseInsensitive);
        if (!isFile && !isTitle)
            continue;
        bool ok = false;
        const int number = key.sliced(isFile ? 4 : 5).toInt(&ok);
        if (!ok || number < 1)
            continue;
        if (!byNumber.contains(number) && byNumber.size() >= StationListFile::maxEntries)
            return failure(StationListFile::tr("The list holds more than %1 stations; nothing was imported.")
                               .arg(StationListFile::maxEntries));
        StationListEntry &entry = byNumber[number];
        (isFile ? entry.address : entry.name) = value.toString();
    }
    Collector collector;
    for (const StationListEntry &entry : std::as_const(byNumber)) {
        if (!entry.address.isEmpty() && !collector.add(entry.name, entry.address))
            break;
    }
    return collector.finish();
}

// A track's first internet location, or its first location when it has none.
void readTrack(QXmlStreamReader &xml, Collector &collector, bool &full)
{
    QString title;
    QString location;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"location") {
            const QString found = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
            if (location.isEmpty() ||
                (!StationListFile::isInternetAddress(location) && StationListFile::isInternetAddress(found)))
                location = found;
        } else if (xml.name() == u"title") {
            title = xml.readElementText(QXmlStreamReader::SkipChildElements);
        } else {
            xml.skipCurrentElement();
        }
    }
    if (!location.isEmpty() && !full)
        full = !collector.add(title, location);
}

ReadResult readXspf(const QString &text)
{
    QXmlStreamReader xml(text);
    if (!xml.readNextStartElement() || xml.name() != u"playlist") {
        if (xml.hasError())
            return failure(
                StationListFile::tr("The XSPF list is damaged (line %1: %2); nothing was imported.")
                    .arg(xml.lineNumber())
                    .arg(xml.errorString()));
        return notAList();
    }
    Collector collector;
    bool full = false;
    while (xml.readNextStartElement()) {
        if (xml.name() != u"trackList") {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            if (xml.name() == u"track")
                readTrack(xml, collector, full);
            else
                xml.skipCurrentElement();
        }
    }
    // What follows the list must be well-formed too: a damaged file is refused whole.
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        return failure(StationListFile::tr("The XSPF list is damaged (line %1: %2); nothing was imported.")
                           .arg(xml.lineNumber())
                           .arg(xml.errorString()));
    return collector.finish();
}

QByteArray writeM3u8(const QList<StationListEntry> &entries)
{
    QString text = QStringLiteral("#EXTM3U\n");
    for (const StationListEntry &e : entries) {
        const QString address = oneLine(e.address);
        if (!address.isEmpty())
            text += QStringLiteral("#EXTINF:-1,") + oneLine(e.name) + u'\n' + address + u'\n';
    }
    return text.toUtf8();
}

QByteArray writePls(const QList<StationListEntry> &entries)
{
    QString text = QStringLiteral("[playlist]\n");
    int number = 0;
    for (const StationListEntry &e : entries) {
        const QString address = oneLine(e.address);
        if (address.isEmpty())
            continue;
        const QString n = QString::number(++number);
        text += QStringLiteral("File") + n + u'=' + address + QStringLiteral("\nTitle") + n + u'=' +
                oneLine(e.name) + QStringLiteral("\nLength") + n + QStringLiteral("=-1\n");
    }
    text += QStringLiteral("NumberOfEntries=") + QString::number(number) + QStringLiteral("\nVersion=2\n");
    return text.toUtf8();
}

QByteArray writeXspf(const QList<StationListEntry> &entries)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeDefaultNamespace(xspfNamespace);
    xml.writeStartElement(xspfNamespace, QStringLiteral("playlist"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    xml.writeStartElement(xspfNamespace, QStringLiteral("trackList"));
    for (const StationListEntry &e : entries) {
        const QString address = oneLine(e.address);
        if (address.isEmpty())
            continue;
        xml.writeStartElement(xspfNamespace, QStringLiteral("track"));
        xml.writeTextElement(xspfNamespace, QStringLiteral("location"), address);
        if (const QString name = oneLine(e.name); !name.isEmpty())
            xml.writeTextElement(xspfNamespace, QStringLiteral("title"), name);
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return bytes;
}

} // namespace

StationListFile::ReadResult StationListFile::read(const QByteArray &bytes)
{
    if (bytes.size() > maxFileBytes)
        return failure(tr("The file is larger than a station list can be (%1 MB); nothing was imported.")
                           .arg(maxFileBytes / (1024 * 1024)));
    const QString text = decodeText(bytes);
    const QStringView content = QStringView(text).trimmed();
    if (content.isEmpty())
        return notAList();
    if (content.startsWith(u'<'))
        return readXspf(text);
    const qsizetype lineEnd = content.indexOf(u'\n');
    const QStringView firstLine = lineEnd < 0 ? content : content.first(lineEnd);
    if (firstLine.trimmed().compare(u"[playlist]", Qt::CaseInsensitive) == 0)
        return readPls(content);
    return readM3u(content);
}

StationListFile::ReadResult StationListFile::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(tr("Could not read %1: %2").arg(QFileInfo(path).fileName(), file.errorString()));
    // One byte more than allowed tells a file that is too large without reading it all.
    return read(file.read(maxFileBytes + 1));
}

QByteArray StationListFile::write(Format format, const QList<StationListEntry> &entries)
{
    switch (format) {
    case Format::Pls:
        return writePls(entries);
    case Format::Xspf:
        return writeXspf(entries);
    case Format::M3u8:
        break;
    }
    return writeM3u8(entries);
}

QString StationListFile::writeFile(const QString &path, Format format, const QList<StationListEntry> &entries)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(write(format, entries)) < 0 || !file.commit())
        return tr("Could not write %1: %2").arg(QFileInfo(path).fileName(), file.errorString());
    return QString();
}

StationListFile::Format StationListFile::formatForPath(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix();
    if (suffix.compare(u"pls", Qt::CaseInsensitive) == 0)
        return Format::Pls;
    if (suffix.compare(u"xspf", Qt::CaseInsensitive) == 0)
        return Format::Xspf;
    return Format::M3u8;
}

bool StationListFile::isInternetAddress(QStringView address)
{
    if (address.isEmpty() || address.size() > maxAddressLength)
        return false;
    for (const QChar c : address) {
        if (c.isSpace() || isControl(c))
            return false;
    }
    const QUrl url(address.toString());
    const QString scheme = url.scheme();
    return url.isValid() && !url.host().isEmpty() &&
           (scheme.compare(u"http", Qt::CaseInsensitive) == 0 ||
            scheme.compare(u"https", Qt::CaseInsensitive) == 0);
}
