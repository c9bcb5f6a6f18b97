#include "base/settingsstore.h"

#include "base/conversions.h"

#include <QSettings>

namespace {

const QString application = QStringLiteral("Tunecatch");
const QString section = QStringLiteral("CONFIG");

QString address(const QString &key)
{
    return section + u'/' + key;
}

QSettings store()
{
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, application, application);
}

} // namespace

QString SettingsStore::getSetting(const QString &key, const QString &defaultValue)
{
    const QVariant value = store().value(address(key));
    return value.isValid() ? value.toString() : defaultValue;
}

void SettingsStore::saveSetting(const QString &key, const QString &value)
{
    QSettings settings = store();
    settings.setValue(address(key), value);
    settings.sync();
}

void SettingsStore::removeSetting(const QString &key)
{
    QSettings settings = store();
    settings.remove(address(key));
    settings.sync();
}

qint32 SettingsStore::getNumber(const QString &key, qint32 defaultValue)
{
    return Convert::leadingInt32(getSetting(key, QString::number(defaultValue)));
}

void SettingsStore::saveNumber(const QString &key, qint32 value)
{
    saveSetting(key, QString::number(value));
}

bool SettingsStore::getBoolean(const QString &key, bool defaultValue)
{
    return Convert::toBoolean(getSetting(key, Convert::booleanText(defaultValue)));
}

void SettingsStore::saveBoolean(const QString &key, bool value)
{
    saveSetting(key, Convert::booleanText(value));
}
