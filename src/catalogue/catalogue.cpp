#include "catalogue/catalogue.h"

#include "base/apperror.h"
#include "base/apppaths.h"
#include "base/conversions.h"
#include "base/prompt.h"
#include "base/unicodefile.h"
#include "catalogue/stationnames.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>

namespace {

const QString crLf = QStringLiteral("\r\n");
const QString commentLine1 = QStringLiteral("# two first lines :  version  and seperator.");
const QString commentLine2 = QStringLiteral("#format is:  Name Genre BitRate Format Category OutputFile "
                                            "SingleSong Rating LastDate CallSign StreamURL InfoUrl");

// Splits at each occurrence of separator, reusing the list's storage from line
// to line. An empty separator yields the whole text as one part.
void splitInto(QList<QStringView> &parts, QStringView text, QStringView separator)
{
    parts.clear();
    qsizetype start = 0;
    // Looking for the separator's first character is much faster than a
    // general substring search, and separators are one or two characters.
    const auto next = [&](qsizetype from) {
        for (qsizetype at; (at = text.indexOf(separator.front(), from)) >= 0; from = at + 1) {
            if (text.sliced(at).startsWith(separator))
                return at;
        }
        return qsizetype(-1);
    };
    if (!separator.isEmpty()) {
        for (qsizetype at; (at = next(start)) >= 0; start = at + separator.size())
            parts.append(text.sliced(start, at - start));
    }
    parts.append(text.sliced(start));
}

// Genres, bit rates, formats, categories and templates mostly repeat the line
// before: sharing that copy keeps a large catalogue small.
QString sharedWith(const QString &previous, QStringView value)
{
    return value == previous ? previous : value.toString();
}

QString fromUtf16Le(const QByteArray &bytes)
{
    const qsizetype units = bytes.size() / 2; // a dangling odd byte is no character
    QString text(units, Qt::Uninitialized);
    qFromLittleEndian<quint16>(bytes.constData(), units, text.data());
    return text;
}

void appendUtf16Le(QByteArray &bytes, QStringView text)
{
    const qsizetype at = bytes.size();
    bytes.resize(at + text.size() * 2);
    qToLittleEndian<quint16>(text.utf16(), text.size(), bytes.data() + at);
}

// The text after the first "=", or the whole line when it has none.
QString afterFirstEquals(const QString &line)
{
    return line.mid(line.indexOf(u'=') + 1);
}

// A playlist file's lines split at LF, or none when it has fewer than four
// (the File1 and Title1 lines are at indices 2 and 3).
QStringList playlistLines(const QString &folder, const QString &fileName)
{
    QString text;
    ModUnicodeFile::readText(QDir(folder).filePath(fileName), text);
    QStringList lines = text.split(u'\n');
    if (lines.size() < 4)
        lines.clear();
    return lines;
}

// The station name from a playlist's Title1 line: the directory's
// "(#1 - 17/200)" prefix dropped, then cleaned for file names.
QString nameFromTitleLine(const QString &line)
{
    QString title = afterFirstEquals(line);
    // A ")" only as the first character does not count, but when one follows,
    // the cut is still made after the first.
    if (title.indexOf(u')', 1) > 0)
        title = title.mid(title.indexOf(u')') + 1);
    return StationNames::cleanName(title);
}

// A copy of a damaged file beside it: "<file>.damaged", then ".damaged2" and
// on, reusing one that holds the same bytes. Empty when none could be made.
QString keepDamagedCopy(const QString &path)
{
    QFile damaged(path);
    if (!damaged.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = damaged.readAll();
    for (int n = 1; n <= 99; ++n) {
        const QString copy = path + QStringLiteral(".damaged") + (n > 1 ? QString::number(n) : QString());
        QFile existing(copy);
        if (!existing.exists())
            return QFile::copy(path, copy) ? copy : QString();
        if (existing.open(QIODevice::ReadOnly) && existing.size() == bytes.size() &&
            existing.readAll() == bytes)
            return copy;
    }
    return {};
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

QString Catalogue::damagedMessage()
{
    return tr("Station file appears damaged.. attempting to recover");
}

Catalogue::Catalogue() : m_stations(1) {}

QString Catalogue::cataloguePath()
{
    return AppPaths::dataFolder() + QStringLiteral("Stations.txt");
}

int Catalogue::append(Station station)
{
    m_stations.push_back(std::move(station));
    return stationCount();
}

void Catalogue::removeAll()
{
    m_stations = std::vector<Station>(1);
}

void Catalogue::load(Prompt &prompt, const QString &appTitle)
{
    const QString path = cataloguePath();
    QString text;
    {
        QByteArray bytes;
        ModUnicodeFile::readBytes(path, bytes, true);
        text = fromUtf16Le(bytes);
    } // the bytes go before parsing, so that a large file is not held twice
    QString problem = read(text);
    m_loadedDamaged = !problem.isEmpty();
    if (!m_loadedDamaged)
        return;
    const bool exists = QFileInfo::exists(path);
    if (!exists)
        problem = tr("The file %1 does not exist.").arg(QDir::toNativeSeparators(path));
    QStringList lines = {damagedMessage(), QString(), problem};
    if (exists) {
        const QString copy = keepDamagedCopy(path);
        lines.append(copy.isEmpty()
                         ? tr("No copy of the damaged file could be made.")
                         : tr("The damaged file is kept as %1.").arg(QDir::toNativeSeparators(copy)));
    }
    const QString backup = path + QStringLiteral(".bck");
    lines.append(QFileInfo::exists(backup) ? tr("The list as it was before the last save is kept in %1.")
                                                 .arg(QDir::toNativeSeparators(backup))
                                           : tr("There is no backup of an earlier list."));
    prompt.message(lines.join(u'\n'), appTitle, Prompt::Icon::Information);
}

QString Catalogue::read(const QString &text)
{
    // A fresh array rather than a cleared one: the old capacity is given back
    // before the text is read.
    m_stations = std::vector<Station>(1);
    categories = CategoryList();

    // Lines and fields are views into text; only the stored fields are copied.
    QList<QStringView> lines;
    if (!text.isEmpty())
        splitInto(lines, text, crLf);
    m_stations.reserve(static_cast<std::size_t>(std::max<qsizetype>(lines.size() - 1, 1)));
    if (lines.isEmpty())
        return tr("The file is empty.");
    version = lines.at(0).toString();
    if (lines.size() < 2)
        return tr("The file ends after its first line: the separator line is missing.");
    separator = lines.at(1).toString();

    QList<QStringView> f;
    for (qsizetype i = 2; i < lines.size(); ++i) {
        QStringView line = lines.at(i);
        QString untabbed;
        if (line.contains(u'\t')) {
            untabbed = line.toString().replace(u'\t', u' ');
            line = untabbed;
        }
        const QStringView trimmed = StationNames::trimBlanks(line);
        if (trimmed.isEmpty() || trimmed.startsWith(u'#'))
            continue;
        splitInto(f, line, separator);
        if (f.size() < 11)
            continue;

        // The record is counted before it is filled: a failure below
        // leaves it partly filled, as the recovery keeps it.
        m_stations.emplace_back();
        const Station &previous = m_stations[m_stations.size() - 2];
        Station &s = m_stations.back();
        const qsizetype number = i + 1;
        s.Name = f[0].toString();
        s.Genre = sharedWith(previous.Genre, f[1]);
        s.BitRate = sharedWith(previous.BitRate, f[2]);
        s.Format = sharedWith(previous.Format, f[3]);
        s.Category = sharedWith(previous.Category, f[4]);
        s.OutputFile = sharedWith(previous.OutputFile, f[5]);
        try {
            s.SingleSong = Convert::toBoolean(f[6]);
        } catch (const AppError &) {
            return tr("Line %1: the one-file-per-song field \"%2\" is neither True nor False.")
                .arg(number)
                .arg(f[6]);
        }
        try {
            s.Rating = Convert::toInt32(f[7]);
        } catch (const AppError &) {
            return tr("Line %1: the rating \"%2\" is not a whole number.").arg(number).arg(f[7]);
        }
        s.LastDate = f[8].toString();
        s.CallSign = f[9].toString();
        s.StreamURL = f[10].toString();
        if (f.size() < 12)
            return tr("Line %1 has 11 fields; a station has 12.").arg(number);
        s.InfoUrl = StationNames::trimBlanks(f[11]).toString();
        if (s.Category != previous.Category) // an equal one went in with the line before
            categories.add(s.Category);
    }
    return {};
}

QString Catalogue::stationLine(const Station &s) const
{
    const QString &sep = separator;
    return s.Name + sep + s.Genre + sep + s.BitRate + sep + s.Format + sep + s.Category + sep + s.OutputFile +
           sep + Convert::booleanText(s.SingleSong) + sep + QString::number(s.Rating) + sep + s.LastDate +
           sep + s.CallSign + sep + s.StreamURL + sep + s.InfoUrl;
}

void Catalogue::save()
{
    if (separator.isEmpty())
        separator = defaultSeparator;

    // Encoded line by line: the whole text is never held twice.
    QByteArray bytes;
    bytes.reserve(512 + static_cast<qsizetype>(m_stations.size()) * 320);
    appendUtf16Le(bytes, QString(QStringLiteral("2.1") + crLf + separator + crLf + commentLine1 + crLf +
                                 commentLine2 + crLf));
    for (std::size_t i = 1; i < m_stations.size(); ++i) {
        const Station &s = m_stations[i];
        if (!s.Deleted)
            appendUtf16Le(bytes, QString(stationLine(s) + crLf));
    }

    const QString path = cataloguePath();
    if (!m_loadedDamaged) {
        const QString backup = path + QStringLiteral(".bck");
        QFile::remove(backup);
        QFile::copy(path, backup);
    }

    ModUnicodeFile::writeBytes(path, bytes, true);
    m_loadedDamaged = false;
    dirty = false;
}

bool Catalogue::hasStreamUrl(const QString &url) const
{
    for (const Station &s : m_stations) {
        if (s.StreamURL.compare(url, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

void Catalogue::importFolder(const QString &folder, const QString &genre, bool secondVariant, Prompt &prompt,
                             const QString &appTitle)
{
    const QStringList files =
        QDir(folder).entryList({QStringLiteral("*.pls")}, QDir::Files, QDir::Unsorted);
    for (const QString &file : files) {
        if (secondVariant)
            importPlaylistFile2(folder, file, genre);
        else
            importPlaylistFile(folder, file, genre);
    }
    save();
    load(prompt, appTitle);
}

bool Catalogue::importPlaylistFile(const QString &folder, const QString &fileName, const QString &genre)
{
    const QStringList parts = fileName.split(QStringLiteral("_#_"));
    if (parts.size() < 3)
        throw AppError(
            AppError::SubscriptOutOfRange,
            AppError::tr("Subscript out of range: not a saved directory playlist: %1").arg(fileName));
    const QString bitRate = StationNames::trimBlanks(parts[1]);
    const QString tail = StationNames::trimBlanks(parts[2]);

    const QStringList lines = playlistLines(folder, fileName);
    return !lines.isEmpty() && appendImported(lines[3], QStringLiteral("ssrn#") + tail, genre, bitRate);
}

bool Catalogue::importPlaylistFile2(const QString &folder, const QString &fileName, const QString &genre)
{
    const QString lastWord = fileName.split(u' ').constLast();
    QString bitRate;
    if (const qsizetype paren = lastWord.indexOf(u')', 1); paren > 0)
        bitRate = lastWord.left(paren).remove(u'(');
    else if (const qsizetype underscore = lastWord.indexOf(u'_'); underscore >= 0)
        bitRate = lastWord.mid(underscore + 1).remove(QStringLiteral(".pls"));

    const QStringList lines = playlistLines(folder, fileName);
    return !lines.isEmpty() && appendImported(lines[3], afterFirstEquals(lines[2]), genre, bitRate);
}

bool Catalogue::appendImported(const QString &titleLine, const QString &streamUrl, const QString &genre,
                               const QString &bitRate)
{
    if (hasStreamUrl(streamUrl))
        return false;
    Station s = Station::newStation();
    s.Name = nameFromTitleLine(titleLine);
    s.Genre = genre;
    s.BitRate = bitRate;
    s.StreamURL = streamUrl;
    append(std::move(s));
    dirty = true;
    return true;
}
