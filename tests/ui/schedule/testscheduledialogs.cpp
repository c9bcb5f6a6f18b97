// The task dialog and the scheduled recordings window over the systemd store
// in a temporary unit folder.
#include "support/recordingsystemctl.h"
#include "ui/schedule/frmscheduledtasks.h"
#include "schedule/schedule.h"
#include "schedule/task.h"
#include "ui/schedule/taskdialog.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "support/accessiblenames.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>
#include <QTimeZone>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString line = u"-s ./%STATION%.mp3 -a http://h:8000/x -w Jazz 24 -n -t 60 -v"_s;

template <typename T> T *child(QWidget *parent, const char *name)
{
    T *widget = parent->findChild<T *>(QLatin1StringView(name));
    EXPECT_NE(widget, nullptr) << name;
    return widget;
}

class ScheduleDialogs : public ProfileTest
{
public:
    void SetUp() override
    {
        setup.unitFolder = profile.root() + u"/units"_s;
        setup.systemctl = systemctl;
        setup.programPath = u"/opt/tunecatch/tunecatch"_s;
        setup.answerDialog = [this](TaskDialog &dialog) { answer(dialog); };
        parts = std::make_unique<SchedulerParts>(setup);
        Schedule tasks(parts->service());
        const std::shared_ptr<Task> task = tasks.CreateTask(u"Jazz24_2031-01-31_20-15"_s);
        task->SetApplicationName(u"tunecatch"_s);
        task->SetWorkingDirectory(u"/opt/tunecatch/"_s);
        task->setCommandLine(line);
        task->SetComment(u"Recording from Jazz 24"_s);
        const std::shared_ptr<Trigger> trigger = task->Triggers()->Add();
        trigger->setTriggerType(TriggerRecord::Once);
        trigger->setBeginDay(QDate(2031, 1, 31));
        trigger->setStartTime(QTime(21, 15));
        task->Save();
    }
    // The task as a fresh look at the store finds it.
    std::shared_ptr<Task> stored()
    {
        schedule = std::make_unique<Schedule>(parts->service(), &parts->editor());
        schedule->Refresh();
        return schedule->Count() == 1 ? schedule->Job(1) : nullptr;
    }
    std::shared_ptr<RecordingSystemctl> systemctl = std::make_shared<RecordingSystemctl>();
    SchedulingSetup setup;
    std::unique_ptr<SchedulerParts> parts;
    std::unique_ptr<Schedule> schedule;
    std::function<void(TaskDialog &)> answer;
    ScriptedPrompt prompt;
};

TEST_F(ScheduleDialogs, TheDialogShowsTheTaskAndOkSavesTheChanges)
{
    bool shown = false;
    answer = [&shown](TaskDialog &dialog) {
        shown = true;
        EXPECT_EQ(child<QDateEdit>(&dialog, "dtStart")->date(), QDate(2031, 1, 31));
        EXPECT_EQ(child<QTimeEdit>(&dialog, "tmStart")->time(), QTime(21, 15));
        EXPECT_EQ(child<QComboBox>(&dialog, "cboSchedule")->currentIndex(), TaskDialog::RepeatOnce);
        EXPECT_EQ(child<QComboBox>(&dialog, "cboStop")->currentText(), u"After minutes"_s);
        EXPECT_EQ(child<QLineEdit>(&dialog, "txtStop")->text(), u"60"_s);
        EXPECT_EQ(child<QLineEdit>(&dialog, "txtComment")->text(), u"Recording from Jazz 24"_s);
        EXPECT_EQ(child<QLabel>(&dialog, "lblNotice")->text(), QString());
        expectAccessibleNames(&dialog);
        child<QTimeEdit>(&dialog, "tmStart")->setTime(QTime(6, 30));
        child<QComboBox>(&dialog, "cboSchedule")->setCurrentIndex(TaskDialog::RepeatWeekly);
        child<QCheckBox>(&dialog, "chkDay1")->setChecked(true);
        child<QCheckBox>(&dialog, "chkDay5")->setChecked(true);
        child<QComboBox>(&dialog, "cboStop")->setCurrentIndex(2);
        child<QLineEdit>(&dialog, "txtStop")->setText(u"50"_s);
        child<QLineEdit>(&dialog, "txtComment")->setText(u"Weekly jazz"_s);
        QTest::mouseClick(child<QPushButton>(&dialog, "cmdOk"), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    };
    stored()->ShowProperties(nullptr);
    ASSERT_TRUE(shown);
    const std::shared_ptr<Task> task = stored();
    ASSERT_NE(task, nullptr);
    EXPECT_EQ(task->CommandLine(), u"-s ./%STATION%.mp3 -a http://h:8000/x -w Jazz 24 -n -b 50 -v"_s);
    EXPECT_EQ(task->Comment(), u"Weekly jazz"_s);
    const std::shared_ptr<Trigger> trigger = task->Triggers()->item(1);
    EXPECT_EQ(trigger->TriggerType(), TriggerRecord::Weekly);
    EXPECT_EQ(trigger->Weekly_DaysOfTheWeek(), 0x22);
    EXPECT_EQ(trigger->StartTime(), QTime(6, 30));
    EXPECT_EQ(trigger->BeginDay(), QDate(2031, 1, 31));
}

TEST_F(ScheduleDialogs, CancelEscapeAndRefusedInputLeaveTheTaskAsSaved)
{
    const QByteArray before = TempProfile::readFile(parts->service().FileName(u"Jazz24_2031-01-31_20-15"_s));
    const std::function<void(TaskDialog &)> cancels[] = {
        [](TaskDialog &dialog) {
            child<QLineEdit>(&dialog, "txtComment")->setText(u"changed"_s);
            QTest::mouseClick(child<QPushButton>(&dialog, "cmdCancel"), Qt::LeftButton);
        },
        [](TaskDialog &dialog) {
            child<QLineEdit>(&dialog, "txtComment")->setText(u"changed"_s);
            QTest::keyClick(&dialog, Qt::Key_Escape);
        },
        [](TaskDialog &dialog) {
            child<QComboBox>(&dialog, "cboSchedule")->setCurrentIndex(TaskDialog::RepeatWeekly);
            QTest::mouseClick(child<QPushButton>(&dialog, "cmdOk"), Qt::LeftButton);
            EXPECT_EQ(child<QLabel>(&dialog, "lblNotice")->text(), u"Choose at least one day of the week."_s);
        },
        [](TaskDialog &dialog) {
            child<QComboBox>(&dialog, "cboStop")->setCurrentIndex(1);
            child<QLineEdit>(&dialog, "txtStop")->clear();
            QTest::mouseClick(child<QPushButton>(&dialog, "cmdOk"), Qt::LeftButton);
            EXPECT_FALSE(child<QLabel>(&dialog, "lblNotice")->text().isEmpty());
        }};
    for (const auto &cancel : cancels) {
        answer = [&cancel](TaskDialog &dialog) {
            cancel(dialog);
            EXPECT_NE(dialog.result(), QDialog::Accepted);
        };
        stored()->Edit(nullptr);
        EXPECT_EQ(TempProfile::readFile(parts->service().FileName(u"Jazz24_2031-01-31_20-15"_s)), before);
    }
    answer = [](TaskDialog &dialog) {
        child<QDateEdit>(&dialog, "dtStart")->setDate(QDate(2001, 1, 1));
        EXPECT_EQ(child<QLabel>(&dialog, "lblNotice")->text(), TaskDialog::pastNotice());
        child<QComboBox>(&dialog, "cboSchedule")->setCurrentIndex(TaskDialog::RepeatDaily);
        EXPECT_EQ(child<QLabel>(&dialog, "lblNotice")->text(), QString()) << "a daily start has days ahead";
    };
    stored()->Edit(nullptr);
}

TEST_F(ScheduleDialogs, TheWindowListsTheTasksAndDeletesOrEditsThem)
{
    systemctl->showOutput =
        "NextElapseUSecRealtime=Fri 2031-01-31 21:15:00 UTC\nLastTriggerUSec=\n"
        "ActiveState=active\n\nExecMainStartTimestamp=\nExecMainStatus=0\nActiveState=inactive\n";
    QPointer<FrmScheduledTasks> window = new FrmScheduledTasks(setup, prompt);
    window->show();
    auto *list = child<QTreeWidget>(window, "lstTasks");
    ASSERT_EQ(list->topLevelItemCount(), 1);
    const QTreeWidgetItem *row = list->topLevelItem(0);
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnName), u"Jazz24_2031-01-31_20-15"_s);
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnNextRun),
              QDateTime(QDate(2031, 1, 31), QTime(21, 15), QTimeZone::utc())
                  .toLocalTime()
                  .toString(u"yyyy-MM-dd HH:mm"_s));
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnLastRun), u"Never"_s);
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnStatus), TaskStatus::Text(TaskStatus::HasNotRun));
    EXPECT_EQ(row->text(FrmScheduledTasks::ColumnCommandLine), line);
    EXPECT_FALSE(child<QLabel>(window, "lblNotice")->isVisible());
    expectAccessibleNames(window);
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
