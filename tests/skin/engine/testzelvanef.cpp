#include "skin/engine/zelvanef.h"
#include "skin/urffile.h"
#include "support/skinfiles.h"
#include "support/tempprofile.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QLibrary>
#include <QPushButton>
#include <QStyle>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray redButtons = "QPushButton { color: #ff0000; }\n";

// The built engine, reached the way the program reaches it.
class EngineTest : public ProfileTest
{
public:
    void SetUp() override
    {
        ASSERT_TRUE(engine.load()) << engine.errorString().toStdString();
        start = reinterpret_cast<Zelvanef::SkinStartFn>(engine.resolve("SkinStart"));
        remove = reinterpret_cast<Zelvanef::SkinRemoveFn>(engine.resolve("SkinRemove"));
        windowSet = reinterpret_cast<Zelvanef::SkinWindowSetFn>(engine.resolve("SkinWindowSet"));
        windowSetEx = reinterpret_cast<Zelvanef::SkinWindowSetExFn>(engine.resolve("SkinWindowSetEx"));
        ASSERT_TRUE(start && remove && windowSet && windowSetEx);
        qApp->setStyleSheet(ownSheet);
    }
    void TearDown() override
    {
        if (remove)
            remove();
        qApp->setStyleSheet({});
    }
    QByteArray file(const char *name, const QByteArray &bytes)
    {
        const QString path = profile.root() + u'/' + QLatin1StringView(name);
        TempProfile::writeFile(path, bytes);
        return QFile::encodeName(path);
    }
    static inline const QString ownSheet = u"QLabel { color: #00ff00; }"_s;
    QLibrary engine{SkinFiles::builtEngine()};
    Zelvanef::SkinStartFn start = nullptr;
    Zelvanef::SkinRemoveFn remove = nullptr;
    Zelvanef::SkinWindowSetFn windowSet = nullptr;
    Zelvanef::SkinWindowSetExFn windowSetEx = nullptr;
};

TEST_F(EngineTest, ShippedSkinsApplyAndRemovalRestoresTheOwnLook)
{
    for (const char *name : {"Zelvane.urf", "Ledovec.urf", "Kontrast.urf"}) {
        ASSERT_EQ(start(QFile::encodeName(SkinFiles::shipped(name)).constData(), Zelvanef::StartOptions), 0)
            << name;
        EXPECT_EQ(qApp->styleSheet(), UrfSkin::read(SkinFiles::shipped(name)).sheet) << name;
    }
    QPushButton button;
    button.ensurePolished();
    EXPECT_STREQ(button.style()->metaObject()->className(), "QStyleSheetStyle");
    // Switching went from skin to skin; removal goes back to the sheet from before the first.
    remove();
    EXPECT_EQ(qApp->styleSheet(), ownSheet);
    remove();
    EXPECT_EQ(qApp->styleSheet(), ownSheet);
}

TEST_F(EngineTest, RemovalLeavesTheApplicationPaletteAndRestoresWidgetColours)
{
    const QPalette before = QApplication::palette();
    QPushButton button;
    ASSERT_EQ(start(file("red.urf", SkinFiles::skin(u"Red"_s, redButtons)).constData(), 0), 0);
    button.ensurePolished();
    EXPECT_EQ(button.palette().color(QPalette::ButtonText), QColor(Qt::red));
    // A theme change while skinned must outlive the skin.
    QPalette themed = before;
    themed.setColor(QPalette::Window, QColor(0x12, 0x34, 0x56));
    QApplication::setPalette(themed);
    remove();
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(button.palette().color(QPalette::ButtonText), themed.color(QPalette::ButtonText));
    QApplication::setPalette(before);
}

TEST_F(EngineTest, BadSkinFilesAreRefusedAndTheLookStays)
{
    // Every failure of reading the file is the reader's own (tested with it); these reach the engine.
    const std::pair<QByteArray, int> rows[] = {
        {QFile::encodeName(profile.root() + u"/missing.urf"_s), UrfSkin::Unreadable},
        {file("binary.urf", QByteArray::fromHex("7f454c460201010000000000")), UrfSkin::Binary},
        {file("open.urf", SkinFiles::skin(u"O"_s, "QPushButton { color: red; ")), UrfSkin::BadSheet},
        {file("braces.urf", SkinFiles::skin(u"B"_s, "}}} QWidget")), UrfSkin::BadSheet}};
    const QByteArray good = file("good.urf", SkinFiles::skin(u"Good"_s, redButtons));
    for (const bool skinned : {false, true}) {
        if (skinned) {
            ASSERT_EQ(start(good.constData(), 0), 0);
        }
        const QString look = qApp->styleSheet();
        for (const auto &[path, code] : rows) {
            EXPECT_EQ(start(path.constData(), 0), code) << path.constData();
            EXPECT_EQ(qApp->styleSheet(), look) << path.constData();
        }
        EXPECT_EQ(start(nullptr, 0), UrfSkin::Unreadable);
    }
}

TEST_F(EngineTest, WindowsTakeASkinOfTheirOwnByNameOrClass)
{
    const QByteArray red = file("red.urf", SkinFiles::skin(u"Red"_s, redButtons));
    QWidget probe;
    probe.setObjectName(u"FrmProbe"_s);
    probe.setStyleSheet(ownSheet);
    probe.show();
    QDialog dialog;
    dialog.show();
    EXPECT_EQ(windowSet("FrmProbe", red.constData()), 0);
    EXPECT_EQ(probe.styleSheet(), QString::fromUtf8(redButtons));
    EXPECT_EQ(windowSet("FrmProbe", ""), 0);
    EXPECT_EQ(probe.styleSheet(), ownSheet);
    EXPECT_EQ(windowSet("FrmNowhere", red.constData()), Zelvanef::NoSuchWindow);
    EXPECT_EQ(windowSet("FrmProbe", file("plain.urf", redButtons).constData()), UrfSkin::NotASkin);
    EXPECT_EQ(windowSetEx("QDialog", red.constData(), Zelvanef::MatchClass), 0);
    EXPECT_EQ(dialog.styleSheet(), QString::fromUtf8(redButtons));
    EXPECT_EQ(probe.styleSheet(), ownSheet);
    remove();
    EXPECT_TRUE(dialog.styleSheet().isEmpty());
}

} // namespace
