#include "ui/directory/faviconicons.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QString saved(const QTemporaryDir &dir, const QString &name, const QImage &image)
{
    const QString path = dir.filePath(name);
    EXPECT_TRUE(image.save(path, "PNG"));
    return path;
}

TEST(FaviconIcons, OnlySmallPicturesBecomeIconsAndNoneIsLargerThanAnIcon)
{
    QTemporaryDir dir;
    QImage wide(200, 100, QImage::Format_ARGB32);
    wide.fill(Qt::red);
    QImage huge(FaviconIcons::maxSide + 1, 8, QImage::Format_Mono);
    huge.fill(0);
    const QString text = dir.filePath(u"page.png"_s);
    QFile page(text);
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    page.write("<html><body>Not found</body></html>");
    page.close();

    const QIcon icon = FaviconIcons::decode(saved(dir, u"wide.png"_s, wide));
    ASSERT_FALSE(icon.isNull());
    EXPECT_EQ(icon.availableSizes(), QList<QSize>{QSize(32, 16)});
    EXPECT_TRUE(FaviconIcons::decode(saved(dir, u"huge.png"_s, huge)).isNull());
    EXPECT_TRUE(FaviconIcons::decode(text).isNull());
    EXPECT_TRUE(FaviconIcons::decode(dir.filePath(u"missing.png"_s)).isNull());
}

} // namespace
