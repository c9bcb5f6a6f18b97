#include "schedule/triggerrecord.h"

#include <QStringList>

namespace {

const char *const DayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char *const MonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char *const WeekNames[5] = {"first", "second", "third", "fourth", "last"};

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

QString names(quint32 mask, const char *const *table, int count)
{
    QStringList picked;
    for (int i = 0; i < count; ++i) {
        if (mask & (1u << i))
            picked.append(QString::fromLatin1(table[i]));
    }
    return picked.join(QStringLiteral(", "));
}

QString every(int interval, const QString &one, const QString &many)
{
    return interval == 1 ? one : QStringLiteral("every %1 %2").arg(interval).arg(many);
}

} // namespace

TriggerRecord::TriggerRecord()
{
    SetWord(RecordSize, Size);
}

std::optional<TriggerRecord> TriggerRecord::FromBytes(QByteArrayView bytes)
{
    if (bytes.size() != Size)
        return std::nullopt;
    TriggerRecord record;
    for (int i = 0; i < Size; ++i)
        record.m_bytes[size_t(i)] = static_cast<unsigned char>(bytes[i]);
    return record;
}

QByteArray TriggerRecord::Bytes() const
{
    return QByteArray(reinterpret_cast<const char *>(m_bytes.data()), Size);
}

qint16 TriggerRecord::Word(Field field) const
{
    const auto at = size_t(field);
    return qint16(quint16(m_bytes[at] | (m_bytes[at + 1] << 8)));
}

void TriggerRecord::SetWord(Field field, qint16 value)
{
    const auto at = size_t(field);
    const auto bits = quint16(value);
    m_bytes[at] = static_cast<unsigned char>(bits & 0xFF);
    m_bytes[at + 1] = static_cast<unsigned char>(bits >> 8);
}

qint32 TriggerRecord::Long(Field field) const
{
    const auto at = size_t(field);
    quint32 bits = 0;
    for (int i = 3; i >= 0; --i)
        bits = (bits << 8) | m_bytes[at + size_t(i)];
    return qint32(bits);
}

void TriggerRecord::SetLong(Field field, qint32 value)
{
    const auto at = size_t(field);
    auto bits = quint32(value);
    for (size_t i = 0; i < 4; ++i, bits >>= 8)
        m_bytes[at + i] = static_cast<unsigned char>(bits & 0xFF);
}

QString DescribeTrigger(const TriggerRecord &record)
{
    using F = TriggerRecord::Field;
    const QString at = QStringLiteral("At ") + twoDigits(record.Word(F::StartHour)) + u':' +
                       twoDigits(record.Word(F::StartMinute));
    const QString begin = QString::number(record.Word(F::BeginYear)) + u'-' +
                          twoDigits(record.Word(F::BeginMonth)) + u'-' + twoDigits(record.Word(F::BeginDay));
    const auto word = [&record](F field) { return quint32(quint16(record.Word(field))); };
    switch (record.Type()) {
    case TriggerRecord::Once:
        return at + QStringLiteral(" on ") + begin;
    case TriggerRecord::Daily:
        return at + u' ' +
               every(record.Word(F::TypeWord0), QStringLiteral("every day"), QStringLiteral("days")) +
               QStringLiteral(", starting ") + begin;
    case TriggerRecord::Weekly:
        return at + QStringLiteral(" every ") + names(word(F::TypeWord1), DayNames, 7) +
               QStringLiteral(" of ") +
               every(record.Word(F::TypeWord0), QStringLiteral("every week"), QStringLiteral("weeks")) +
               QStringLiteral(", starting ") + begin;
    case TriggerRecord::MonthlyDate: {
        QStringList days;
        const auto mask = quint32(record.Long(F::TypeWord0));
        for (int day = 1; day <= 31; ++day) {
            if (mask & (1u << (day - 1)))
                days.append(QString::number(day));
        }
        return at + QStringLiteral(" on day ") + days.join(QStringLiteral(", ")) + QStringLiteral(" of ") +
               names(word(F::TypeWord2), MonthNames, 12);
    }
    case TriggerRecord::MonthlyDow: {
        const int week = record.Word(F::TypeWord0);
        const QString which = week >= 1 && week <= 5 ? QString::fromLatin1(WeekNames[week - 1]) : QString();
        return at + QStringLiteral(" on the ") + which + u' ' + names(word(F::TypeWord1), DayNames, 7) +
               QStringLiteral(" of ") + names(word(F::TypeWord2), MonthNames, 12);
    }
    case TriggerRecord::OnIdle:
        return QStringLiteral("When the computer is idle");
    case TriggerRecord::AtSystemStart:
        return QStringLiteral("At system start");
    case TriggerRecord::AtLogon:
        return QStringLiteral("At log on");
    default:
        return QStringLiteral("Unknown trigger");
    }
}
