#include "catalogue/station.h"

Station Station::newStation()
{
    Station s;
    s.Format = QStringLiteral("mp3");
    s.OutputFile = defaultOutputFile;
    s.SingleSong = true;
    return s;
}
