#include "catalogue/playlist.h"

#include "base/apperror.h"
#include "base/conversions.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace Playlist {

namespace {

// Reads a whole number into target; a text that is not one leaves target as it was.
void readNumber(const QString &text, qint32 &target)
{
    try {
        target = Convert::toInt32(text);
    } catch (const AppError &) {
    }
}

// The second "="-piece of a line, if it has one.
bool secondPiece(const QString &line, QString &target)
{
    const QStringList pieces = line.split(u'=');
    if (pieces.size() < 2)
        return false;
    target = pieces[1];
    return true;
}

} // namespace

bool isDirectoryReference(const QString &url)
{
    return url.contains(u"ssrn#", Qt::CaseInsensitive);
}

QString directoryNumber(const QString &url)
{
    if (url.size() < 9)
        throw AppError::invalidArgument();
    return url.mid(5, url.size() - 9);
}

QString playlistServiceAddress(const QString &number)
{
    QString address =
        serviceHost + QStringLiteral("/sbin/shoutcast-playlist.pls?rn=%ssrn%&file=filename.pls");
    return address.replace(QStringLiteral("%ssrn%"), number);
}

QString chooseStreamFromPlaylist(const QString &text)
{
    const QStringList lines = text.split(u'\n');
    if (lines.size() < 4)
        return {};
    qint32 entries = 0;
    QString count;
    if (lines[1].split(u'=')[0].contains(u"NumberOfEnt", Qt::CaseInsensitive) && secondPiece(lines[1], count))
        readNumber(count, entries);

    // Entry k needs the line after its Length line (index 3k + 2); later
    // entries are all skipped, so the walk stops at the last that has one.
    const qint32 lastEntry = std::min<qint32>(entries, static_cast<qint32>((lines.size() - 3) / 3));
    // The figures survive from one entry to the next: a figure that cannot be
    // read keeps the previous entry's value, as the choice has always done.
    qint32 maximum = 0;
    qint32 listeners = 0;
    QString fallback;
    for (qint32 k = 1; k <= lastEntry; ++k) {
        const QString &fileLine = lines[3 * k - 1];
        if (k == 1)
            secondPiece(fileLine, fallback);
        QString title;
        if (!secondPiece(lines[3 * k], title))
            continue;
        const QString figures = title.split(u')')[0];
        if (figures.indexOf(u'/') < 1)
            continue;
        const QStringList slashPieces = figures.split(u'/');
        readNumber(slashPieces[1], maximum);
        const QStringList dashPieces = slashPieces[0].split(QStringLiteral(" - "));
        if (dashPieces.size() >= 2)
            readNumber(dashPieces[1], listeners);
        if (listeners * 1.1 < maximum) {
            QString address;
            return secondPiece(fileLine, address) ? address : fallback;
        }
    }
    return fallback;
}

QString usableAddress(const QString &chosen)
{
    qsizetype end = chosen.size();
    while (end > 0 && (chosen[end - 1] == u'\r' || chosen[end - 1] == u'\n' || chosen[end - 1] == u' '))
        --end;
    return chosen.first(end);
}

QString streamAddressProblem(const QString &address)
{
    static const QRegularExpression scheme(QStringLiteral("^([A-Za-z][A-Za-z0-9+.-]*)://"));
    const QRegularExpressionMatch match = scheme.match(address);
    if (match.hasMatch()) {
        const QString name = match.captured(1).toLower();
        if (name != u"http" && name != u"https" && name != u"icyx")
            return QCoreApplication::translate("Playlist",
                                               "\"%1\" is not a stream address: only http://, https:// and "
                                               "icyx:// addresses name a stream, not %2://.")
                .arg(address, name);
    }
    if (std::any_of(address.begin(), address.end(),
                    [](QChar c) { return c.category() == QChar::Other_Control; }))
        return QCoreApplication::translate("Playlist",
                                           "\"%1\" is not a stream address: it holds a control character.")
            .arg(
                QString(address).replace(QRegularExpression(QStringLiteral("\\p{Cc}")), QStringLiteral("?")));
    return {};
}

} // namespace Playlist
