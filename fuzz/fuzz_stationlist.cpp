// Arbitrary bytes as an imported station list: a read gives stations or a
// reason, never both and never neither; whatever it gives keeps the list's
// bounds and holds internet addresses only, and writing it back out in every
// format never fails.
#include "catalogue/stationlistfile.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const StationListFile::ReadResult result = StationListFile::read(bytes);
    if (result.entries.isEmpty() == result.error.isEmpty())
        std::abort();
    if (result.entries.size() > StationListFile::maxEntries || result.refused < 0)
        std::abort();
    for (const StationListEntry &entry : result.entries) {
        if (!StationListFile::isInternetAddress(entry.address) ||
            entry.address.size() > StationListFile::maxAddressLength)
            std::abort();
    }
    using enum StationListFile::Format;
    for (const StationListFile::Format format : {M3u8, Pls, Xspf}) {
        if (!result.entries.isEmpty() && StationListFile::write(format, result.entries).isEmpty())
            std::abort();
    }
    return 0;
}
