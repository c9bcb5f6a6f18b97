#include "schedule/triggerrecord.h"

#include <QStringList>

namespace {

const char *const dayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char *const monthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char *const weekNames[5] = {"first", "second", "third", "fourth", "last"};

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

QString describeTrigger(const TriggerRecord &record)
{
    using F = TriggerRecord::Field;
    const QString at = QStringLiteral("At ") + twoDigits(record.word(F::StartHour)) + u':' +
                       twoDigits(record.word(F::StartMinute));
    const QString begin = QString::number(record.word(F::BeginYear)) + u'-' +
                          twoDigits(record.word(F::BeginMonth)) + u'-' + twoDigits(record.word(F::BeginDay));
    const auto word = [&record](F field) { return quint32(quint16(record.word(field))); };
    switch (record.type()) {
    case TriggerRecord::Once:
        return at + QStringLiteral(" on ") + begin;
    case TriggerRecord::Daily:
        return at + u' ' +
               every(record.word(F::TypeWord0), QStringLiteral("every day"), QStringLiteral("days")) +
               QStringLiteral(", starting ") + begin;
    case TriggerRecord::Weekly:
        return at + QStringLiteral(" every ") + names(word(F::TypeWord1), dayNames, 7) +
               QStringLiteral(" of ") +
               every(record.word(F::TypeWord0), QStringLiteral("every week"), QStringLiteral("weeks")) +
               QStringLiteral(", starting ") + begin;
    case TriggerRecord::MonthlyDate: {
        QStringList days;
        const auto mask = quint32(record.longWord(F::TypeWord0));
        for (int day = 1; day <= 31; ++day) {
            if (mask & (1u << (day - 1)))
                days.append(QString::number(day));
        }
        return at + QStringLiteral(" on day ") + days.join(QStringLiteral(", ")) + QStringLiteral(" of ") +
               names(word(F::TypeWord2), monthNames, 12);
    }
    case TriggerRecord::MonthlyDow: {
        const int week = record.word(F::TypeWord0);
        const QString which = week >= 1 && week <= 5 ? QString::fromLatin1(weekNames[week - 1]) : QString();
        return at + QStringLiteral(" on the ") + which + u' ' + names(word(F::TypeWord1), dayNames, 7) +
               QStringLiteral(" of ") + names(word(F::TypeWord2), monthNames, 12);
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
