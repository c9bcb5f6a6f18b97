#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// The desktop's notification service, as far as the program uses it: it
// keeps every notification asked for and answers with an id, the one it was
// asked to replace or a new one.
class FakeNotifications : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Shown
    {
        uint replaces;
        QString app, icon, summary, body;
        QVariantMap hints;
    };
    QStringList capabilities{QStringLiteral("body"), QStringLiteral("body-markup")};
    QList<Shown> shown;

    // Offers the service on the bus; false when the name or path is taken.
    bool serveOn(QDBusConnection bus);

public slots:
    QStringList GetCapabilities() { return capabilities; }
    uint Notify(const QString &app, uint replaces, const QString &icon, const QString &summary,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int timeout);

signals:
    // A notification has come.
    void notified();

private:
    uint m_lastId = 40;
};
