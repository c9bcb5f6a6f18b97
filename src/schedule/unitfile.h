#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// A unit file as this program writes it: a comment, then sections of
// key=value lines, closed by a checksum line over everything before it, so
// that a file changed by hand (or damaged) is told apart from one the program
// wrote and is left alone.
class UnitFile
{
public:
    static inline const QString checksumKey = QStringLiteral("X-Tunecatch-Checksum");

    explicit UnitFile(QString comment = {});

    void section(const QString &name);
    // The value as it stands in the file; escaping is the caller's.
    void add(const QString &key, const QString &value);
    QByteArray bytes() const;

    // Reads a file Bytes made; nothing when its checksum does not match.
    static std::optional<UnitFile> parse(QByteArrayView bytes);
    // The first value of the key in the section; null when there is none.
    QString value(const QString &section, const QString &key) const;
    QStringList values(const QString &section, const QString &key) const;

private:
    struct Entry
    {
        QString section;
        QString key;
        QString value;
    };

    static QByteArray checksum(QByteArrayView body);

    QString m_comment;
    QString m_section;
    QList<Entry> m_entries;
};

// How values are spelt inside a unit file.
namespace UnitText {

// systemd expands "%" specifiers in most settings; "%%" stands for "%".
QString escapeSpecifiers(const QString &text);
std::optional<QString> unescapeSpecifiers(const QString &text);

// An Exec...= line: the program and its arguments, each kept whole however
// it is spelt (blanks, quotes, backslashes, empty words, "%" and "$").
QString execLine(const QString &program, const QStringList &arguments);
// The words of a line execLine made, the program first; nothing for any other text.
std::optional<QStringList> splitExecLine(const QString &line);

// An Environment= line setting each "NAME=value" assignment as it stands.
QString environmentLine(const QStringList &assignments);

// Exact text for the program's own keys, which systemd leaves alone.
QString encodeValue(const QString &text);
std::optional<QString> decodeValue(const QString &text);

} // namespace UnitText
