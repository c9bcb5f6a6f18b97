#include "schedule/unitfile.h"

#include <QCryptographicHash>

namespace {

// A path systemd would read a prefix from ("-", "@", "+", ...) must be quoted.
bool needsQuotes(const QString &word, bool program)
{
    if (word.isEmpty())
        return true;
    if (program && QStringLiteral("@-:+!|").contains(word.front()))
        return true;
    for (const QChar c : word) {
        if (c.isSpace() || c == u'"' || c == u'\'' || c == u'\\' || c == u';')
            return true;
    }
    return false;
}

QString quoteWord(const QString &word, bool program)
{
    QString text = word;
    if (needsQuotes(word, program)) {
        text.replace(u'\\', QStringLiteral("\\\\"));
        text.replace(u'"', QStringLiteral("\\\""));
        text = u'"' + text + u'"';
    }
    text = UnitText::escapeSpecifiers(text);
    // systemd substitutes variables in the arguments, not in the program path.
    if (!program)
        text.replace(u'$', QStringLiteral("$$"));
    return text;
}

// Undoes the doubling of `marker`; a single one is not text this program wrote.
std::optional<QString> undoubled(const QString &text, QChar marker)
{
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == marker) {
            if (i + 1 >= text.size() || text[i + 1] != marker)
                return std::nullopt;
            ++i;
        }
        plain += text[i];
    }
    return plain;
}

// One word from `at` on: quoted with \\ and \" escapes, or plain up to a blank.
std::optional<QString> readWord(const QString &line, qsizetype &at)
{
    QString word;
    if (line[at] != u'"') {
        while (at < line.size() && line[at] != u' ') {
            if (line[at] == u'"' || line[at] == u'\'' || line[at] == u'\\')
                return std::nullopt;
            word += line[at++];
        }
        if (word.isEmpty())
            return std::nullopt;
        return word;
    }
    for (++at; at < line.size(); ++at) {
        const QChar c = line[at];
        if (c == u'"') {
            ++at;
            if (at < line.size() && line[at] != u' ')
                return std::nullopt;
            return word;
        }
        if (c == u'\\') {
            if (++at >= line.size() || (line[at] != u'\\' && line[at] != u'"'))
                return std::nullopt;
        }
        word += line[at];
    }
    return std::nullopt;
}

} // namespace

UnitFile::UnitFile(QString comment) : m_comment(std::move(comment)) {}

void UnitFile::section(const QString &name)
{
    m_section = name;
}

void UnitFile::add(const QString &key, const QString &value)
{
    m_entries.append({m_section, key, value});
}

QByteArray UnitFile::checksum(QByteArrayView body)
{
    return QCryptographicHash::hash(body, QCryptographicHash::Sha256).toHex();
}

QByteArray UnitFile::bytes() const
{
    QString text;
    for (const QString &line : m_comment.split(u'\n', Qt::SkipEmptyParts))
        text += QStringLiteral("# ") + line + u'\n';
    QString section;
    for (const Entry &entry : m_entries) {
        if (entry.section != section) {
            section = entry.section;
            text += QStringLiteral("\n[") + section + QStringLiteral("]\n");
        }
        text += entry.key + u'=' + entry.value + u'\n';
    }
    const QByteArray body = text.toUtf8();
    return body + checksumKey.toLatin1() + '=' + checksum(body) + '\n';
}

std::optional<UnitFile> UnitFile::parse(QByteArrayView bytes)
{
    const QByteArray marker = '\n' + checksumKey.toLatin1() + '=';
    const qsizetype at = QByteArrayView(bytes).lastIndexOf(marker);
    if (at < 0)
        return std::nullopt;
    const QByteArrayView body = bytes.first(at + 1);
    const QByteArray expected = checksum(body) + '\n';
    if (bytes.sliced(at + marker.size()) != QByteArrayView(expected))
        return std::nullopt;

    UnitFile file;
    const QString text = QString::fromUtf8(body);
    for (const QString &raw : text.split(u'\n')) {
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(u'#') || line.startsWith(u';'))
            continue;
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            file.section(line.mid(1, line.size() - 2));
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0)
            return std::nullopt;
        file.add(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return file;
}

QString UnitFile::value(const QString &section, const QString &key) const
{
    const QStringList found = values(section, key);
    return found.isEmpty() ? QString() : found.first();
}

QStringList UnitFile::values(const QString &section, const QString &key) const
{
    QStringList values;
    for (const Entry &entry : m_entries) {
        if (entry.section == section && entry.key == key)
            values.append(entry.value);
    }
    return values;
}

QString UnitText::escapeSpecifiers(const QString &text)
{
    QString escaped = text;
    return escaped.replace(u'%', QStringLiteral("%%"));
}

std::optional<QString> UnitText::unescapeSpecifiers(const QString &text)
{
    return undoubled(text, u'%');
}

QString UnitText::execLine(const QString &program, const QStringList &arguments)
{
    QString line = quoteWord(program, true);
    for (const QString &argument : arguments)
        line += u' ' + quoteWord(argument, false);
    return line;
}

std::optional<QStringList> UnitText::splitExecLine(const QString &line)
{
    const std::optional<QString> plain = unescapeSpecifiers(line);
    if (!plain || plain->isEmpty())
        return std::nullopt;
    QStringList words;
    qsizetype at = 0;
    while (at < plain->size()) {
        std::optional<QString> word = readWord(*plain, at);
        if (!word)
            return std::nullopt;
        if (!words.isEmpty()) {
            word = undoubled(*word, u'$');
            if (!word)
                return std::nullopt;
        }
        words.append(*word);
        if (at < plain->size())
            ++at; // the blank between two words
    }
    return words;
}

QString UnitText::environmentLine(const QStringList &assignments)
{
    QStringList quoted;
    for (QString assignment : assignments) {
        assignment.replace(u'\\', QStringLiteral("\\\\"));
        assignment.replace(u'"', QStringLiteral("\\\""));
        quoted.append(escapeSpecifiers(u'"' + assignment + u'"'));
    }
    return quoted.join(u' ');
}

QString UnitText::encodeValue(const QString &text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding());
}

std::optional<QString> UnitText::decodeValue(const QString &text)
{
    const QString decoded = QString::fromUtf8(QByteArray::fromPercentEncoding(text.toLatin1()));
    if (encodeValue(decoded) != text)
        return std::nullopt;
    return decoded;
}
