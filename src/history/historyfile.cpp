#include "history/historyfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>

namespace {

constexpr qsizetype ChunkBytes = 1 << 20;
constexpr qsizetype MaxTimeDigits = 15;

QByteArray escape(const QString &text)
{
    QByteArray bytes = text.toUtf8();
    if (!bytes.contains('\\') && !bytes.contains('\t') && !bytes.contains('\n') && !bytes.contains('\r'))
        return bytes;
    QByteArray out;
    out.reserve(bytes.size() + 8);
    for (const char c : std::as_const(bytes)) {
        switch (c) {
        case '\\':
            out += "\\\\";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::optional<QString> unescape(QByteArrayView field)
{
    if (!field.contains('\\'))
        return field.isValidUtf8() ? std::optional(QString::fromUtf8(field)) : std::nullopt;
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] != '\\') {
            out += field[i];
            continue;
        }
        if (++i == field.size())
            return std::nullopt;
        switch (field[i]) {
        case '\\':
            out += '\\';
            break;
        case 't':
            out += '\t';
            break;
        case 'n':
            out += '\n';
            break;
        case 'r':
            out += '\r';
            break;
        default:
            return std::nullopt;
        }
    }
    return QByteArrayView(out).isValidUtf8() ? std::optional(QString::fromUtf8(out)) : std::nullopt;
}

std::optional<qint64> parseTime(QByteArrayView digits)
{
    if (digits.isEmpty() || digits.size() > MaxTimeDigits)
        return std::nullopt;
    for (const char c : digits) {
        if (c < '0' || c > '9')
            return std::nullopt;
    }
    return digits.toLongLong();
}

// Collects entries line by line, keeping the newest `limit`. Station names
// repeat on thousands of lines: each is kept once and shared.
class Collector
{
public:
    Collector(HistoryFile::Contents &contents, qsizetype limit) : m_contents(contents), m_limit(limit) {}

    void take(QByteArrayView line)
    {
        std::optional<HistoryEntry> entry = HistoryFile::parse(line);
        if (!entry) {
            ++m_contents.brokenLines;
            return;
        }
        ++m_contents.goodLines;
        const auto known = m_stations.constFind(entry->station);
        if (known != m_stations.constEnd())
            entry->station = *known;
        else
            m_stations.insert(entry->station);
        m_contents.entries.push_back(std::move(*entry));
        if (qsizetype(m_contents.entries.size()) > m_limit)
            m_contents.entries.pop_front();
    }

private:
    HistoryFile::Contents &m_contents;
    qsizetype m_limit;
    QSet<QString> m_stations;
};

} // namespace

namespace HistoryFile {

QByteArray line(const HistoryEntry &entry)
{
    return QByteArray::number(entry.time) + '\t' + escape(entry.station) + '\t' + escape(entry.title) + '\n';
}

std::optional<HistoryEntry> parse(QByteArrayView line)
{
    if (line.size() > MaxLineBytes)
        return std::nullopt;
    const qsizetype first = line.indexOf('\t');
    const qsizetype second = first < 0 ? -1 : line.indexOf('\t', first + 1);
    if (second < 0 || line.indexOf('\t', second + 1) >= 0)
        return std::nullopt;
    const std::optional<qint64> time = parseTime(line.first(first));
    std::optional<QString> station = unescape(line.sliced(first + 1, second - first - 1));
    std::optional<QString> title = unescape(line.sliced(second + 1));
    if (!time || !station || !title || title->isEmpty())
        return std::nullopt;
    return HistoryEntry{*time, std::move(*station), std::move(*title)};
}

Contents read(const QString &path, qsizetype limit)
{
    Contents contents;
    QFile file(path);
    if (!file.exists())
        return contents;
    if (!file.open(QIODevice::ReadOnly)) {
        contents.error = file.errorString();
        return contents;
    }
    Collector collector(contents, limit);
    QByteArray pending;    // the start of a line that goes on in the next chunk
    bool overlong = false; // inside a line already counted as broken
    while (!file.atEnd()) {
        const QByteArray chunk = file.read(ChunkBytes);
        if (chunk.isEmpty()) {
            contents.error = file.errorString();
            break;
        }
        qsizetype from = 0;
        for (qsizetype end = chunk.indexOf('\n'); end >= 0; end = chunk.indexOf('\n', from)) {
            const QByteArrayView rest = QByteArrayView(chunk).sliced(from, end - from);
            if (overlong) {
                overlong = false;
            } else if (pending.isEmpty()) {
                collector.take(rest);
            } else {
                pending += rest;
                collector.take(pending);
                pending.clear();
            }
            from = end + 1;
        }
        if (!overlong)
            pending += QByteArrayView(chunk).sliced(from);
        if (pending.size() > MaxLineBytes) {
            ++contents.brokenLines;
            pending.clear();
            overlong = true;
        }
    }
    if (!pending.isEmpty())
        ++contents.brokenLines;
    return contents;
}

QString write(const QString &path, const std::deque<HistoryEntry> &entries)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    QByteArray buffer;
    for (const HistoryEntry &entry : entries) {
        buffer += line(entry);
        if (buffer.size() >= ChunkBytes) {
            file.write(buffer);
            buffer.clear();
        }
    }
    file.write(buffer);
    if (!file.commit())
        return file.errorString();
    return {};
}

QString moveAside(const QString &path)
{
    // Renaming never replaces an existing file, so a name taken meanwhile is
    // skipped like one taken before.
    for (int n = 1; n < 100000; ++n) {
        const QString target = path + QStringLiteral(".damaged-") + QString::number(n);
        if (QFileInfo::exists(target))
            continue;
        if (QFile::rename(path, target))
            return target;
        if (!QFileInfo::exists(target))
            return {};
    }
    return {};
}

} // namespace HistoryFile
