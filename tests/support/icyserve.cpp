// The scripted station as a process of its own, serving until it is killed:
// the recorder benchmark records from it without counting its work.
// Usage: icyserve BYTES_PER_SECOND METAINT INTERVALS_PER_SONG [flood|endless-header]
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
    if (args.size() < 4 || args.size() > 5 ||
        !(mode.isEmpty() || mode == u"flood" || mode == u"endless-header")) {
        std::fprintf(stderr,
                     "usage: icyserve BYTES_PER_SECOND METAINT INTERVALS_PER_SONG [flood|endless-header]\n");
        return 2;
    }
    IcyServer server;
    server.bytesPerSecond = args[1].toLongLong();
    server.metaInt = args[2].toInt();
    const int intervals = args[3].toInt();
    server.songs = {{"Benchmark - First song", intervals}, {"Benchmark - Second song", intervals}};
    server.repeat = true;
    server.keepSent = false;
    server.flood = mode == u"flood";
    if (mode == u"endless-header")
        server.fault = IcyServer::Fault::EndlessHeader;
    if (!server.start())
        return 1;
    std::printf("%u\n", unsigned(server.port()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}
