#include "base/settingsstore.h"

#include "base/conversions.h"

#include <QSettings>

namespace {

const QString Application = QStringLiteral("Tunecatch");
const QString Section = QStringLiteral("CONFIG");

QString address(const QString &key)
{
    return Section + u'/' + key;
}

QSettings store()
{
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, Application, Application);
}

} // namespace

QString SettingsStore::GetSetting(const QString &key, const QString &defaultValue)
{
    const QVariant value = store().value(address(key));
    return value.isValid() ? value.toString() : defaultValue;
}

void SettingsStore::SaveSetting(const QString &key, const QString &value)
{
    QSettings settings = store();
    settings.setValue(address(key), value);
    settings.sync();
}

qint32 SettingsStore::GetNumber(const QString &key, qint32 defaultValue)
{
    return Convert::LeadingInt32(GetSetting(key, QString::number(defaultValue)));
}

void SettingsStore::SaveNumber(const QString &key, qint32 value)
{
    SaveSetting(key, QString::number(value));
}

bool SettingsStore::GetBoolean(const QString &key, bool defaultValue)
{
    return Convert::ToBoolean(GetSetting(key, Convert::BooleanText(defaultValue)));
}

void SettingsStore::SaveBoolean(const QString &key, bool value)
{
    SaveSetting(key, Convert::BooleanText(value));
}
