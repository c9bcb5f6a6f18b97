#include "schedule/unitnames.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QStringView>

namespace {

bool keptAsIs(char c, bool first)
{
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    return c == ':' || c == '_' || (c == '.' && !first);
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

QString escapeBytes(const QByteArray &bytes, bool atStart)
{
    QString escaped;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '/')
            escaped += u'-';
        else if (keptAsIs(c, atStart && i == 0))
            escaped += QLatin1Char(c);
        else
            escaped +=
                QStringLiteral("\\x%1").arg(uint(static_cast<unsigned char>(c)), 2, 16, QLatin1Char('0'));
    }
    return escaped;
}

const QString shortMark = QStringLiteral("\\x_");

} // namespace

QString UnitNames::escape(const QString &name)
{
    return escapeBytes(name.toUtf8(), true);
}

QString UnitNames::fitted(const QString &name, int room)
{
    const QString escaped = escape(name);
    if (escaped.size() <= room)
        return escaped;
    const QString mark =
        shortMark + QString::fromLatin1(
                        QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex().left(16));
    QString cut;
    for (qsizetype at = 0; at < name.size();) {
        // One character: a surrogate pair stays whole.
        const qsizetype length = name[at].isHighSurrogate() && at + 1 < name.size() ? 2 : 1;
        const QString piece = escapeBytes(QStringView(name).sliced(at, length).toUtf8(), at == 0);
        if (cut.size() + piece.size() + mark.size() > room)
            break;
        cut += piece;
        at += length;
    }
    return cut + mark;
}

bool UnitNames::isShortened(const QString &unitName)
{
    return unitName.contains(shortMark);
}

std::optional<QString> UnitNames::unescape(const QString &unitName)
{
    const QByteArray text = unitName.toLatin1();
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '-') {
            bytes += '/';
        } else if (c == '\\' && i + 3 < text.size() && text[i + 1] == 'x') {
            const int high = hexValue(text[i + 2]);
            const int low = hexValue(text[i + 3]);
            if (high < 0 || low < 0)
                return std::nullopt;
            bytes += char(high * 16 + low);
            i += 3;
        } else {
            bytes += c;
        }
    }
    const QString name = QString::fromUtf8(bytes);
    // Only the one spelling Escape makes maps back; anything else is not ours.
    if (name.isEmpty() || escape(name) != unitName)
        return std::nullopt;
    return name;
}
