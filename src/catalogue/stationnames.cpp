#include "catalogue/stationnames.h"

namespace StationNames {

namespace {

QString clean(const QString &text, qsizetype limit)
{
    QString result = TrimBlanks(text);
    StripFileNameChars(result);
    if (result.size() > limit)
        result.truncate(limit);
    return result;
}

} // namespace

void StripFileNameChars(QString &text)
{
    static const QString removed[] = {
        QStringLiteral("/"), QStringLiteral("\\"), QStringLiteral(":"), QStringLiteral("*"), QStringLiteral("?"),
        QStringLiteral("''"), QStringLiteral("<"), QStringLiteral(">"), QStringLiteral("|"),
    };
    for (const QString &r : removed)
        text.remove(r);
}

QString CleanName(const QString &text)
{
    return clean(text, 60);
}

QString CleanShortName(const QString &text)
{
    return clean(text, 30);
}

QString TrimBlanks(const QString &text)
{
    return TrimBlanks(QStringView(text)).toString();
}

QStringView TrimBlanks(QStringView text)
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
