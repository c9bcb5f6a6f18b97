#include "schedule/triggerrecord.h"

#include <QDate>
#include <QStringList>

namespace {

const char *const dayNames[7] = {
    QT_TRANSLATE_NOOP("TriggerRecord", "Sun"), QT_TRANSLATE_NOOP("TriggerRecord", "Mon"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Tue"), QT_TRANSLATE_NOOP("TriggerRecord", "Wed"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Thu"), QT_TRANSLATE_NOOP("TriggerRecord", "Fri"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Sat")};
const char *const monthNames[12] = {
    QT_TRANSLATE_NOOP("TriggerRecord", "Jan"), QT_TRANSLATE_NOOP("TriggerRecord", "Feb"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Mar"), QT_TRANSLATE_NOOP("TriggerRecord", "Apr"),
    QT_TRANSLATE_NOOP("TriggerRecord", "May"), QT_TRANSLATE_NOOP("TriggerRecord", "Jun"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Jul"), QT_TRANSLATE_NOOP("TriggerRecord", "Aug"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Sep"), QT_TRANSLATE_NOOP("TriggerRecord", "Oct"),
    QT_TRANSLATE_NOOP("TriggerRecord", "Nov"), QT_TRANSLATE_NOOP("TriggerRecord", "Dec")};
const char *const weekNames[5] = {
    QT_TRANSLATE_NOOP("TriggerRecord", "first"), QT_TRANSLATE_NOOP("TriggerRecord", "second"),
    QT_TRANSLATE_NOOP("TriggerRecord", "third"), QT_TRANSLATE_NOOP("TriggerRecord", "fourth"),
    QT_TRANSLATE_NOOP("TriggerRecord", "last")};

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

QString names(quint32 mask, const char *const *table, int count)
{
    QStringList picked;
    for (int i = 0; i < count; ++i) {
        if (mask & (1u << i))
            picked.append(TriggerRecord::tr(table[i]));
    }
    return picked.join(QStringLiteral(", "));
}

} // namespace

TriggerRecord::TriggerRecord()
{
    setWord(RecordSize, byteCount);
}

std::optional<TriggerRecord> TriggerRecord::fromBytes(QByteArrayView bytes)
{
    if (bytes.size() != byteCount)
        return std::nullopt;
    TriggerRecord record;
    for (int i = 0; i < byteCount; ++i)
        record.m_bytes[size_t(i)] = static_cast<unsigned char>(bytes[i]);
    return record;
}

QByteArray TriggerRecord::bytes() const
{
    return QByteArray(reinterpret_cast<const char *>(m_bytes.data()), byteCount);
}

qint16 TriggerRecord::word(Field field) const
{
    const auto at = size_t(field);
    return qint16(quint16(m_bytes[at] | (m_bytes[at + 1] << 8)));
}

void TriggerRecord::setWord(Field field, qint16 value)
{
    const auto at = size_t(field);
    const auto bits = quint16(value);
    m_bytes[at] = static_cast<unsigned char>(bits & 0xFF);
    m_bytes[at + 1] = static_cast<unsigned char>(bits >> 8);
}

qint32 TriggerRecord::longWord(Field field) const
{
    const auto at = size_t(field);
    quint32 bits = 0;
    for (int i = 3; i >= 0; --i)
        bits = (bits << 8) | m_bytes[at + size_t(i)];
    return qint32(bits);
}

void TriggerRecord::setLongWord(Field field, qint32 value)
{
    const auto at = size_t(field);
    auto bits = quint32(value);
    for (size_t i = 0; i < 4; ++i, bits >>= 8)
        m_bytes[at + i] = static_cast<unsigned char>(bits & 0xFF);
}

QString TriggerRecord::problem() const
{
    const QDate begin(word(BeginYear), word(BeginMonth), word(BeginDay));
    const QDate end(word(EndYear), word(EndMonth), word(EndDay));
    const auto typeWord = [this](Field field) { return quint32(quint16(word(field))); };
    if (type() < Once || type() > AtLogon)
        return tr("The trigger's type %1 is unknown.").arg(type());
    if (!begin.isValid())
        return tr("The begin day %1-%2-%3 does not exist.")
            .arg(word(BeginYear))
            .arg(twoDigits(word(BeginMonth)), twoDigits(word(BeginDay)));
    if ((longWord(Flags) & FlagHasEndDate) && (!end.isValid() || end < begin))
        return tr("The end day %1-%2-%3 does not exist or comes before the begin day.")
            .arg(word(EndYear))
            .arg(twoDigits(word(EndMonth)), twoDigits(word(EndDay)));
    if (word(StartHour) < 0 || word(StartHour) > 23 || word(StartMinute) < 0 || word(StartMinute) > 59)
        return tr("The start time %1:%2 does not exist.")
            .arg(word(StartHour))
            .arg(twoDigits(word(StartMinute)));
    if (longWord(Duration) < 0 || longWord(Interval) < 0 ||
        (longWord(Interval) > 0 && longWord(Interval) >= longWord(Duration)))
        return tr("A repetition needs an interval shorter than its duration.");
    if (word(RandomInterval) < 0)
        return tr("The random delay cannot be below zero.");
    switch (type()) {
    case Daily:
    case Weekly:
        if (word(TypeWord0) < 1)
            return tr("A trigger repeats every one or more days or weeks.");
        if (type() == Weekly && (typeWord(TypeWord1) == 0 || typeWord(TypeWord1) > 0x7F))
            return tr("Choose at least one day of the week, and days of the week only.");
        break;
    case MonthlyDate:
        if (longWord(TypeWord0) == 0 || (quint32(longWord(TypeWord0)) >> 31))
            return tr("Choose at least one day of the month, and days 1 to 31 only.");
        if (typeWord(TypeWord2) == 0 || typeWord(TypeWord2) > 0xFFF)
            return tr("Choose at least one month, and months 1 to 12 only.");
        break;
    case MonthlyDow:
        if (word(TypeWord0) < 1 || word(TypeWord0) > 5)
            return tr("The week of the month is the first to the fourth, or the last.");
        if (typeWord(TypeWord1) == 0 || typeWord(TypeWord1) > 0x7F)
            return tr("Choose at least one day of the week, and days of the week only.");
        if (typeWord(TypeWord2) == 0 || typeWord(TypeWord2) > 0xFFF)
            return tr("Choose at least one month, and months 1 to 12 only.");
        break;
    default:
        break;
    }
    return {};
}

QString describeTrigger(const TriggerRecord &record)
{
    using F = TriggerRecord::Field;
    const QString at = twoDigits(record.word(F::StartHour)) + u':' + twoDigits(record.word(F::StartMinute));
    const QString begin = QString::number(record.word(F::BeginYear)) + u'-' +
                          twoDigits(record.word(F::BeginMonth)) + u'-' + twoDigits(record.word(F::BeginDay));
    const auto word = [&record](F field) { return quint32(quint16(record.word(field))); };
    const int interval = record.word(F::TypeWord0);
    switch (record.type()) {
    case TriggerRecord::Once:
        return TriggerRecord::tr("At %1 on %2").arg(at, begin);
    case TriggerRecord::Daily: {
        const QString every =
            interval == 1 ? TriggerRecord::tr("every day") : TriggerRecord::tr("every %1 days").arg(interval);
        return TriggerRecord::tr("At %1 %2, starting %3").arg(at, every, begin);
    }
    case TriggerRecord::Weekly: {
        const QString every = interval == 1 ? TriggerRecord::tr("every week")
                                            : TriggerRecord::tr("every %1 weeks").arg(interval);
        return TriggerRecord::tr("At %1 every %2 of %3, starting %4")
            .arg(at, names(word(F::TypeWord1), dayNames, 7), every, begin);
    }
    case TriggerRecord::MonthlyDate: {
        QStringList days;
        const auto mask = quint32(record.longWord(F::TypeWord0));
        for (int day = 1; day <= 31; ++day) {
            if (mask & (1u << (day - 1)))
                days.append(QString::number(day));
        }
        return TriggerRecord::tr("At %1 on day %2 of %3")
            .arg(at, days.join(QStringLiteral(", ")), names(word(F::TypeWord2), monthNames, 12));
    }
    case TriggerRecord::MonthlyDow: {
        const QString which =
            interval >= 1 && interval <= 5 ? TriggerRecord::tr(weekNames[interval - 1]) : QString();
        return TriggerRecord::tr("At %1 on the %2 %3 of %4")
            .arg(at, which, names(word(F::TypeWord1), dayNames, 7),
                 names(word(F::TypeWord2), monthNames, 12));
    }
    case TriggerRecord::OnIdle:
        return TriggerRecord::tr("When the computer is idle");
    case TriggerRecord::AtSystemStart:
        return TriggerRecord::tr("At system start");
    case TriggerRecord::AtLogon:
        return TriggerRecord::tr("At log on");
    default:
        return TriggerRecord::tr("Unknown trigger");
    }
}
