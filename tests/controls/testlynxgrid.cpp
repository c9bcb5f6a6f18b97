#include "controls/gridheader.h"
#include "controls/lynxgrid.h"

#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// A grid of three columns (Name, Count as numbers, Tag) holding rows as given.
class GridTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        grid.resize(400, 300);
        grid.AddColumn(QStringLiteral("Name"), 120);
        grid.AddColumn(QStringLiteral("Count"), 80, Qt::AlignRight, GridColumnType::Number);
        grid.AddColumn(QStringLiteral("Tag"), 80);
        for (const auto &[name, count, tag] : {std::tuple{"beta", "10", "x"}, {"Alpha", "9", "y"}, {"gamma", "100", "z"}})
            grid.AddItem(QString::fromLatin1(name) + u'\t' + QString::fromLatin1(count) + u'\t' +
                         QString::fromLatin1(tag));
        grid.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&grid));
    }

    QStringList column(int col) const
    {
        QStringList texts;
        for (int row = 0; row < grid.ItemCount(); ++row)
            texts << grid.CellText(row, col);
        return texts;
    }

    QLineEdit *editBox() const { return grid.viewport()->findChild<QLineEdit *>(); }

    // Records the protocol's events and answers them as the test sets.
    struct Host
    {
        bool cancelEdit = false;
        bool cancelUpdate = false;
        QString replaceWith;
        QStringList events;
    };

    void attach(Host &host)
    {
        QObject::connect(&grid, &LynxGrid::RequestEdit, &grid, [&host](int row, int col, bool &cancel) {
            host.events << QStringLiteral("edit %1,%2").arg(row).arg(col);
            cancel = host.cancelEdit;
        });
        QObject::connect(&grid, &LynxGrid::RequestUpdate, &grid,
                         [&host](int row, int col, QString &value, bool &cancel) {
                             host.events << QStringLiteral("update %1,%2 %3").arg(row).arg(col).arg(value);
                             if (!host.replaceWith.isNull())
                                 value = host.replaceWith;
                             cancel = host.cancelUpdate;
                         });
        QObject::connect(&grid, &LynxGrid::CellUpdated, &grid, [&host](int row, int col) {
            host.events << QStringLiteral("updated %1,%2").arg(row).arg(col);
        });
    }

    LynxGrid grid;
};

TEST_F(GridTest, AnAcceptedEditStoresTheHostsValueAndMarksTheCellChanged)
{
    Host host;
    attach(host);
    grid.SetTrackEdits(true);
    host.replaceWith = QStringLiteral("DELTA");

    ASSERT_TRUE(grid.EditCell(1, 0));
    ASSERT_TRUE(grid.IsEditing());
    EXPECT_EQ(editBox()->text(), QStringLiteral("Alpha"));
    QTest::keyClicks(editBox(), QStringLiteral("delta"));
    QTest::keyClick(editBox(), Qt::Key_Return);

    EXPECT_FALSE(grid.IsEditing());
    EXPECT_EQ(host.events, QStringList({QStringLiteral("edit 1,0"), QStringLiteral("update 1,0 delta"),
                                        QStringLiteral("updated 1,0")}));
    EXPECT_EQ(grid.CellText(1, 0), QStringLiteral("DELTA"));
    EXPECT_TRUE(grid.CellChanged(1, 0));
    EXPECT_FALSE(grid.CellChanged(0, 0));
}

TEST_F(GridTest, EachStageOfTheEditCanBeCancelled)
{
    Host host;
    attach(host);
    grid.SetTrackEdits(true);

    // The host refuses the edit: nothing opens.
    host.cancelEdit = true;
    EXPECT_FALSE(grid.EditCell(0, 0));
    EXPECT_FALSE(grid.IsEditing());
    EXPECT_FALSE(editBox()->isVisible());

    // The host refuses the update: the text stays and no update is reported.
    host.cancelEdit = false;
    host.cancelUpdate = true;
    ASSERT_TRUE(grid.EditCell(0, 0));
    editBox()->setText(QStringLiteral("changed"));
    EXPECT_FALSE(grid.CommitEdit());
    EXPECT_EQ(grid.CellText(0, 0), QStringLiteral("beta"));
    EXPECT_FALSE(host.events.contains(QStringLiteral("updated 0,0")));

    // Escape ends the edit without asking for an update at all.
    host.events.clear();
    ASSERT_TRUE(grid.EditCell(0, 0));
    editBox()->setText(QStringLiteral("changed"));
    QTest::keyClick(editBox(), Qt::Key_Escape);
    EXPECT_FALSE(grid.IsEditing());
    EXPECT_EQ(host.events, QStringList{QStringLiteral("edit 0,0")});
    EXPECT_EQ(grid.CellText(0, 0), QStringLiteral("beta"));
    EXPECT_FALSE(grid.CellChanged(0, 0));
}

TEST_F(GridTest, UnchangedTextOrTrackingOffLeavesNoChangedMark)
{
    ASSERT_TRUE(grid.EditCell(0, 2));
    EXPECT_TRUE(grid.CommitEdit());
    grid.SetTrackEdits(true);
    ASSERT_TRUE(grid.EditCell(0, 2));
    EXPECT_TRUE(grid.CommitEdit());
    EXPECT_FALSE(grid.CellChanged(0, 2));

    grid.SetTrackEdits(false);
    ASSERT_TRUE(grid.EditCell(0, 2));
    editBox()->setText(QStringLiteral("new"));
    EXPECT_TRUE(grid.CommitEdit());
    EXPECT_EQ(grid.CellText(0, 2), QStringLiteral("new"));
    EXPECT_FALSE(grid.CellChanged(0, 2));
}

TEST_F(GridTest, TypedCharactersPassTheColumnFilter)
{
    struct Case
    {
        const char *filter;
        const char *typed;
        const char *expected;
    };
    const Case cases[] = {
        {"0123456789", "a1b2.c3", "12.3"}, // code 46 always passes
        {"abc", "AbCdx", "AbC"},           // compared without regard to case
        {"<", "MiXeD 1", "mixed 1"},       // no filter: lower-cases
        {">", "MiXeD 1", "MIXED 1"},       // no filter: upper-cases
        {"", "any<>thing", "any<>thing"},
    };
    for (const Case &c : cases) {
        grid.SetColInputFilter(2, QString::fromLatin1(c.filter));
        ASSERT_TRUE(grid.EditCell(0, 2));
        editBox()->clear();
        QTest::keyClicks(editBox(), QString::fromLatin1(c.typed));
        EXPECT_EQ(editBox()->text(), QString::fromLatin1(c.expected)) << c.filter;
        grid.CancelEdit();
    }

    // Backspace (code 8) passes any filter.
    grid.SetColInputFilter(2, QStringLiteral("7"));
    ASSERT_TRUE(grid.EditCell(0, 2));
    editBox()->clear();
    QTest::keyClicks(editBox(), QStringLiteral("77"));
    QTest::keyClick(editBox(), Qt::Key_Backspace);
    EXPECT_EQ(editBox()->text(), QStringLiteral("7"));
    grid.CancelEdit();
}

TEST_F(GridTest, EditKeyPressSeesTheFilteredKeyAndMayChangeIt)
{
    QList<int> seen;
    QObject::connect(&grid, &LynxGrid::EditKeyPress, &grid, [&seen](int col, qint16 &key) {
        EXPECT_EQ(col, 1);
        seen << key;
        if (key == u'5')
            key = u'6';
        else if (key == u'9')
            key = 0;
    });
    grid.SetColInputFilter(1, QStringLiteral("0123456789"));
    ASSERT_TRUE(grid.EditCell(0, 1));
    editBox()->clear();
    QTest::keyClicks(editBox(), QStringLiteral("1x59"));
    EXPECT_EQ(seen, QList<int>({'1', 0, '5', '9'}));
    EXPECT_EQ(editBox()->text(), QStringLiteral("16"));
}

TEST_F(GridTest, CheckBoxCellsToggleThroughTheEditRequest)
{
    const int col = grid.AddColumn(QStringLiteral("On"), 40, Qt::AlignHCenter, GridColumnType::CheckBox);
    Host host;
    attach(host);
    grid.GotoCell(1, col);
    grid.setFocus();

    QTest::keyClick(&grid, Qt::Key_Space);
    EXPECT_TRUE(grid.CellChecked(1, col));
    EXPECT_EQ(host.events, QStringList({QStringLiteral("edit 1,3"), QStringLiteral("updated 1,3")}));

    host.cancelEdit = true;
    QTest::keyClick(&grid, Qt::Key_Space);
    EXPECT_TRUE(grid.CellChecked(1, col));
    EXPECT_FALSE(grid.IsEditing());
}

TEST_F(GridTest, SortingOrdersByTheColumnsTypeAndReportsCompletion)
{
    int completed = 0;
    QObject::connect(&grid, &LynxGrid::SortComplete, &grid, [&completed] { ++completed; });
    grid.GotoCell(2, 0); // gamma

    grid.Sort(1);
    EXPECT_EQ(column(1), QStringList({QStringLiteral("9"), QStringLiteral("10"), QStringLiteral("100")}));
    grid.Sort(0);
    EXPECT_EQ(column(0), QStringList({QStringLiteral("Alpha"), QStringLiteral("beta"), QStringLiteral("gamma")}));
    grid.Sort(0, GridSortOrder::Descending);
    EXPECT_EQ(column(0), QStringList({QStringLiteral("gamma"), QStringLiteral("beta"), QStringLiteral("Alpha")}));
    EXPECT_EQ(completed, 3);
    EXPECT_EQ(grid.CellText(grid.Row(), 0), QStringLiteral("gamma")) << "the current row follows its item";
    EXPECT_EQ(grid.SortColumn(), 0);
}

TEST_F(GridTest, ClickingAHeadingSortsAndAgainReverses)
{
    auto *header = grid.findChild<GridHeader *>();
    ASSERT_NE(header, nullptr);
    QList<int> clicked;
    QObject::connect(&grid, &LynxGrid::ColumnClick, &grid, [&clicked](int col) { clicked << col; });
    const QPoint count(grid.ColLeft(1) + 40, header->height() / 2);

    QTest::mouseClick(header, Qt::LeftButton, {}, count);
    EXPECT_EQ(column(1).first(), QStringLiteral("9"));
    QTest::mouseClick(header, Qt::LeftButton, {}, count);
    EXPECT_EQ(column(1).first(), QStringLiteral("100"));
    EXPECT_EQ(clicked, QList<int>({1, 1}));

    grid.SetColumnSort(false);
    QTest::mouseClick(header, Qt::LeftButton, {}, count);
    EXPECT_EQ(column(1).first(), QStringLiteral("100"));
}

TEST_F(GridTest, DraggingAHeadingMovesTheColumnAndKeepsIndexToPositionMapping)
{
    auto *header = grid.findChild<GridHeader *>();
    ASSERT_NE(header, nullptr);
    const int y = header->height() / 2;
    const auto drag = [header, y](int fromX, int toX) {
        QTest::mousePress(header, Qt::LeftButton, {}, QPoint(fromX, y));
        QTest::mouseMove(header, QPoint((fromX + toX) / 2, y));
        QTest::mouseMove(header, QPoint(toX, y));
        QTest::mouseRelease(header, Qt::LeftButton, {}, QPoint(toX, y));
    };
    // Drag "Tag" (index 2) onto the left half of "Name": it becomes the first column.
    drag(grid.ColLeft(2) + 40, 20);

    EXPECT_EQ(grid.ColPosition(2), 0);
    EXPECT_EQ(grid.ColPosition(0), 1);
    EXPECT_EQ(grid.ColPosition(1), 2);
    EXPECT_EQ(grid.ColHeading(0), QStringLiteral("Tag"));
    EXPECT_EQ(grid.CellText(0, grid.ColPosition(2)), QStringLiteral("x"));
    EXPECT_EQ(grid.CellText(0, grid.ColPosition(0)), QStringLiteral("beta"));
    EXPECT_EQ(grid.ColType(grid.ColPosition(1)), GridColumnType::Number);

    // New items fill by position, and the mapping puts each value under its heading.
    const int row = grid.AddItem();
    grid.SetCellText(row, grid.ColPosition(0), QStringLiteral("delta"));
    EXPECT_EQ(grid.CellText(row, 1), QStringLiteral("delta"));
    EXPECT_EQ(grid.ColHeading(1), QStringLiteral("Name"));

    // Dropped behind the last heading, it goes back to the end.
    drag(40, grid.ColLeft(2) + grid.ColWidth(2) - 5);
    EXPECT_EQ(grid.FormatString(), QStringLiteral("<Name|>Count|<Tag"));
}

TEST_F(GridTest, ResizingAHeadingEdgeChangesTheWidth)
{
    auto *header = grid.findChild<GridHeader *>();
    int resized = 0;
    QObject::connect(&grid, &LynxGrid::ColumnSizeChanged, &grid, [&resized] { ++resized; });
    const int y = header->height() / 2;
    QTest::mousePress(header, Qt::LeftButton, {}, QPoint(120, y));
    QTest::mouseMove(header, QPoint(150, y));
    QTest::mouseRelease(header, Qt::LeftButton, {}, QPoint(150, y));
    EXPECT_EQ(grid.ColWidth(0), 150);
    EXPECT_EQ(grid.ColLeft(1), 150);
    EXPECT_EQ(resized, 1);
}

TEST_F(GridTest, KeyboardMovesTheCurrentRowAndSelection)
{
    grid.setFocus();
    const struct
    {
        Qt::Key key;
        int row;
    } steps[] = {{Qt::Key_Down, 0}, {Qt::Key_Down, 1}, {Qt::Key_End, 2}, {Qt::Key_Up, 1}, {Qt::Key_Home, 0},
                 {Qt::Key_PageDown, 2}};
    for (const auto &step : steps) {
        QTest::keyClick(&grid, step.key);
        EXPECT_EQ(grid.Row(), step.row) << step.key;
        EXPECT_EQ(grid.SelectedCount(), 1);
        EXPECT_TRUE(grid.ItemSelected(step.row));
    }
    QTest::keyClick(&grid, Qt::Key_Right);
    EXPECT_EQ(grid.Col(), 1);

    // Multi-select: Shift extends from the anchor.
    grid.SetMultiSelect(true);
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(grid.SelectedCount(), 2);
}

TEST_F(GridTest, MouseSelectsAndStartsEditsByItsTriggers)
{
    Host host;
    attach(host);
    const auto centre = [this](int row, int col) {
        return QPoint(grid.ColLeft(col) + grid.ColWidth(col) / 2, grid.RowTop(row) + grid.RowHeight() / 2);
    };
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(1, 0));
    EXPECT_EQ(grid.Row(), 1);
    EXPECT_FALSE(grid.IsEditing()) << "the first click only makes the cell current";
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(1, 0));
    EXPECT_TRUE(grid.IsEditing());
    QTest::keyClick(editBox(), Qt::Key_Escape);

    QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, centre(2, 2));
    EXPECT_TRUE(grid.IsEditing());
    EXPECT_EQ(host.events.last(), QStringLiteral("edit 2,2"));
    grid.CancelEdit();

    grid.SetEditTrigger(EditF2);
    QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, centre(0, 2));
    EXPECT_FALSE(grid.IsEditing());

    grid.SetMultiSelect(true);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::ControlModifier, centre(2, 0));
    EXPECT_EQ(grid.SelectedCount(), 2);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(1, 0));
    EXPECT_EQ(grid.SelectedCount(), 1);
}

TEST_F(GridTest, HiddenItemsAndColumnsAreSkipped)
{
    grid.SetItemVisible(1, false);
    grid.SetColVisible(1, false);
    EXPECT_EQ(grid.RowTop(2), grid.RowHeight());
    EXPECT_EQ(grid.RowTop(1), -1);
    EXPECT_EQ(grid.ColLeft(2), 120);

    grid.setFocus();
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_Down);
    EXPECT_EQ(grid.Row(), 2);
    QTest::keyClick(&grid, Qt::Key_Right);
    EXPECT_EQ(grid.Col(), 2);
    grid.SetItemVisible(1, true);
    EXPECT_EQ(grid.RowTop(2), 2 * grid.RowHeight());
}

TEST_F(GridTest, TypingEditsOrJumpsToTheMatchingRow)
{
    EXPECT_EQ(grid.FindItem(QStringLiteral("GAMMA"), 0), 2);
    EXPECT_EQ(grid.FindItem(QStringLiteral("gam"), 0), -1);
    EXPECT_EQ(grid.FindItem(QStringLiteral("gam"), 0, 0, true), 2);
    EXPECT_EQ(grid.FindItem(QStringLiteral("beta"), 0, 1), -1);

    grid.setFocus();
    grid.SetSearchColumn(0);
    QTest::keyClicks(&grid, QStringLiteral("ga"));
    EXPECT_EQ(grid.Row(), 2);
    EXPECT_FALSE(grid.IsEditing());

    grid.SetEditTrigger(EditAnyKey);
    grid.SetColInputFilter(0, QStringLiteral(">"));
    QTest::keyClick(&grid, Qt::Key_Q);
    ASSERT_TRUE(grid.IsEditing());
    EXPECT_EQ(editBox()->text(), QStringLiteral("Q")) << "the first key replaces the text, through the filter";
}

TEST_F(GridTest, CellsOutsideTheGridAnswerEmptyAndRemovalKeepsTheCurrentItem)
{
    EXPECT_EQ(grid.CellText(3, 0), QString());
    EXPECT_EQ(grid.CellText(0, 9), QString());
    EXPECT_EQ(grid.ItemData(-1), 0);
    EXPECT_FALSE(grid.CellChecked(7, 0));

    grid.GotoCell(2, 0);
    grid.RemoveItem(0);
    EXPECT_EQ(grid.Row(), 1);
    EXPECT_EQ(grid.CellText(grid.Row(), 0), QStringLiteral("gamma"));
    grid.Clear();
    EXPECT_EQ(grid.ItemCount(), 0);
    EXPECT_EQ(grid.Row(), -1);
    EXPECT_EQ(grid.Cols(), 3);
}

} // namespace
