// Arbitrary catalogue files through the catalogue reader: the bytes are read
// as the file's UTF-16 text. Reading never throws, never keeps more stations
// than the text has lines, and says why whenever it stops early.
#include "catalogue/catalogue.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QString text(qsizetype(size / 2), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
        text[i] = QChar(char16_t(data[2 * i] | (data[2 * i + 1] << 8)));
    Catalogue catalogue;
    const QString problem = catalogue.read(text);
    const qsizetype lines = text.count(QStringLiteral("\r\n")) + 1;
    if (catalogue.stationCount() > lines)
        std::abort();
    // A text that is read whole has its separator line and no station cut short.
    if (problem.isEmpty() && (text.isEmpty() || !text.contains(QStringLiteral("\r\n"))))
        std::abort();
    for (int i = 1; i <= catalogue.stationCount(); ++i) {
        if (catalogue.at(i).Name.contains(QStringLiteral("\r\n")))
            std::abort();
    }
    return 0;
}
