#include "base/conversions.h"

#include "base/apperror.h"

#include <cmath>
#include <limits>

namespace Convert {

namespace {

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

qint32 toInt32Checked(double value)
{
    const double rounded = roundHalfEven(value);
    if (!std::isfinite(rounded) || rounded < std::numeric_limits<qint32>::min() ||
        rounded > std::numeric_limits<qint32>::max())
        throw AppError::overflow();
    return static_cast<qint32>(rounded);
}

} // namespace

double roundHalfEven(double value)
{
    return std::nearbyint(value); // the default rounding mode is to nearest, ties to even
}

double leadingNumber(QStringView text)
{
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n && isBlank(text[i]))
        ++i;
    const qsizetype start = i;
    if (i < n && (text[i] == u'-' || text[i] == u'+'))
        ++i;
    bool digits = false;
    while (i < n && text[i].isDigit() && text[i].unicode() < 128) {
        ++i;
        digits = true;
    }
    if (i < n && text[i] == u'.') {
        ++i;
        while (i < n && text[i].unicode() >= u'0' && text[i].unicode() <= u'9') {
            ++i;
            digits = true;
        }
    }
    if (!digits)
        return 0;
    bool ok = false;
    const double value = text.mid(start, i - start).toDouble(&ok);
    return ok ? value : 0;
}

qint32 leadingInt32(QStringView text)
{
    return toInt32Checked(leadingNumber(text));
}

qint32 toInt32(QStringView text)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok)
        throw AppError::typeMismatch();
    return toInt32Checked(value);
}

bool toBoolean(QStringView text)
{
    const QStringView t = text.trimmed();
    if (t.compare(u"True", Qt::CaseInsensitive) == 0)
        return true;
    if (t.compare(u"False", Qt::CaseInsensitive) == 0)
        return false;
    bool ok = false;
    const double value = t.toDouble(&ok);
    if (!ok)
        throw AppError::typeMismatch();
    return value != 0;
}

QString booleanText(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

} // namespace Convert
