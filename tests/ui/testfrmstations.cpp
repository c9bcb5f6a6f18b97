#include "ui/frmstations.h"

#include "app/appstate.h"
#include "app/appwindows.h"
#include "app/settingsstore.h"
#include "app/startup.h"
#include "controls/lynxgrid.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <span>

namespace {

using Col = FrmStations::Column;

struct Entry
{
    const char *name;
    const char *genre;
    const char *format;
    const char *category;
    int rating;
    bool single;
};

// Rows in catalogue order; the window shows them in this order with no filter.
const Entry Catalogue5[] = {
    {"Rock One", "Rock", "mp3", "Rock", 3, true},
    {"Classic Hits", "Classic rock", "MP3", "Hard rock", 0, false},
    {"Jazz Cafe", "Jazz", "ogg", "Lounge", 5, false},
    {"Talk Radio", "Talk", "mp3", "News", 2, true},
    {"Rockabilly", "Country", "mp3", "Oldies", 3, false},
};

QByteArray catalogueFile(std::span<const Entry> entries)
{
    QString text = QStringLiteral("2.1\r\n\u00B1\r\n# versions\r\n# format\r\n");
    for (const Entry &e : entries) {
        const QStringList fields = {QString::fromLatin1(e.name),
                                    QString::fromLatin1(e.genre),
                                    QStringLiteral("128"),
                                    QString::fromLatin1(e.format),
                                    QString::fromLatin1(e.category),
                                    QStringLiteral(".\\%STATION%.mp3"),
                                    e.single ? QStringLiteral("True") : QStringLiteral("False"),
                                    QString::number(e.rating),
                                    QString(),
                                    QString(),
                                    QStringLiteral("http://127.0.0.1:8000/") + QString::fromLatin1(e.name).left(4),
                                    QStringLiteral("http://127.0.0.1/info")};
        text += fields.join(u'\u00B1') + QStringLiteral("\r\n");
    }
    QByteArray bytes("\xFF\xFE", 2);
    bytes.append(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    return bytes;
}

// Start-up's windows side as the closing step needs it; ending the process is the one thing not done.
class QuietWindows : public AppWindows
{
public:
    void InitCommonControls() override {}
    void LoadMainWindow() override {}
    void ShowMainWindow() override {}
    void ShowRecorderWindow() override {}
    void ProcessEvents() override {}
    void UnloadAllWindows() override {}
    void EndProcess() override { ended = true; }
    bool ended = false;
};

class StationsTest : public ProfileTest
{
protected:
    void SetUp() override { writeCatalogue(Catalogue5); }

    void writeCatalogue(std::span<const Entry> entries)
    {
        TempProfile::writeFile(cataloguePath(), catalogueFile(entries));
        state = std::make_unique<AppState>(profile.installFolder(), prompt);
        state->catalogue.Load(prompt, AppState::AppTitle);
    }

    QString cataloguePath() const { return profile.dataFolder() + AppState::CatalogueFileName; }

    // Opens the main window; closing it runs the program's real closing step.
    FrmStations &open()
    {
        window = std::make_unique<FrmStations>(*state);
        startup = std::make_unique<Startup>(*state, windows);
        QObject::connect(window.get(), &FrmStations::unloaded, window.get(), [this] { startup->Close(); });
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        grid = window->findChild<LynxGrid *>(QStringLiteral("LynxGrid1"));
        EXPECT_NE(grid, nullptr);
        return *window;
    }

    template <typename T = QWidget>
    T *child(const char *name) const
    {
        T *found = window->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    int pos(Col column) const { return grid->ColPosition(column); }

    QStringList shown(Col column = Col::ColStation) const
    {
        QStringList texts;
        for (int row = 0; row < grid->ItemCount(); ++row)
            texts << grid->CellText(row, pos(column));
        return texts;
    }

    void filter(const QString &genre, const QString &category, const QString &type, const QString &rating)
    {
        child<QComboBox>("cmbGenre")->setCurrentText(genre);
        child<QComboBox>("cmbCategory")->setCurrentText(category);
        child<QComboBox>("cmbType")->setCurrentText(type);
        child<QComboBox>("cmbRating")->setCurrentText(rating);
        child<QPushButton>("cmdFilter")->click();
    }

    void editText(int row, Col column, const QString &text)
    {
        ASSERT_TRUE(grid->EditCell(row, pos(column)));
        auto *box = grid->viewport()->findChild<QLineEdit *>();
        box->selectAll();
        QTest::keyClicks(box, text);
        QTest::keyClick(box, Qt::Key_Return);
    }

    ScriptedPrompt prompt;
    QuietWindows windows;
    std::unique_ptr<AppState> state;
    std::unique_ptr<Startup> startup;
    std::unique_ptr<FrmStations> window;
    LynxGrid *grid = nullptr;
};

TEST_F(StationsTest, LoadBuildsTheColumnsListsAndRowsInCatalogueOrder)
{
    open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Tunecatch"));
    const QStringList headings = {QStringLiteral(" "),        QStringLiteral("Station"),   QStringLiteral("Genre"),
                                  QStringLiteral("Bit"),      QStringLiteral("Type"),      QStringLiteral("Category"),
                                  QStringLiteral("Rating"),   QStringLiteral("StreamUrl"), QStringLiteral("Single"),
                                  QStringLiteral("LastDate"), QStringLiteral("Sign"),      QStringLiteral("InfoUrl"),
                                  QStringLiteral("Output")};
    const int widths[] = {23, 100, 46, 33, 33, 100, 66, 200, 46, 66, 46, 166};
    ASSERT_EQ(grid->Cols(), 13);
    for (int col = 0; col < 13; ++col) {
        EXPECT_EQ(grid->ColHeading(col), headings[col]);
        if (col < 12) {
            EXPECT_EQ(grid->ColWidth(col), widths[col]) << col;
        }
    }
    EXPECT_GE(grid->ColWidth(Col::ColOutput), 400) << "as wide as the grid";
    EXPECT_EQ(grid->ColType(Col::ColSingle), GridColumnType::CheckBox);

    EXPECT_EQ(shown(), QStringList({QStringLiteral("Rock One"), QStringLiteral("Classic Hits"),
                                    QStringLiteral("Jazz Cafe"), QStringLiteral("Talk Radio"),
                                    QStringLiteral("Rockabilly")}));
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(grid->ItemData(row), row + 1);
        EXPECT_EQ(grid->CellChecked(row, pos(Col::ColSingle)), Catalogue5[row].single);
        EXPECT_EQ(grid->CellText(row, pos(Col::ColRating)), QString::number(Catalogue5[row].rating));
    }

    const auto entries = [this](const char *name) {
        QStringList items;
        auto *combo = child<QComboBox>(name);
        for (int i = 0; i < combo->count(); ++i)
            items << combo->itemText(i);
        return items.join(u',');
    };
    EXPECT_EQ(entries("cmbGenre"), QStringLiteral(",TopTen,Alternative,Classical,Comedy,Country,Dance,Funk,Jazz,"
                                                  "Metal,Funk,Mixed,Pop,Rap,RnB,Rock,Talk,Techno,70s,80s,World,Fun,Adult"));
    EXPECT_EQ(entries("cmbCategory"), QStringLiteral(",Rock,Hard rock,Lounge,News,Oldies"));
    EXPECT_EQ(entries("cmbType"), QStringLiteral(",MP3,TV,OGG,-,XxX"));
    EXPECT_EQ(entries("cmbRating"), QStringLiteral(",1,2,3,4,5"));
    EXPECT_EQ(entries("cboRating"), QStringLiteral("1,2,3,4,5"));

    for (const char *name : {"cmdRecord", "cmdListen", "cmdReplay", "cmdCopy", "cmdDel", "cmdInfo", "cmdLoadPls",
                             "cmdTrim", "cmdSkin", "cmdAbout", "cmdSearchWww"}) {
        EXPECT_FALSE(child(name)->isEnabled()) << name;
        EXPECT_EQ(child(name)->toolTip(), QStringLiteral("Coming in a later version"));
    }
    for (const char *name : {"cmdFilter", "cmdSearch", "cmdSettings", "txtSearch", "ucPlayBar1Slot", "GFXOption"})
        EXPECT_NE(window->findChild<QObject *>(QLatin1StringView(name)), nullptr) << name;
}

TEST_F(StationsTest, AnEmptyCatalogueGivesAllThirteenColumnsAndNoRows)
{
    writeCatalogue({});
    open();
    EXPECT_EQ(grid->Cols(), 13);
    EXPECT_EQ(grid->ItemCount(), 0);
    EXPECT_EQ(child<QComboBox>("cmbCategory")->count(), 1);
}

TEST_F(StationsTest, FiltersKeepTheirCaseRules)
{
    open();
    const struct
    {
        const char *genre, *category, *type, *rating;
        QStringList expected;
    } cases[] = {
        {"Rock", "", "", "", {QStringLiteral("Rock One"), QStringLiteral("Classic Hits")}},
        // The category test alone is case-sensitive: "Hard rock" does not contain "Rock".
        {"", "Rock", "", "", {QStringLiteral("Rock One")}},
        {"", "", "MP3", "", {QStringLiteral("Rock One"), QStringLiteral("Classic Hits"),
                             QStringLiteral("Talk Radio"), QStringLiteral("Rockabilly")}},
        {"", "", "", "3", {QStringLiteral("Rock One"), QStringLiteral("Rockabilly")}},
        {"Rock", "", "MP3", "3", {QStringLiteral("Rock One")}},
        {"", "", "", "", {QStringLiteral("Rock One"), QStringLiteral("Classic Hits"), QStringLiteral("Jazz Cafe"),
                          QStringLiteral("Talk Radio"), QStringLiteral("Rockabilly")}},
    };
    for (const auto &c : cases) {
        filter(QString::fromLatin1(c.genre), QString::fromLatin1(c.category), QString::fromLatin1(c.type),
               QString::fromLatin1(c.rating));
        EXPECT_EQ(shown(), c.expected) << c.genre << "/" << c.category << "/" << c.type << "/" << c.rating;
        EXPECT_EQ(state->GenreFilter, QString::fromLatin1(c.genre));
        EXPECT_EQ(state->CategoryFilter, QString::fromLatin1(c.category));
    }
}

TEST_F(StationsTest, StoredFiltersApplyAtLoadAndSelectTheirFirstExactEntry)
{
    // As stored: "rock" keeps "Hard rock" but not "Rock", and no entry equals it.
    state->CategoryFilter = QStringLiteral("rock");
    state->TypeFilter = QStringLiteral("MP3");
    open();
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Classic Hits")});
    EXPECT_EQ(child<QComboBox>("cmbCategory")->currentIndex(), 0);
    EXPECT_EQ(child<QComboBox>("cmbType")->currentIndex(), 1);

    state->CategoryFilter.clear();
    state->GenreFilter = QStringLiteral("Funk");
    open();
    EXPECT_EQ(child<QComboBox>("cmbGenre")->currentIndex(), 7) << "the first of the two";
    EXPECT_TRUE(shown().isEmpty());
}

TEST_F(StationsTest, SearchStepsThroughNameAndCategoryMatchesAndWrapsRound)
{
    open();
    auto *text = child<QLineEdit>("txtSearch");
    text->setText(QStringLiteral("rock"));
    const struct
    {
        int row, col;
    } steps[] = {{0, 1}, {1, 5}, {4, 1}, {0, 1}, {1, 5}};
    for (const auto &step : steps) {
        QTest::keyClick(text, Qt::Key_Return);
        EXPECT_EQ(grid->Row(), step.row);
        EXPECT_EQ(grid->Col(), step.col);
    }
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);

    // Text only in the row above the current one: found on the wrap-round pass.
    text->setText(QStringLiteral("Rock One"));
    grid->GotoCell(1, 3);
    child<QPushButton>("cmdSearch")->click();
    EXPECT_EQ(grid->Row(), 0);
    EXPECT_EQ(grid->Col(), 1);

    // With row 0 current, row 0 is never looked at again.
    grid->GotoCell(0, 3);
    child<QPushButton>("cmdSearch")->click();
    EXPECT_EQ(grid->Row(), 0);
    EXPECT_EQ(grid->Col(), 3);

    // No text, no search.
    text->clear();
    grid->GotoCell(2, 3);
    child<QPushButton>("cmdSearch")->click();
    EXPECT_EQ(grid->Row(), 2);
}

TEST_F(StationsTest, TheRatingEditorOpensOnTheCellsRatingAndWritesTheChoiceBack)
{
    open();
    auto *cboRating = child<QComboBox>("cboRating");
    ASSERT_TRUE(grid->EditCell(1, pos(Col::ColRating))); // rating 0
    EXPECT_TRUE(cboRating->isVisible());
    EXPECT_EQ(cboRating->currentIndex(), -1);
    cboRating->setCurrentIndex(4);
    QTest::keyClick(cboRating, Qt::Key_Return);
    EXPECT_FALSE(grid->IsEditing());
    EXPECT_EQ(grid->CellText(1, pos(Col::ColRating)), QStringLiteral("5"));
    EXPECT_EQ(state->catalogue.at(2).Rating, 5);
    EXPECT_TRUE(grid->CellChanged(1, pos(Col::ColRating)));

    ASSERT_TRUE(grid->EditCell(0, pos(Col::ColRating))); // rating 3
    EXPECT_EQ(cboRating->currentText(), QStringLiteral("3"));
    QTest::keyClick(cboRating, Qt::Key_Escape);
    EXPECT_EQ(state->catalogue.at(1).Rating, 3);
}

TEST_F(StationsTest, ThePlayHandleOnlyCancelsTheEditWithoutAPlayer)
{
    open();
    EXPECT_FALSE(grid->EditCell(0, pos(Col::ColPlay)));
    EXPECT_FALSE(grid->IsEditing());
}

TEST_F(StationsTest, TheSingleCheckBoxMarksItsCellChanged)
{
    open();
    grid->GotoCell(2, pos(Col::ColSingle));
    grid->setFocus();
    QTest::keyClick(grid, Qt::Key_Space);
    EXPECT_TRUE(grid->CellChecked(2, pos(Col::ColSingle)));
    EXPECT_TRUE(grid->CellChanged(2, pos(Col::ColSingle)));
    EXPECT_TRUE(state->catalogue.at(3).SingleSong);
}

TEST_F(StationsTest, EditingThenClosingWritesTheCatalogueAndStoresTheFilters)
{
    open();
    filter(QStringLiteral("Jazz"), QString(), QStringLiteral("OGG"), QString());
    ASSERT_EQ(shown(), QStringList{QStringLiteral("Jazz Cafe")});
    editText(0, Col::ColStation, QStringLiteral("Jazz Corner"));
    // A cell changed without a finished edit still reaches the file through the unload sweep,
    // and a rating that is no number is stored as 0.
    grid->SetCellText(0, pos(Col::ColRating), QStringLiteral("x4"));
    grid->SetCellChanged(0, pos(Col::ColRating), true);
    grid->SetCellText(0, pos(Col::ColSign), QStringLiteral("A\u00B1B"));
    grid->SetCellChanged(0, pos(Col::ColSign), true);

    window->close();
    EXPECT_TRUE(windows.ended);
    EXPECT_FALSE(state->catalogue.Dirty) << "saved by the closing step";

    const QString file = QString::fromUtf16(
        reinterpret_cast<const char16_t *>(TempProfile::readFile(cataloguePath()).constData() + 2));
    EXPECT_TRUE(file.contains(QStringLiteral("Jazz Corner\u00B1Jazz\u00B1128\u00B1ogg\u00B1Lounge")));
    EXPECT_TRUE(file.contains(QStringLiteral("\u00B1False\u00B10\u00B1\u00B1A\u00B1B\u00B1")))
        << "the typed separator goes into the file as it stands";
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptGenre), QStringLiteral("Jazz"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptType), QStringLiteral("OGG"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptCategory), QString());
}

TEST_F(StationsTest, ClosingWithoutEditsLeavesTheFileUntouched)
{
    const QByteArray before = TempProfile::readFile(cataloguePath());
    open();
    grid->GotoCell(3, pos(Col::ColStation));
    filter(QStringLiteral("Talk"), QString(), QString(), QString());
    window->close();
    EXPECT_TRUE(windows.ended);
    EXPECT_EQ(TempProfile::readFile(cataloguePath()), before);
    EXPECT_FALSE(QFile::exists(cataloguePath() + QStringLiteral(".bck")));
}

TEST_F(StationsTest, ARefillPutsEachFieldUnderItsHeadingAfterAColumnMove)
{
    open();
    grid->SetColPosition(Col::ColGenre, 9);
    grid->SetColPosition(Col::ColStation, 0);
    filter(QString(), QString(), QString(), QString());
    for (int row = 0; row < grid->ItemCount(); ++row) {
        for (int col = 0; col < grid->Cols(); ++col) {
            if (grid->ColHeading(col) == u"Genre") {
                EXPECT_EQ(grid->CellText(row, col), QString::fromLatin1(Catalogue5[row].genre));
            }
            if (grid->ColHeading(col) == u"Station") {
                EXPECT_EQ(grid->CellText(row, col), QString::fromLatin1(Catalogue5[row].name));
            }
        }
    }
    // Editing a moved column writes back the right field.
    editText(4, Col::ColGenre, QStringLiteral("Rockabilly"));
    EXPECT_EQ(state->catalogue.at(5).Genre, QStringLiteral("Rockabilly"));
    EXPECT_EQ(state->catalogue.at(5).Name, QStringLiteral("Rockabilly"));
    EXPECT_EQ(state->catalogue.at(5).Category, QStringLiteral("Oldies"));
}

} // namespace
