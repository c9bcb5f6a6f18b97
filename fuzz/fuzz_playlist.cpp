// Arbitrary downloaded text through the playlist choice: it must never fail,
// and what it returns is always a piece of one line of the text.
#include "catalogue/playlist.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromLatin1(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString address = Playlist::chooseStreamFromPlaylist(text);
    if (!text.contains(address) || address.contains(u'\n'))
        std::abort();
    return 0;
}
