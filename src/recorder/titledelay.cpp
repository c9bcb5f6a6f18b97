#include "recorder/titledelay.h"

#include "base/settingsstore.h"

#include <QLocale>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// Stored with '.' whatever the user's locale; values that do not read as
// numbers are dropped.
QString numberText(double value)
{
    return QString::number(value, 'f', 3);
}

std::optional<double> readNumber(const QString &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value) || std::abs(value) > TitleDelay::Limit)
        return std::nullopt;
    return value;
}

} // namespace

TitleDelay::TitleDelay(const QString &station)
    : m_key(u"TitleDelay/"_s + QString::fromLatin1(QUrl::toPercentEncoding(station)))
{
    const QStringList seen = SettingsStore::getSetting(m_key + u"/Seen"_s).split(u' ', Qt::SkipEmptyParts);
    for (const QString &text : seen)
        if (const auto value = readNumber(text))
            m_seen.push_back(*value);
    if (m_seen.size() > static_cast<size_t>(Kept))
        m_seen.erase(m_seen.begin(), m_seen.end() - Kept);
    m_byHand = readNumber(SettingsStore::getSetting(m_key + u"/ByHand"_s));
}

double TitleDelay::seconds() const
{
    if (m_byHand)
        return *m_byHand;
    if (m_seen.size() < static_cast<size_t>(Needed))
        return 0;
    std::vector<double> sorted = m_seen;
    std::sort(sorted.begin(), sorted.end());
    const size_t middle = sorted.size() / 2;
    return sorted.size() % 2 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

TitleDelay::Source TitleDelay::source() const
{
    if (m_byHand)
        return Source::ByHand;
    return m_seen.size() < static_cast<size_t>(Needed) ? Source::NotYetKnown : Source::Learnt;
}

void TitleDelay::learn(double seconds)
{
    if (m_byHand || !std::isfinite(seconds) || std::abs(seconds) > Limit)
        return;
    m_seen.push_back(seconds);
    if (m_seen.size() > static_cast<size_t>(Kept))
        m_seen.erase(m_seen.begin());
    save();
}

void TitleDelay::setByHand(double seconds)
{
    m_byHand = std::isfinite(seconds) ? std::clamp(seconds, -Limit, Limit) : 0.0;
    save();
}

void TitleDelay::reset()
{
    m_seen.clear();
    m_byHand.reset();
    SettingsStore::removeSetting(m_key + u"/Seen"_s);
    SettingsStore::removeSetting(m_key + u"/ByHand"_s);
}

QString TitleDelay::text() const
{
    const QString value = QLocale().toString(seconds(), 'f', 1);
    switch (source()) {
    case Source::ByHand:
        return tr("Title delay: %1 s, set by hand").arg(value);
    case Source::Learnt:
        return tr("Title delay: %1 s, learnt").arg(value);
    case Source::NotYetKnown:
        break;
    }
    return tr("Title delay: not known yet (%1 of %2 songs cut at silence)").arg(m_seen.size()).arg(Needed);
}

void TitleDelay::save()
{
    QStringList seen;
    for (double value : m_seen)
        seen << numberText(value);
    SettingsStore::saveSetting(m_key + u"/Seen"_s, seen.join(u' '));
    if (m_byHand)
        SettingsStore::saveSetting(m_key + u"/ByHand"_s, numberText(*m_byHand));
    else
        SettingsStore::removeSetting(m_key + u"/ByHand"_s);
}
