// The scripted station as a process of its own, serving until it is killed:
// the recorder benchmarks record from it without counting its work.
// Usage: icyserve BYTES_PER_SECOND METAINT INTERVALS_PER_SONG [MODE]
// MODE is one of
//   flood            unpaced, in large pieces
//   endless-header   an answer whose header never ends
//   flood-controls   a flood whose titles hold tabs and other control characters
//   slow-header      the header too at BYTES_PER_SECOND
//   web-page         a web page at /stream
//   bad-interval     "icy-metaint: abc"
//   endless-pls      /list.pls answered with a body that never ends
//   silent-pls       /list.pls never answered
//   no-bitrate       no "icy-br:" in the answer
// Prints the port it listens on, then a line break.
#include "support/icyserver.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const QString mode = args.value(4);
    const QStringList modes = {QString(),
                               QStringLiteral("flood"),
                               QStringLiteral("endless-header"),
                               QStringLiteral("flood-controls"),
                               QStringLiteral("slow-header"),
                               QStringLiteral("web-page"),
                               QStringLiteral("bad-interval"),
                               QStringLiteral("endless-pls"),
                               QStringLiteral("silent-pls"),
                               QStringLiteral("no-bitrate")};
    if (args.size() < 4 || args.size() > 5 || !modes.contains(mode)) {
        std::fprintf(stderr, "usage: icyserve BYTES_PER_SECOND METAINT INTERVALS_PER_SONG [%s]\n",
                     qPrintable(modes.mid(1).join(u'|')));
        return 2;
    }
    IcyServer server;
    server.bytesPerSecond = args[1].toLongLong();
    server.metaInt = args[2].toInt();
    const int intervals = args[3].toInt();
    server.songs = {{"Benchmark - First song", intervals}, {"Benchmark - Second song", intervals}};
    server.repeat = true;
    server.keepSent = false;
    server.flood = mode == u"flood" || mode == u"flood-controls";
    if (mode == u"flood-controls")
        server.songs = {
            {"Artist\tName - Song", intervals}, {"Clean - Song", intervals}, {"\x01\x1b - Esc", intervals}};
    if (mode == u"endless-header")
        server.fault = IcyServer::Fault::EndlessHeader;
    if (mode == u"slow-header")
        server.fault = IcyServer::Fault::SlowHeader;
    if (mode == u"web-page")
        server.pages["/stream"] = IcyServer::page("<!DOCTYPE html>\n<html><body>Moved</body></html>");
    if (mode == u"bad-interval")
        server.announcedInterval = "abc";
    if (mode == u"endless-pls")
        server.endlessPages = {"/list.pls"};
    if (mode == u"silent-pls")
        server.silentPages = {"/list.pls"};
    server.announceBitrate = mode != u"no-bitrate";
    if (!server.start())
        return 1;
    std::printf("%u\n", unsigned(server.port()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}
