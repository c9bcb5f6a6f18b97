#include "desktop/streamtitle.h"

StreamTitle StreamTitle::split(const QString &text)
{
    const QString separator = QStringLiteral(" - ");
    const qsizetype at = text.indexOf(separator);
    if (at < 0)
        return {QString(), text.trimmed()};
    return {text.left(at).trimmed(), text.mid(at + separator.size()).trimmed()};
}
