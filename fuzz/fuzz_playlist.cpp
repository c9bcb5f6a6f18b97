// Arbitrary downloaded text through the playlist choice: it must never fail,
// what it returns is always a piece of one line of the text, and the address
// a connection would use from it is either refused with a reason or free of
// control characters and of schemes other than the stream ones.
#include "catalogue/playlist.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromLatin1(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString address = Playlist::chooseStreamFromPlaylist(text);
    if (!text.contains(address) || address.contains(u'\n'))
        std::abort();
    const QString usable = Playlist::usableAddress(address);
    const QString problem = Playlist::streamAddressProblem(usable);
    if (problem.isEmpty() &&
        std::any_of(usable.begin(), usable.end(), [](QChar c) { return c.unicode() < 32; }))
        std::abort();
    return 0;
}
