#include "ui/directory/faviconicons.h"

#include "directory/faviconcache.h"

#include <QImage>
#include <QImageReader>
#include <QPixmap>

namespace {

// Past this many addresses the record of those passed on starts afresh.
constexpr qsizetype maxAsked = 4000;
// What a reader may allocate for one picture, in MB: a small file can
// declare a huge picture.
constexpr int allocationLimitMb = 8;

} // namespace

FaviconIcons::FaviconIcons(FaviconCache &cache, QObject *parent) : QObject(parent), m_cache(cache)
{
    m_readTimer.setSingleShot(true);
    m_readTimer.setInterval(0);
    connect(&m_readTimer, &QTimer::timeout, this, &FaviconIcons::readAsked);
    connect(&m_cache, &FaviconCache::iconReady, this, &FaviconIcons::keep);
}

QIcon FaviconIcons::icon(const QString &address)
{
    if (address.isEmpty())
        return {};
    if (const auto it = m_icons.constFind(address); it != m_icons.constEnd())
        return *it;
    if (m_asked.size() >= maxAsked)
        m_asked.clear();
    if (!m_asked.contains(address)) {
        m_asked.insert(address);
        m_waiting.append(address);
        m_readTimer.start();
    }
    return {};
}

QIcon FaviconIcons::decode(const QString &file)
{
    QImageReader reader(file);
    reader.setDecideFormatFromContent(true);
    reader.setAllocationLimit(allocationLimitMb);
    const QSize size = reader.size();
    if (size.width() > maxSide || size.height() > maxSide)
        return {};
    if (size.isValid() && (size.width() > iconSide || size.height() > iconSide))
        reader.setScaledSize(size.scaled(iconSide, iconSide, Qt::KeepAspectRatio));
    const QImage image = reader.read();
    if (image.isNull())
        return {};
    // Formats that tell no size before decoding are scaled after.
    const QImage small = image.width() > iconSide || image.height() > iconSide
                             ? image.scaled(iconSide, iconSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                             : image;
    return QIcon(QPixmap::fromImage(small));
}

void FaviconIcons::readAsked()
{
    const QList<QString> asked = std::exchange(m_waiting, {});
    for (const QString &address : asked) {
        const QString file = m_cache.cachedFile(address);
        if (file.isEmpty())
            m_cache.fetch(address);
        else
            keep(address, file);
    }
}

void FaviconIcons::keep(const QString &address, const QString &file)
{
    const QIcon icon = decode(file);
    if (icon.isNull() || m_icons.contains(address))
        return;
    m_icons.insert(address, icon);
    m_order.append(address);
    while (m_order.size() > maxDecoded) {
        const QString oldest = m_order.takeFirst();
        m_icons.remove(oldest);
        m_asked.remove(oldest);
    }
    emit iconReady(address);
}
