#include "recorder/streamformat.h"

#include <array>

namespace {

constexpr std::array AllFormats{StreamFormat::Mp3, StreamFormat::Aac, StreamFormat::Ogg};

} // namespace

StreamFormat formatFromContentType(QStringView contentType)
{
    const QStringView type = contentType.left(contentType.indexOf(u';')).trimmed();
    for (const auto aac : {u"audio/aac", u"audio/aacp", u"audio/x-aac"})
        if (type.compare(aac, Qt::CaseInsensitive) == 0)
            return StreamFormat::Aac;
    for (const auto ogg : {u"application/ogg", u"audio/ogg"})
        if (type.compare(ogg, Qt::CaseInsensitive) == 0)
            return StreamFormat::Ogg;
    return StreamFormat::Mp3;
}

StreamFormat formatFromHeader(QStringView header)
{
    static constexpr QStringView Key = u"content-type:";
    for (const QStringView line : header.tokenize(u"\r\n")) {
        if (line.startsWith(Key, Qt::CaseInsensitive))
            return formatFromContentType(line.sliced(Key.size()));
    }
    return StreamFormat::Mp3;
}

QString formatExtension(StreamFormat format)
{
    switch (format) {
    case StreamFormat::Aac:
        return QStringLiteral(".aac");
    case StreamFormat::Ogg:
        return QStringLiteral(".ogg");
    case StreamFormat::Mp3:
        break;
    }
    return QStringLiteral(".mp3");
}

QString formatName(StreamFormat format)
{
    switch (format) {
    case StreamFormat::Aac:
        return QStringLiteral("AAC");
    case StreamFormat::Ogg:
        return QStringLiteral("Ogg");
    case StreamFormat::Mp3:
        break;
    }
    return QStringLiteral("MP3");
}

QString templateWithExtension(const QString &templ, StreamFormat format)
{
    for (const StreamFormat known : AllFormats) {
        const QString ending = formatExtension(known);
        if (templ.endsWith(ending, Qt::CaseInsensitive)) {
            if (known == format)
                return templ;
            return templ.left(templ.size() - ending.size()) + formatExtension(format);
        }
    }
    return templ + formatExtension(format);
}
