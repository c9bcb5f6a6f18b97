#pragma once

#include <QString>
#include <QStringView>

// Text-to-value conversions shared by the settings, the catalogue and the
// recorder. Two families exist on purpose: the lenient leading-number reading
// (never fails) and the strict conversions that throw AppError.
namespace Convert {

// Skips leading blanks, then reads an optional sign, digits and an optional
// fraction up to the first character that does not fit. No digits gives 0.
double leadingNumber(QStringView text);

// leadingNumber rounded half to even into 32 bits; throws Overflow when it does not fit.
qint32 leadingInt32(QStringView text);

// The whole text must be a number (blanks around it allowed); rounded half to
// even. Throws TypeMismatch for anything else, Overflow when out of range.
qint32 toInt32(QStringView text);

// "True"/"False" in any letter case, or a number (0 is false). Anything else
// throws TypeMismatch.
bool toBoolean(QStringView text);

// How a Boolean is written to files and settings.
QString booleanText(bool value);

// Round half to even, as every integer conversion of the program does.
double roundHalfEven(double value);

} // namespace Convert
