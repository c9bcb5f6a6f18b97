// The test station directory as a process of its own, serving until it is
// killed, so that the program can be tried against it: set the printed
// address as the directory server in Settings. A dozen named stations with
// icons, and COUNT generated ones after them.
// Usage: directoryserve [COUNT]
// Prints the server's address, then a line break.
#include "support/directoryserver.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QStringList>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

QByteArray roundIcon(const QColor &color)
{
    QImage image(48, 48, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(color);
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(4, 4, 40, 40);
    painter.setBrush(Qt::white);
    painter.drawEllipse(18, 18, 12, 12);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    bool counted = true;
    const int count = args.size() > 1 ? args[1].toInt(&counted) : 0;
    if (args.size() > 2 || !counted || count < 0) {
        std::fprintf(stderr, "usage: directoryserve [COUNT]\n");
        return 2;
    }
    DirectoryServer server;
    if (!server.start())
        return 1;
    struct Named
    {
        const char *name, *tags, *country, *language, *codec;
        int bitrate, votes, clicks;
        QColor color;
    };
    const Named named[] = {
        {"Alpenglow Jazz", "jazz,smooth jazz", "Austria", "german", "MP3", 128, 4210, 812, QColor(0x2a9d8f)},
        {"Harbour Lights FM", "pop,oldies", "Germany", "german", "AAC", 96, 3877, 640, QColor(0xe76f51)},
        {"Nordwind Klassik", "classical", "Germany", "german", "OGG", 160, 3502, 455, QColor(0x264653)},
        {"Radio Boulevard", "chanson,pop", "France", "french", "MP3", 192, 2954, 390, QColor(0xe9c46a)},
        {"Late Night Blues", "blues,jazz", "Austria", "english", "MP3", 128, 2411, 377, QColor(0x457b9d)},
        {"Metro News 24", "news,talk", "Germany", "german", "AAC+", 64, 2203, 1210, QColor(0xd62828)},
        {"Seaside Chill", "chillout,lounge", "France", "english", "AAC", 128, 1987, 290, QColor(0x8ecae6)},
        {"Vinyl Rock Radio", "rock,classic rock", "Germany", "german", "MP3", 320, 1760, 512,
         QColor(0x6d597a)},
        {"Bergland Volksmusik", "folk", "Austria", "german", "MP3", 128, 1422, 198, QColor(0x588157)},
        {"Electric Avenue", "electronic,dance", "France", "french", "OGG", 256, 1315, 601, QColor(0xff006e)},
        {"Campus Radio Linz", "college,indie", "Austria", "german", "MP3", 96, 988, 143, QColor(0xfb8500)},
        {"World Beats", "world,reggae", "Germany", "english", "AAC", 128, 702, 88, QColor(0x3a86ff)},
    };
    int i = 0;
    for (const Named &n : named) {
        const QString id = QString::number(++i).rightJustified(2, u'0');
        const QByteArray icon = "/icons/" + id.toLatin1() + ".png";
        server.files[icon] = roundIcon(n.color);
        server.stations.append({.uuid = u"5a1d0000-0000-4000-8000-0000000000"_s + id,
                                .name = QString::fromUtf8(n.name),
                                .url = u"http://stream.example/"_s + id + u".pls"_s,
                                .urlResolved = u"http://stream.example/"_s + id,
                                .homepage = u"https://stream.example/"_s + id,
                                .favicon = server.base() + QLatin1StringView(icon),
                                .tags = QString::fromUtf8(n.tags),
                                .country = QString::fromUtf8(n.country),
                                .language = QString::fromUtf8(n.language),
                                .codec = QString::fromUtf8(n.codec),
                                .bitrate = n.bitrate,
                                .votes = n.votes,
                                .clickCount = n.clicks});
    }
    server.stations.append(DirectoryServer::sampleStations(count));
    std::printf("%s\n", qPrintable(server.base()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}
