#include "catalogue/catalogue.h"

#include "app/apperror.h"
#include "app/apppaths.h"
#include "app/conversions.h"
#include "app/prompt.h"
#include "app/unicodefile.h"
#include "catalogue/stationnames.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

namespace {

const QString CrLf = QStringLiteral("\r\n");
const QString CommentLine1 = QStringLiteral("# two first lines :  version  and seperator.");
const QString CommentLine2 = QStringLiteral(
    "#format is:  Name Genre BitRate Format Category OutputFile SingleSong Rating LastDate CallSign StreamURL InfoUrl");

// A split on an empty separator yields the whole text as one piece.
QStringList splitOn(const QString &text, const QString &separator)
{
    if (separator.isEmpty())
        return {text};
    return text.split(separator);
}

QString fromUtf16Le(const QByteArray &bytes)
{
    const qsizetype units = bytes.size() / 2; // a dangling odd byte is no character
    QString text(units, Qt::Uninitialized);
    const auto *src = reinterpret_cast<const uchar *>(bytes.constData());
    char16_t *dst = reinterpret_cast<char16_t *>(text.data());
    for (qsizetype i = 0; i < units; ++i)
        dst[i] = qFromLittleEndian<quint16>(src + 2 * i);
    return text;
}

QByteArray toUtf16Le(const QString &text)
{
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    auto *dst = reinterpret_cast<uchar *>(bytes.data());
    const char16_t *src = reinterpret_cast<const char16_t *>(text.utf16());
    for (qsizetype i = 0; i < text.size(); ++i)
        qToLittleEndian<quint16>(src[i], dst + 2 * i);
    return bytes;
}

// The text after the first "=", or the whole line when it has none.
QString afterFirstEquals(const QString &line)
{
    return line.mid(line.indexOf(u'=') + 1);
}

// The station name from a playlist's Title1 line: the directory's
// "(#1 - 17/200)" prefix dropped, then cleaned for file names.
QString nameFromTitleLine(const QString &line)
{
    QString title = afterFirstEquals(line);
    const qsizetype paren = title.indexOf(u')', 1);
    if (paren > 0)
        title = title.mid(paren + 1);
    return StationNames::CleanName(title);
}

} // namespace

CategoryList::CategoryList()
{
    add(QString());
}

bool CategoryList::add(const QString &category)
{
    const QString key = category.toCaseFolded();
    if (m_keys.contains(key))
        return false;
    m_keys.insert(key);
    m_items.append(category);
    return true;
}

Catalogue::Catalogue() : m_stations(1) {}

QString Catalogue::CataloguePath()
{
    return AppPaths::DataFolder() + QStringLiteral("Stations.txt");
}

int Catalogue::Append(Station station)
{
    m_stations.push_back(std::move(station));
    return StationCount();
}

void Catalogue::Clear()
{
    m_stations.resize(1);
}

void Catalogue::Load(Prompt &prompt, const QString &appTitle)
{
    m_stations.assign(1, Station());
    Categories = CategoryList();

    QByteArray bytes;
    ModUnicodeFile::ReadBytes(CataloguePath(), bytes, true);
    const QString text = fromUtf16Le(bytes);
    const QStringList lines = text.isEmpty() ? QStringList() : text.split(CrLf);

    try {
        if (lines.isEmpty())
            throw AppError(AppError::SubscriptOutOfRange, QStringLiteral("Subscript out of range"));
        Version = lines.at(0);
        if (lines.size() < 2)
            throw AppError(AppError::SubscriptOutOfRange, QStringLiteral("Subscript out of range"));
        Separator = lines.at(1);

        for (qsizetype i = 2; i < lines.size(); ++i) {
            QString line = lines.at(i);
            line.replace(u'\t', u' ');
            const QString trimmed = StationNames::TrimBlanks(line);
            if (trimmed.isEmpty() || trimmed.startsWith(u'#'))
                continue;
            const QStringList f = splitOn(line, Separator);
            if (f.size() < 11)
                continue;

            // The record is counted before it is filled: a failure below
            // leaves it partly filled, as the recovery keeps it.
            m_stations.emplace_back();
            Station &s = m_stations.back();
            s.Name = f[0];
            s.Genre = f[1];
            s.BitRate = f[2];
            s.Format = f[3];
            s.Category = f[4];
            s.OutputFile = f[5];
            s.SingleSong = Convert::ToBoolean(f[6]);
            s.Rating = Convert::ToInt32(f[7]);
            s.LastDate = f[8];
            s.CallSign = f[9];
            s.StreamURL = f[10];
            if (f.size() < 12)
                throw AppError(AppError::SubscriptOutOfRange, QStringLiteral("Subscript out of range"));
            s.InfoUrl = StationNames::TrimBlanks(f[11]);
            Categories.add(s.Category);
        }
    } catch (const AppError &) {
        prompt.message(DamagedMessage, appTitle, Prompt::Icon::Information);
    }
}

QString Catalogue::StationLine(const Station &s) const
{
    const QString &sep = Separator;
    return s.Name + sep + s.Genre + sep + s.BitRate + sep + s.Format + sep + s.Category + sep + s.OutputFile +
           sep + Convert::BooleanText(s.SingleSong) + sep + QString::number(s.Rating) + sep + s.LastDate + sep +
           s.CallSign + sep + s.StreamURL + sep + s.InfoUrl;
}

void Catalogue::Save()
{
    if (Separator.isEmpty())
        Separator = DefaultSeparator;

    QString text;
    text.reserve(256 + static_cast<qsizetype>(m_stations.size()) * 160);
    text += QStringLiteral("2.1") + CrLf + Separator + CrLf + CommentLine1 + CrLf + CommentLine2 + CrLf;
    for (std::size_t i = 1; i < m_stations.size(); ++i) {
        const Station &s = m_stations[i];
        if (!s.Deleted)
            text += StationLine(s) + CrLf;
    }

    const QString path = CataloguePath();
    const QString backup = path + QStringLiteral(".bck");
    QFile::remove(backup);
    QFile::copy(path, backup);

    ModUnicodeFile::WriteBytes(path, toUtf16Le(text), true);
    Dirty = false;
}

bool Catalogue::HasStreamUrl(const QString &url) const
{
    for (const Station &s : m_stations) {
        if (s.StreamURL.compare(url, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

void Catalogue::ImportFolder(const QString &folder, const QString &genre, bool secondVariant, Prompt &prompt,
                             const QString &appTitle)
{
    const QStringList files =
        QDir(folder).entryList({QStringLiteral("*.pls")}, QDir::Files, QDir::Unsorted);
    for (const QString &file : files) {
        if (secondVariant)
            ImportPlaylistFile2(folder, file, genre);
        else
            ImportPlaylistFile(folder, file, genre);
    }
    Save();
    Load(prompt, appTitle);
}

bool Catalogue::ImportPlaylistFile(const QString &folder, const QString &fileName, const QString &genre)
{
    const QStringList parts = fileName.split(QStringLiteral("_#_"));
    if (parts.size() < 3)
        throw AppError(AppError::SubscriptOutOfRange,
                       QStringLiteral("Subscript out of range: not a saved directory playlist: ") + fileName);
    const QString bitRate = StationNames::TrimBlanks(parts[1]);
    const QString tail = StationNames::TrimBlanks(parts[2]);

    QString text;
    ModUnicodeFile::ReadText(QDir(folder).filePath(fileName), text);
    const QStringList lines = text.split(u'\n');
    if (lines.size() < 4)
        return false;

    const QString streamUrl = QStringLiteral("ssrn#") + tail;
    if (HasStreamUrl(streamUrl))
        return false;

    Station s = Station::newStation();
    s.Name = nameFromTitleLine(lines[3]);
    s.Genre = genre;
    s.BitRate = bitRate;
    s.StreamURL = streamUrl;
    Append(std::move(s));
    Dirty = true;
    return true;
}

bool Catalogue::ImportPlaylistFile2(const QString &folder, const QString &fileName, const QString &genre)
{
    const QString lastWord = fileName.split(u' ').constLast();
    QString bitRate;
    if (const qsizetype paren = lastWord.indexOf(u')', 1); paren > 0)
        bitRate = lastWord.left(paren).remove(u'(');
    else if (const qsizetype underscore = lastWord.indexOf(u'_'); underscore >= 0)
        bitRate = lastWord.mid(underscore + 1).remove(QStringLiteral(".pls"));

    QString text;
    ModUnicodeFile::ReadText(QDir(folder).filePath(fileName), text);
    const QStringList lines = text.split(u'\n');
    if (lines.size() < 4)
        return false;

    const QString streamUrl = afterFirstEquals(lines[2]);
    if (HasStreamUrl(streamUrl))
        return false;

    Station s = Station::newStation();
    s.Name = nameFromTitleLine(lines[3]);
    s.Genre = genre;
    s.BitRate = bitRate;
    s.StreamURL = streamUrl;
    Append(std::move(s));
    Dirty = true;
    return true;
}
