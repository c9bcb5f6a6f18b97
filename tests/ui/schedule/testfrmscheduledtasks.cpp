#include "ui/schedule/frmscheduledtasks.h"

#include "schedule/task.h"
#include "support/accessiblenames.h"
#include "support/storedtask.h"
#include "ui/schedule/taskdialog.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimeZone>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST_F(StoredTaskTest, TheWindowListsTheTasksAndDeletesOrEditsThem)
{
    systemctl->showOutput =
        "NextElapseUSecRealtime=Fri 2031-01-31 21:15:00 UTC\nLastTriggerUSec=\n"
        "ActiveState=active\n\nExecMainStartTimestamp=\nExecMainStatus=0\nActiveState=inactive\n";
    QPointer<FrmScheduledTasks> window = new FrmScheduledTasks(setup, prompt);
    window->show();
    auto *list = child<QTreeWidget>(window, "lstTasks");
    ASSERT_EQ(list->topLevelItemCount(), 1);
    const QTreeWidgetItem *row = list->topLevelItem(0);
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnName), taskName);
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnNextRun),
              QDateTime(QDate(2031, 1, 31), QTime(21, 15), QTimeZone::utc())
                  .toLocalTime()
                  .toString(u"yyyy-MM-dd HH:mm"_s));
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnLastRun), u"Never"_s);
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnStatus), TaskStatus::text(TaskStatus::HasNotRun));
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnCommandLine), commandLine);
    EXPECT_FALSE(child<QLabel>(window, "lblNotice")->isVisible());
    expectAccessibleNames(window);
    // Cancel on a listed task keeps it as it was.
    answer = [](TaskDialog &dialog) {
        child<QLineEdit>(&dialog, "txtComment")->setText(u"edited"_s);
        QTest::mouseClick(child<QPushButton>(&dialog, "cmdCancel"), Qt::LeftButton);
    };
    QTest::mouseClick(child<QPushButton>(window, "cmdEdit"), Qt::LeftButton);
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(stored()->Comment(), u"Recording from Jazz 24"_s);
    answer = [](TaskDialog &dialog) {
        child<QLineEdit>(&dialog, "txtComment")->setText(u"edited"_s);
        QTest::mouseClick(child<QPushButton>(&dialog, "cmdOk"), Qt::LeftButton);
    };
    QTest::mouseClick(child<QPushButton>(window, "cmdEdit"), Qt::LeftButton);
    EXPECT_EQ(stored()->Comment(), u"edited"_s);
    prompt.answers = {false, true};
    QTest::mouseClick(child<QPushButton>(window, "cmdDelete"), Qt::LeftButton);
    EXPECT_EQ(list->topLevelItemCount(), 1);
    QTest::mouseClick(child<QPushButton>(window, "cmdDelete"), Qt::LeftButton);
    EXPECT_EQ(prompt.texts().last(), u"Delete the scheduled recording \"Jazz24_2031-01-31_20-15\"?"_s);
    EXPECT_EQ(list->topLevelItemCount(), 0);
    EXPECT_TRUE(QDir(setup.unitFolder).entryList(QDir::Files).isEmpty());
    EXPECT_FALSE(child<QPushButton>(window, "cmdDelete")->isEnabled());
    systemctl->reachable = false;
    QTest::mouseClick(child<QPushButton>(window, "cmdRefresh"), Qt::LeftButton);
    EXPECT_TRUE(child<QLabel>(window, "lblNotice")->isVisible());
    EXPECT_EQ(child<QLabel>(window, "lblNotice")->text(), FrmScheduledTasks::noManagerNotice());
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(!window || !window->isVisible());
    delete window.data();
}

} // namespace
