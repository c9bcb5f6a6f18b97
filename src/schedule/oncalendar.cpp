#include "schedule/oncalendar.h"

#include <QDate>
#include <QStringList>

namespace {

using F = TriggerRecord::Field;

const char *const dayAbbreviations[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

// "01,03,12" for the set bits (bit 0 is value 1), "*" when all `count` are set.
std::optional<QString> numberList(quint32 mask, int count)
{
    const quint32 all = count == 32 ? ~0u : (1u << count) - 1;
    mask &= all;
    if (mask == 0)
        return std::nullopt;
    if (mask == all)
        return QStringLiteral("*");
    QStringList values;
    for (int i = 0; i < count; ++i) {
        if (mask & (1u << i))
            values.append(twoDigits(i + 1));
    }
    return values.join(u',');
}

std::optional<QString> dayNames(quint32 mask)
{
    QStringList names;
    for (int i = 0; i < 7; ++i) {
        if (mask & (1u << i))
            names.append(QString::fromLatin1(dayAbbreviations[i]));
    }
    if (names.isEmpty())
        return std::nullopt;
    return names.join(u',');
}

quint32 word(const TriggerRecord &record, F field)
{
    return quint16(record.word(field));
}

} // namespace

std::optional<QString> onCalendarFor(const TriggerRecord &record)
{
    const int hour = record.word(F::StartHour);
    const int minute = record.word(F::StartMinute);
    if (record.longWord(F::Flags) & TriggerRecord::FlagDisabled || hour < 0 || hour > 23 || minute < 0 ||
        minute > 59)
        return std::nullopt;
    const QString time = twoDigits(hour) + u':' + twoDigits(minute) + QStringLiteral(":00");

    switch (record.type()) {
    case TriggerRecord::Once: {
        const QDate day(record.word(F::BeginYear), record.word(F::BeginMonth), record.word(F::BeginDay));
        if (!day.isValid() || day.year() < 1970 || day.year() > 2199)
            return std::nullopt;
        return day.toString(QStringLiteral("yyyy-MM-dd")) + u' ' + time;
    }
    case TriggerRecord::Daily:
        if (record.word(F::TypeWord0) != 1)
            return std::nullopt;
        return QStringLiteral("*-*-* ") + time;
    case TriggerRecord::Weekly: {
        const std::optional<QString> days = dayNames(word(record, F::TypeWord1));
        if (record.word(F::TypeWord0) != 1 || !days)
            return std::nullopt;
        return *days + QStringLiteral(" *-*-* ") + time;
    }
    case TriggerRecord::MonthlyDate: {
        const std::optional<QString> months = numberList(word(record, F::TypeWord2), 12);
        const std::optional<QString> days = numberList(quint32(record.longWord(F::TypeWord0)), 31);
        if (!months || !days)
            return std::nullopt;
        return QStringLiteral("*-") + *months + u'-' + *days + u' ' + time;
    }
    case TriggerRecord::MonthlyDow: {
        static const char *const weeks[5] = {"-01..07", "-08..14", "-15..21", "-22..28", "~01..07"};
        const int week = record.word(F::TypeWord0);
        const std::optional<QString> days = dayNames(word(record, F::TypeWord1));
        const std::optional<QString> months = numberList(word(record, F::TypeWord2), 12);
        if (week < 1 || week > 5 || !days || !months)
            return std::nullopt;
        return *days + QStringLiteral(" *-") + *months + QLatin1StringView(weeks[week - 1]) + u' ' + time;
    }
    default:
        return std::nullopt;
    }
}
