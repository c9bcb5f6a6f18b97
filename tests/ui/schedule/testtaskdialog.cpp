#include "ui/schedule/taskdialog.h"

#include "schedule/task.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "support/accessiblenames.h"
#include "support/storedtask.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST_F(StoredTaskTest, TheDialogShowsTheTaskAndOkSavesTheChanges)
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
    EXPECT_TRUE(stored()->ShowProperties(nullptr)) << "OK confirms";
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

TEST_F(StoredTaskTest, CancelEscapeAndRefusedInputLeaveTheTaskAsSaved)
{
    const QByteArray before = TempProfile::readFile(parts->service().fileName(taskName));
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
        EXPECT_FALSE(stored()->Edit(nullptr)) << "nothing was confirmed";
        EXPECT_EQ(TempProfile::readFile(parts->service().fileName(taskName)), before);
    }
    answer = [](TaskDialog &dialog) {
        child<QDateEdit>(&dialog, "dtStart")->setDate(QDate(2001, 1, 1));
        EXPECT_EQ(child<QLabel>(&dialog, "lblNotice")->text(), TaskDialog::pastNotice());
        child<QComboBox>(&dialog, "cboSchedule")->setCurrentIndex(TaskDialog::RepeatDaily);
        EXPECT_EQ(child<QLabel>(&dialog, "lblNotice")->text(), QString()) << "a daily start has days ahead";
    };
    stored()->Edit(nullptr);
}

TEST_F(StoredTaskTest, TheDialogSaysWhenTheRecordingWillRunWithoutAWindow)
{
    const struct
    {
        qint32 flags;
        QStringList display;
        bool windowless;
    } rows[] = {{TaskFlags::Interactive, {u"DISPLAY=:0"_s}, false},
                {TaskFlags::Interactive, {}, true},
                {0, {u"DISPLAY=:0"_s}, true}};
    for (const auto &row : rows) {
        setup.display = row.display;
        parts = std::make_unique<SchedulerParts>(setup);
        const std::shared_ptr<Task> task = stored();
        task->SetFlags(row.flags);
        task->Save();
        answer = [&row](TaskDialog &dialog) {
            const QLabel *window = child<QLabel>(&dialog, "lblWindow");
            EXPECT_EQ(window->isVisibleTo(&dialog), row.windowless);
            EXPECT_EQ(window->text(), row.windowless ? TaskDialog::windowlessNotice() : QString());
        };
        stored()->Edit(nullptr);
    }
}

} // namespace
