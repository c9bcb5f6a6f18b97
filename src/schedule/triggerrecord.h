#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QCoreApplication>
#include <QString>

#include <array>
#include <optional>

// One trigger as the task store keeps it: a 46-byte little-endian record.
// The type-specific area is six bytes wide, so the random interval sits at
// byte 44; stores written by earlier versions depend on that layout.
class TriggerRecord
{
    Q_DECLARE_TR_FUNCTIONS(TriggerRecord)

public:
    static constexpr int byteCount = 46;

    // Byte offsets of the fields.
    enum Field : int
    {
        RecordSize = 0,
        Reserved1 = 2,
        BeginYear = 4,
        BeginMonth = 6,
        BeginDay = 8,
        EndYear = 10,
        EndMonth = 12,
        EndDay = 14,
        StartHour = 16,
        StartMinute = 18,
        Duration = 20,    // 32 bits, minutes
        Interval = 24,    // 32 bits, minutes
        Flags = 28,       // 32 bits
        TriggerType = 32, // 32 bits
        TypeWord0 = 36,   // also the low half of the monthly day mask
        TypeWord1 = 38,   // also the high half of the monthly day mask
        TypeWord2 = 40,
        Reserved2 = 42,
        RandomInterval = 44,
    };

    enum Type : qint32
    {
        Once = 0,
        Daily = 1,
        Weekly = 2,
        MonthlyDate = 3,
        MonthlyDow = 4,
        OnIdle = 5,
        AtSystemStart = 6,
        AtLogon = 7,
    };

    // Trigger flags.
    static constexpr qint32 FlagHasEndDate = 1;
    static constexpr qint32 FlagKillAtDurationEnd = 2;
    static constexpr qint32 FlagDisabled = 4;

    // Size field 46, everything else zero.
    TriggerRecord();
    // Exactly 46 bytes, or nothing.
    static std::optional<TriggerRecord> fromBytes(QByteArrayView bytes);

    QByteArray bytes() const;
    qint16 word(Field field) const;
    void setWord(Field field, qint16 value);
    qint32 longWord(Field field) const;
    void setLongWord(Field field, qint32 value);

    qint32 type() const { return longWord(TriggerType); }
    // Why a scheduler would refuse the record: a day or a time that does not
    // exist, an empty choice of days, weeks or months, an interval below one,
    // an unknown type. Empty when it would take it.
    QString problem() const;

    bool operator==(const TriggerRecord &other) const = default;

private:
    std::array<unsigned char, byteCount> m_bytes{};
};

// How a person reads the trigger: "At 21:15 on 2009-01-31", "At 07:00 every
// Mon, Fri of every week", ...
QString describeTrigger(const TriggerRecord &record);
