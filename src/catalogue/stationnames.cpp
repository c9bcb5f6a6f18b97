#include "catalogue/stationnames.h"

#include <algorithm>

namespace StationNames {

void stripFileNameChars(QString &text)
{
    static const QString removed[] = {
        QStringLiteral("/"), QStringLiteral("\\"), QStringLiteral(":"), QStringLiteral("*"), QStringLiteral("?"),
        QStringLiteral("''"), QStringLiteral("<"), QStringLiteral(">"), QStringLiteral("|"),
    };
    for (const QString &r : removed)
        text.remove(r);
}

QString cleanName(const QString &text)
{
    QString result = trimBlanks(text);
    stripFileNameChars(result);
    if (result.size() > 60)
        result.truncate(60);
    return result;
}

QString fileNamePart(const QString &text, qsizetype limit)
{
    QString result = withoutControlChars(text);
    stripFileNameChars(result);
    qsizetype dots = 0;
    while (dots < result.size() && (result[dots] == u'.' || result[dots] == u' '))
        ++dots;
    qsizetype end = std::min(result.size(), dots + limit);
    // A cut between the two halves of a character would leave half of it.
    if (end < result.size() && end > dots && result[end - 1].isHighSurrogate())
        --end;
    result = trimBlanks(QStringView(result).sliced(dots, end - dots)).toString();
    return result.isEmpty() ? QStringLiteral("_") : result;
}

QString cleanShortName(const QString &text)
{
    return fileNamePart(text, 30);
}

QString withoutControlChars(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (c == u'\t' || c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f')
            result += u' ';
        else if (c.category() != QChar::Other_Control)
            result += c;
    }
    return result;
}

QString trimBlanks(const QString &text)
{
    return trimBlanks(QStringView(text)).toString();
}

QStringView trimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.sliced(begin, end - begin);
}

} // namespace StationNames
