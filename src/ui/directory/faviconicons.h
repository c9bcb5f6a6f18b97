#pragma once

#include <QHash>
#include <QIcon>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

class FaviconCache;

// The stations' icons as a list shows them: asked for by address while a row
// is drawn, read from the icon cache or fetched into it, decoded small. Only
// a bounded number stays decoded; an icon dropped is read again when it is
// next shown.
class FaviconIcons : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FaviconIcons)

public:
    static constexpr int maxDecoded = 2000;
    // Larger pictures are no icons: they are not decoded.
    static constexpr int maxSide = 1024;
    static constexpr int iconSide = 32;

    explicit FaviconIcons(FaviconCache &cache, QObject *parent = nullptr);

    // The icon when it is at hand, else a null icon; then it is read or
    // fetched, and iconReady() follows once it is there.
    QIcon icon(const QString &address);
    // A small icon from an image file; null when the file is no image or too large.
    static QIcon decode(const QString &file);

signals:
    void iconReady(const QString &address);

private:
    void readAsked();
    void keep(const QString &address, const QString &file);

    FaviconCache &m_cache;
    QHash<QString, QIcon> m_icons;
    // Decoded icons, oldest first.
    QList<QString> m_order;
    // Asked for and not yet at hand; read on the next turn of the event loop,
    // not while the list paints.
    QList<QString> m_waiting;
    // Addresses already passed on, so that repainting asks nothing twice. The
    // cache itself never fetches one address twice at once, so forgetting
    // these now and then costs little.
    QSet<QString> m_asked;
    QTimer m_readTimer;
};
