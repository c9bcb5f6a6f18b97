#include "recorder/songtags.h"

namespace {

QString withoutControls(QStringView text)
{
    QString safe;
    safe.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            safe += c;
            safe += text[++i];
        } else if (c == u'\t' || c == u'\n' || c == u'\r') {
            safe += u' ';
        } else if (c.category() != QChar::Other_Control && !c.isSurrogate()) {
            safe += c;
        }
    }
    return safe;
}

QString meaningfulPart(QStringView part)
{
    const QString safe = part.trimmed().toString();
    for (const QChar c : safe)
        if (c != u'-' && !c.isSpace())
            return safe;
    return {};
}

} // namespace

QString tagSafeText(const QString &text)
{
    return withoutControls(text).trimmed();
}

TitleParts splitStreamTitle(const QString &streamTitle)
{
    const QString safe = withoutControls(streamTitle);
    const qsizetype separator = safe.indexOf(u" - ");
    if (separator < 0)
        return {{}, meaningfulPart(safe)};
    return {meaningfulPart(QStringView(safe).left(separator)),
            meaningfulPart(QStringView(safe).sliced(separator + 3))};
}

void SongTags::setStreamTitle(const QString &streamTitle)
{
    const TitleParts parts = splitStreamTitle(streamTitle);
    artist = parts.artist;
    title = parts.title;
}
