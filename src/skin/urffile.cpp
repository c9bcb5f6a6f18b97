#include "skin/urffile.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringDecoder>

namespace {

const QString signature = QStringLiteral("URF 1");
const QString headerEnd = QStringLiteral("---");
// As skin files name them; the chooser shows them translated.
const char *const themeNames[] = {QT_TRANSLATE_NOOP("UrfSkin", "Pale Blue"),
                                  QT_TRANSLATE_NOOP("UrfSkin", "Black Night")};

UrfSkin failed(UrfSkin::Status status)
{
    UrfSkin skin;
    skin.status = status;
    return skin;
}

// Text files hold no control characters other than tabs, line and page breaks.
bool looksBinary(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() < 0x20 && c != u'\t' && c != u'\n' && c != u'\r' && c != u'\f')
            return true;
    }
    return false;
}

int themeIndex(const QString &value)
{
    for (int i = 0; i < 2; ++i) {
        if (value.compare(QLatin1StringView(themeNames[i]), Qt::CaseInsensitive) == 0 ||
            value == QString::number(i))
            return i;
    }
    return UrfSkin::NoTheme;
}

} // namespace

UrfSkin UrfSkin::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(Unreadable);
    // Reading one byte past the limit tells a huge file even where the size is
    // not known in advance (a pipe or a device).
    const QByteArray bytes = file.read(maxBytes + 1);
    if (bytes.size() > maxBytes)
        return failed(TooLarge);
    if (file.error() != QFileDevice::NoError)
        return failed(Unreadable);
    return parse(bytes);
}

UrfSkin UrfSkin::parse(const QByteArray &bytes)
{
    if (bytes.size() > maxBytes)
        return failed(TooLarge);
    if (bytes.trimmed().isEmpty())
        return failed(Empty);
    QStringDecoder decode(QStringConverter::Utf8);
    const QString text = decode(bytes);
    if (decode.hasError() || looksBinary(text))
        return failed(Binary);

    UrfSkin skin;
    qsizetype pos = 0;
    const auto nextLine = [&text, &pos] {
        qsizetype end = text.indexOf(u'\n', pos);
        if (end < 0)
            end = text.size();
        const QString line = text.mid(pos, end - pos).trimmed();
        pos = end + 1;
        return line;
    };

    QString first = nextLine();
    if (first.startsWith(QChar(0xFEFF)))
        first = first.mid(1).trimmed();
    if (first != signature)
        return failed(NotASkin);
    bool headerEnded = false;
    while (pos < text.size()) {
        const QString line = nextLine();
        if (line == headerEnd) {
            headerEnded = true;
            break;
        }
        const qsizetype colon = line.indexOf(u':');
        if (colon < 0)
            continue;
        const QString key = line.left(colon).trimmed().toLower();
        const QString value = line.mid(colon + 1).trimmed();
        if (key == u"name")
            skin.name = value;
        else if (key == u"author")
            skin.author = value;
        else if (key == u"theme")
            skin.theme = themeIndex(value);
    }
    if (!headerEnded || skin.name.isEmpty())
        return failed(NotASkin);
    skin.sheet = pos < text.size() ? text.mid(pos) : QString();
    skin.status = skin.sheet.trimmed().isEmpty() ? BadSheet : Ok;
    return skin;
}

QString UrfSkin::themeName(int theme)
{
    return theme == 0 || theme == 1 ? QCoreApplication::translate("UrfSkin", themeNames[theme]) : QString();
}
