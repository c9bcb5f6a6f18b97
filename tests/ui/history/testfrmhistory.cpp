#include "ui/history/frmhistory.h"

#include "base/shell.h"
#include "history/historymodel.h"
#include "history/historystore.h"
#include "support/accessiblenames.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDateEdit>
#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Addresses are only noted; no browser opens.
class NotingShell : public Shell
{
public:
    bool openDocument(const QString &address) override
    {
        opened.append(address);
        return true;
    }
    bool startCommand(const QString &) override { return false; }
    QStringList opened;
};

// Central European time (see CMakeLists.txt).
qint64 local(const char *text)
{
    return QDateTime::fromString(QLatin1StringView(text), Qt::ISODate).toMSecsSinceEpoch();
}

class FrmHistoryTest : public ProfileTest
{
protected:
    void SetUp() override
    {
        store.open();
        store.add(u"Jazz FM"_s, u"Miles Davis - So What"_s, local("2024-05-01T10:00:00"));
        store.add(u"Rock"_s, u"AC/DC - T.N.T. & more"_s, local("2024-05-01T11:00:00"));
        store.add(u"Jazz FM"_s, u"Nina Simone - Feeling Good"_s, local("2024-05-02T09:00:00"));
        window = std::make_unique<FrmHistory>(
            store, shell, prompt, FrmHistory::Hooks{[this](QWidget *, const QString &suggested) {
                suggestions << suggested;
                return exportPath;
            }});
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        table = window->findChild<QTableView *>();
    }
    template <typename T> T *child(const char *name) const
    {
        T *found = window->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    // The titles shown, top to bottom, and the count under them.
    QString shown() const
    {
        QStringList titles;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            titles << table->model()->index(row, HistoryModel::TitleColumn).data().toString();
        return titles.join(u'|') + u" (" + child<QLabel>("lblCount")->text() + u')';
    }
    void chooseRow(int row) { table->setCurrentIndex(table->model()->index(row, HistoryModel::TitleColumn)); }

    HistoryStore store{profile.root() + u"/history.tsv"_s};
    NotingShell shell;
    ScriptedPrompt prompt;
    QString exportPath;
    QStringList suggestions;
    std::unique_ptr<FrmHistory> window;
    QTableView *table = nullptr;
};

TEST_F(FrmHistoryTest, TextStationAndDayNarrowTheRowsAsTheyAreChosen)
{
    expectAccessibleNames(window.get());
    EXPECT_EQ(shown(), u"Nina Simone - Feeling Good|AC/DC - T.N.T. & more|Miles Davis - So What (3 of 3 titles)"_s);
    QTest::keyClicks(child<QLineEdit>("txtSearch"), u"  simone"_s);
    EXPECT_EQ(shown(), u"Nina Simone - Feeling Good (1 of 3 titles)"_s);
    child<QLineEdit>("txtSearch")->clear();
    auto *stations = child<QComboBox>("cmbStation");
    stations->setCurrentText(u"Jazz FM"_s);
    EXPECT_EQ(shown(), u"Nina Simone - Feeling Good|Miles Davis - So What (2 of 3 titles)"_s);
    child<QDateEdit>("dtpDay")->setDate(QDate(2024, 5, 1));
    EXPECT_EQ(shown(), u"Nina Simone - Feeling Good|Miles Davis - So What (2 of 3 titles)"_s)
        << "the day counts only once ticked";
    QTest::mouseClick(child<QCheckBox>("chkDay"), Qt::LeftButton, {}, QPoint(4, 4));
    EXPECT_EQ(shown(), u"Miles Davis - So What (1 of 3 titles)"_s);
    // A title that comes meanwhile shows where the filters let it, and its station joins the list in order.
    store.add(u"Blues Bar"_s, u"B.B. King - The Thrill Is Gone"_s, local("2024-05-01T12:00:00"));
    store.add(u"Jazz FM"_s, u"Chet Baker - Almost Blue"_s, local("2024-05-01T13:00:00"));
    EXPECT_EQ(shown(), u"Chet Baker - Almost Blue|Miles Davis - So What (2 of 5 titles)"_s);
    QStringList listed;
    for (int i = 0; i < stations->count(); ++i)
        listed << stations->itemText(i);
    EXPECT_EQ(listed, (QStringList{u"All stations"_s, u"Blues Bar"_s, u"Jazz FM"_s, u"Rock"_s}));
}

TEST_F(FrmHistoryTest, ARowsMenuCopiesItsTitleAndSearchesItOnTheWeb)
{
    QStringList offered;
    QTimer::singleShot(0, window.get(), [&offered] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (const QAction *action : menu->actions())
            offered << action->text();
        menu->close();
    });
    const QRect second = table->visualRect(table->model()->index(1, HistoryModel::TitleColumn));
    emit table->customContextMenuRequested(second.center());
    EXPECT_EQ(offered, (QStringList{u"Copy \"Artist - Title\""_s, u"Search the Web"_s}));
    EXPECT_EQ(table->currentIndex().row(), 1) << "the row under the mouse";

    QGuiApplication::clipboard()->clear();
    table->setFocus();
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"AC/DC - T.N.T. & more"_s);
    window->searchTitle();
    EXPECT_EQ(shell.opened, QStringList{u"https://duckduckgo.com/?q=AC%2FDC%20-%20T.N.T.%20%26%20more"_s});
    // With no row current, neither does anything.
    child<QLineEdit>("txtSearch")->setText(u"nothing like it"_s);
    window->copyTitle();
    window->searchTitle();
    EXPECT_EQ(shell.opened.size(), 1);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"AC/DC - T.N.T. & more"_s);
}

TEST_F(FrmHistoryTest, ExportWritesTheRowsShownOrSaysWhyNot)
{
    child<QComboBox>("cmbStation")->setCurrentText(u"Rock"_s);
    exportPath = profile.root() + u"/out.csv"_s;
    QTest::mouseClick(child<QPushButton>("cmdExport"), Qt::LeftButton);
    EXPECT_TRUE(suggestions.value(0).endsWith(u".csv"_s)) << suggestions.value(0).toStdString();
    EXPECT_EQ(TempProfile::readFile(exportPath),
              "Time,Station,Title\r\n2024-05-01T11:00:00+02:00,Rock,AC/DC - T.N.T. & more\r\n");
    exportPath = profile.root() + u"/missing/out.csv"_s;
    window->exportCsv();
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_TRUE(prompt.shown[0].text.startsWith(u"The history could not be exported to "_s + exportPath))
        << prompt.shown[0].text.toStdString();
    exportPath.clear(); // cancelled
    window->exportCsv();
    EXPECT_EQ(prompt.shown.size(), 1);
}

} // namespace
