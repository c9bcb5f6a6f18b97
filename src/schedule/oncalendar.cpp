#include "schedule/oncalendar.h"

#include <QList>

#include <bit>

namespace {

using F = TriggerRecord::Field;

const char *const dayAbbreviations[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

// The years a calendar can name.
constexpr int firstYear = 1970;
constexpr int lastYear = 2199;
constexpr quint32 allMonths = 0xFFF;
constexpr quint32 allDays = 0x7FFFFFFF;

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

// Bits first..last (1-based, inclusive).
quint32 range(int first, int last)
{
    quint32 mask = 0;
    for (int i = first; i <= last; ++i)
        mask |= 1u << (i - 1);
    return mask;
}

// "01,03,12" for the set bits (bit 0 is value 1), three or more in a row as
// "05..09", "*" when all `count` are set.
QString numberList(quint32 mask, int count)
{
    if (mask == range(1, count))
        return QStringLiteral("*");
    QStringList values;
    for (int i = 1; i <= count;) {
        if (!(mask & (1u << (i - 1)))) {
            ++i;
            continue;
        }
        int last = i;
        while (last < count && (mask & (1u << last)))
            ++last;
        if (last - i >= 2) {
            values.append(twoDigits(i) + QStringLiteral("..") + twoDigits(last));
        } else {
            for (int v = i; v <= last; ++v)
                values.append(twoDigits(v));
        }
        i = last + 1;
    }
    return values.join(u',');
}

QString dayNames(quint32 mask)
{
    QStringList names;
    for (int i = 0; i < 7; ++i) {
        if (mask & (1u << i))
            names.append(QString::fromLatin1(dayAbbreviations[i]));
    }
    return names.join(u',');
}

quint32 word(const TriggerRecord &record, F field)
{
    return quint16(record.word(field));
}

// A block of days: the years first..last, the months of the mask, and days
// firstDay..lastDay of each (a part of a month only when the block is one month).
struct Span
{
    int firstYear, lastYear;
    quint32 months;
    int firstDay = 1, lastDay = 31;

    bool wholeMonths() const { return firstDay == 1 && lastDay == 31; }
};

// The days from..to, inclusive, as at most five blocks.
QList<Span> spans(QDate from, QDate to)
{
    const int lastDay = to.day() == to.daysInMonth() ? 31 : to.day();
    QList<Span> blocks;
    if (from.year() == to.year() && from.month() == to.month()) {
        blocks.append({from.year(), from.year(), range(from.month(), from.month()), from.day(), lastDay});
    } else {
        blocks.append({from.year(), from.year(), range(from.month(), from.month()), from.day(), 31});
        if (from.year() == to.year()) {
            blocks.append({from.year(), from.year(), range(from.month() + 1, to.month() - 1)});
        } else {
            blocks.append({from.year(), from.year(), range(from.month() + 1, 12)});
            blocks.append({from.year() + 1, to.year() - 1, allMonths});
            blocks.append({to.year(), to.year(), range(1, to.month() - 1)});
        }
        blocks.append({to.year(), to.year(), range(to.month(), to.month()), 1, lastDay});
    }
    // Whole months of the same years join, then years of whole months.
    QList<Span> joined;
    for (const Span &block : blocks) {
        if (block.months == 0 || block.firstYear > block.lastYear)
            continue;
        if (!joined.isEmpty() && joined.last().wholeMonths() && block.wholeMonths() &&
            joined.last().firstYear == block.firstYear && joined.last().lastYear == block.lastYear)
            joined.last().months |= block.months;
        else
            joined.append(block);
    }
    QList<Span> result;
    for (const Span &block : joined) {
        const bool wholeYears = block.wholeMonths() && block.months == allMonths;
        if (!result.isEmpty() && wholeYears && result.last().wholeMonths() &&
            result.last().months == allMonths && result.last().lastYear + 1 == block.firstYear)
            result.last().lastYear = block.lastYear;
        else
            result.append(block);
    }
    return result;
}

QString years(const Span &span)
{
    if (span.firstYear == firstYear && span.lastYear == lastYear)
        return QStringLiteral("*");
    if (span.firstYear == span.lastYear)
        return QString::number(span.firstYear);
    return QString::number(span.firstYear) + QStringLiteral("..") + QString::number(span.lastYear);
}

// What a repeating trigger names within a month.
struct Pattern
{
    QString weekDays; // empty for any day of the week
    quint32 months = allMonths;
    quint32 days = allDays;
    bool lastWeek = false; // the last seven days of each month
};

std::optional<Pattern> patternOf(const TriggerRecord &record)
{
    Pattern pattern;
    switch (record.type()) {
    case TriggerRecord::Daily:
        if (record.word(F::TypeWord0) < 1)
            return std::nullopt;
        return pattern;
    case TriggerRecord::Weekly:
        pattern.weekDays = dayNames(word(record, F::TypeWord1));
        if (record.word(F::TypeWord0) < 1 || pattern.weekDays.isEmpty())
            return std::nullopt;
        return pattern;
    case TriggerRecord::MonthlyDate:
        pattern.months = word(record, F::TypeWord2) & allMonths;
        pattern.days = quint32(record.longWord(F::TypeWord0)) & allDays;
        if (pattern.months == 0 || pattern.days == 0)
            return std::nullopt;
        return pattern;
    case TriggerRecord::MonthlyDow: {
        const int week = record.word(F::TypeWord0);
        pattern.weekDays = dayNames(word(record, F::TypeWord1));
        pattern.months = word(record, F::TypeWord2) & allMonths;
        if (week < 1 || week > 5 || pattern.weekDays.isEmpty() || pattern.months == 0)
            return std::nullopt;
        pattern.lastWeek = week == 5;
        pattern.days = pattern.lastWeek ? allDays : range(week * 7 - 6, week * 7);
        return pattern;
    }
    default:
        return std::nullopt;
    }
}

// The pattern within one block; nothing when no day of the block matches.
std::optional<QString> dateFor(const Pattern &pattern, const Span &span)
{
    const quint32 months = pattern.months & span.months;
    if (months == 0)
        return std::nullopt;
    QString date = years(span) + u'-' + numberList(months, 12);
    if (span.wholeMonths()) {
        date += pattern.lastWeek ? QStringLiteral("~01..07") : u'-' + numberList(pattern.days, 31);
    } else {
        // A part of one month of one year: its days can be named.
        quint32 days = pattern.days;
        if (pattern.lastWeek) {
            const int length = QDate(span.firstYear, std::countr_zero(months) + 1, 1).daysInMonth();
            days = range(length - 6, length);
        }
        days &= range(span.firstDay, span.lastDay);
        if (days == 0)
            return std::nullopt;
        date += u'-' + numberList(days, 31);
    }
    return pattern.weekDays.isEmpty() ? date : pattern.weekDays + u' ' + date;
}

QDate dateAt(const TriggerRecord &record, F year, F month, F day)
{
    return QDate(record.word(year), record.word(month), record.word(day));
}

} // namespace

QStringList onCalendarsFor(const TriggerRecord &record, QDate today)
{
    const int hour = record.word(F::StartHour);
    const int minute = record.word(F::StartMinute);
    if (record.longWord(F::Flags) & TriggerRecord::FlagDisabled || hour < 0 || hour > 23 || minute < 0 ||
        minute > 59)
        return {};
    const QString time = u' ' + twoDigits(hour) + u':' + twoDigits(minute) + QStringLiteral(":00");
    const QDate begin = dateAt(record, F::BeginYear, F::BeginMonth, F::BeginDay);
    if (!begin.isValid() || begin.year() < firstYear || begin.year() > lastYear)
        return {};
    if (record.type() == TriggerRecord::Once)
        return {begin.toString(QStringLiteral("yyyy-MM-dd")) + time};

    const std::optional<Pattern> pattern = patternOf(record);
    if (!pattern)
        return {};
    // A begin day in the past bounds nothing: a timer starts nothing before today anyway.
    const QDate from = begin > today ? begin : QDate(firstYear, 1, 1);
    QDate to(lastYear, 12, 31);
    if (record.longWord(F::Flags) & TriggerRecord::FlagHasEndDate) {
        const QDate end = dateAt(record, F::EndYear, F::EndMonth, F::EndDay);
        if (!end.isValid() || end < begin || end < today)
            return {};
        to = qMin(to, end);
    }
    QStringList calendars;
    for (const Span &span : spans(from, to)) {
        if (const std::optional<QString> date = dateFor(*pattern, span))
            calendars.append(*date + time);
    }
    return calendars;
}

std::optional<QStringList> intervalCondition(const TriggerRecord &record)
{
    const bool daily = record.type() == TriggerRecord::Daily;
    if ((!daily && record.type() != TriggerRecord::Weekly) || record.word(F::TypeWord0) <= 1)
        return std::nullopt;
    QDate origin = dateAt(record, F::BeginYear, F::BeginMonth, F::BeginDay);
    if (!origin.isValid())
        return std::nullopt;
    if (!daily)
        origin = origin.addDays(-(origin.dayOfWeek() % 7));
    // Today's date as a day count, in the local zone the timer runs in: whole
    // days or weeks since the origin, taken modulo the interval.
    const QString script =
        QStringLiteral("test $(( ($(date -u -d \"$(date +%F)\" +%s) / 86400 - $1) / $2 % $3 )) -eq 0");
    return QStringList{QStringLiteral("/bin/sh"),
                       QStringLiteral("-c"),
                       script,
                       QStringLiteral("sh"),
                       QString::number(QDate(1970, 1, 1).daysTo(origin)),
                       daily ? QStringLiteral("1") : QStringLiteral("7"),
                       QString::number(record.word(F::TypeWord0))};
}
