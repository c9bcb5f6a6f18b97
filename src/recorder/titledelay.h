#pragma once

#include <QCoreApplication>
#include <QString>

#include <optional>
#include <vector>

// How late a station's title changes come after its songs change, in
// seconds (negative: early). Learnt from the cuts made at silence: once
// three are known, their median; the last five count. A value set by hand
// replaces what is learnt until the delay is reset. Kept per station in the
// settings, so it is known the next time the station is recorded.
class TitleDelay
{
    Q_DECLARE_TR_FUNCTIONS(TitleDelay)

public:
    static constexpr int Needed = 3;
    static constexpr int Kept = 5;
    // Delays beyond this are not a station's habit but a mistaken cut.
    static constexpr double Limit = 15;

    enum class Source
    {
        NotYetKnown,
        Learnt,
        ByHand
    };

    // `station` names the station in the settings (its name or address).
    explicit TitleDelay(const QString &station);

    // The delay windows are centred with; 0 while not yet known.
    double seconds() const;
    Source source() const;

    // One cut at silence: the title change's time minus the cut's.
    void learn(double seconds);
    // Clamped to the limit.
    void setByHand(double seconds);
    // Forgets what was learnt or set: learning starts again.
    void reset();

    // "Title delay: 2.4 s, learnt", for the recorder window.
    QString text() const;

private:
    void save();

    QString m_key;
    std::vector<double> m_seen;
    std::optional<double> m_byHand;
};
