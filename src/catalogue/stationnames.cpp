#include "catalogue/stationnames.h"

namespace StationNames {

namespace {

QString clean(const QString &text, qsizetype limit)
{
    QString result = trimBlanks(text);
    stripFileNameChars(result);
    if (result.size() > limit)
        result.truncate(limit);
    return result;
}

} // namespace

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
    return clean(text, 60);
}

QString cleanShortName(const QString &text)
{
    return clean(text, 30);
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
