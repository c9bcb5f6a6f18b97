#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>

// A desktop's media controls as the tests play them: calls and property
// reads and writes on a player's MPRIS object, and the PropertiesChanged
// signals it sends. Calls keep the event loop running, so a player served
// from the test's own thread answers.
class MprisClient : public QObject
{
    Q_OBJECT

public:
    static inline const QString Root = QStringLiteral("org.mpris.MediaPlayer2");
    static inline const QString Player = QStringLiteral("org.mpris.MediaPlayer2.Player");

    // Listens to the player that owns service on bus; false when it cannot.
    bool listen(QDBusConnection bus, const QString &service);

    QDBusMessage call(const QString &interface, const QString &method, const QVariantList &args = {});
    QVariant get(const QString &interface, const QString &name);
    QDBusMessage set(const QString &interface, const QString &name, const QVariant &value);
    QVariantMap metadata() { return get(Player, QStringLiteral("Metadata")).toMap(); }
    // Every change signalled since the last look, merged; waits for one when none has come.
    QVariantMap signalled();
    // Waits until a change signalled sets the property to value; true when one did.
    bool waitForChange(const QString &name, const QVariant &value);

    // Maps arrive as D-Bus arguments: turns them, and those inside them, into maps.
    static QVariant plain(const QVariant &value);

public slots:
    void record(const QString &interface, const QVariantMap &changed, const QStringList &invalidated);

signals:
    void recorded();

private:
    QDBusConnection m_bus{QString()};
    QString m_service;
    QList<QVariantMap> m_changes;
};
