// The Schedule button and the list window against a user manager that never
// answers: a systemctl that hangs until the test lets it go.
#include "ui/schedule/schedulingsetup.h"

#include "support/eventwait.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "ui/schedule/frmscheduledtasks.h"
#include "ui/schedule/taskdialog.h"

#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class SilentManager : public ProfileTest
{
public:
    void SetUp() override
    {
        TempProfile::writeFile(fake, "#!/bin/sh\necho \"$*\" >> \"$0.calls\"\n"
                                     "while [ -e \"$0.hang\" ]; do sleep 0.05; done\n");
        QFile::setPermissions(fake, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        TempProfile::writeFile(fake + u".hang"_s, "");
        setup.unitFolder = profile.root() + u"/units"_s;
        // Long enough that a call waited for would still be running when the click returns.
        setup.systemctl = std::make_shared<ProcessSystemctl>(fake, 60000);
        setup.programPath = u"/opt/tunecatch/tunecatch"_s;
        setup.display = QStringList();
        setup.answerDialog = [](TaskDialog &dialog) {
            QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdOk"_s), Qt::LeftButton);
        };
    }
    void TearDown() override { QFile::remove(fake + u".hang"_s); }
    QString calls() const { return QString::fromUtf8(TempProfile::readFile(fake + u".calls"_s)); }
    // Every file and link under the unit folder.
    QStringList unitFiles() const
    {
        QStringList found;
        QDirIterator it(setup.unitFolder, QDir::Files | QDir::System, QDirIterator::Subdirectories);
        while (it.hasNext())
            found.append(it.next());
        return found;
    }
    const QString fake = profile.root() + u"/systemctl"_s;
    SchedulingSetup setup;
};

TEST_F(SilentManager, ScheduleAndTheListGoOnWhileTheManagerDoesNotAnswer)
{
    QWidget owner;
    ScriptedPrompt prompt;
    prompt.answers = {true};
    RecordingInputs inputs;
    inputs.station = u"Jazz24"_s;
    scheduleRecording(
        inputs, [] { return QDateTime(QDate(2031, 1, 31), QTime(20, 15)); }, prompt, setup, &owner);
    EXPECT_TRUE(setup.systemctl->busy()) << "the click returned while the manager still owes its answer";
    auto *window = owner.findChild<FrmScheduledTasks *>();
    ASSERT_NE(window, nullptr);
    const auto *list = window->findChild<QTreeWidget *>(u"lstTasks"_s);
    ASSERT_EQ(list->topLevelItemCount(), 1) << "the tasks show at once";
    EXPECT_EQ(list->topLevelItem(0)->text(FrmScheduledTasks::ColumnName), u"Jazz24_2031-01-31_20-15"_s);
    const auto *notice = window->findChild<QLabel *>(u"lblNotice"_s);
    EXPECT_EQ(notice->text(), FrmScheduledTasks::askingNotice());
    EXPECT_TRUE(window->findChild<QProgressBar *>(u"barBusy"_s)->isVisible());
    bool turned = false;
    QTimer::singleShot(0, [&turned] { turned = true; });
    ASSERT_TRUE(waitUntil([&turned] { return turned; }, 5000)) << "the event loop turns";
    ASSERT_TRUE(waitUntil([this] { return calls() == u"--user daemon-reload\n"_s; }, 5000))
        << calls().toStdString();
    EXPECT_TRUE(setup.systemctl->busy()) << "still waiting, with the window live";
    QFile::remove(fake + u".hang"_s);
    EXPECT_TRUE(waitUntil([notice] { return !notice->isVisible(); }, 20000));
    EXPECT_TRUE(
        waitUntil([window] { return !window->findChild<QProgressBar *>(u"barBusy"_s)->isVisible(); }, 20000));
    EXPECT_EQ(list->topLevelItem(0)->text(FrmScheduledTasks::ColumnLastRun), u"Never"_s);
    EXPECT_TRUE(calls().contains(u"--user show --timestamp=unix"_s)) << calls().toStdString();
}

TEST_F(SilentManager, CancelInTheDialogTakesBackTheTaskTheClickMadeOkKeepsIt)
{
    QWidget owner;
    ScriptedPrompt prompt;
    RecordingInputs inputs;
    inputs.station = u"Jazz24"_s;
    bool shown = false;
    setup.answerDialog = [&](TaskDialog &dialog) {
        shown = true;
        EXPECT_FALSE(unitFiles().isEmpty()) << "the task is saved before its dialog opens";
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdCancel"_s), Qt::LeftButton);
    };
    scheduleRecording(
        inputs, [] { return QDateTime(QDate(2031, 1, 31), QTime(20, 15)); }, prompt, setup, &owner);
    ASSERT_TRUE(shown);
    EXPECT_TRUE(unitFiles().isEmpty())
        << "units and the timer's link go, answered or not: " << unitFiles().join(u' ').toStdString();
    EXPECT_TRUE(prompt.shown.isEmpty()) << "nothing more is asked";
    EXPECT_EQ(owner.findChild<FrmScheduledTasks *>(), nullptr);
    QFile::remove(fake + u".hang"_s);
    ASSERT_TRUE(waitUntil([this] { return !setup.systemctl->busy(); }, 20000));
    QStringList verbs;
    for (const QString &call : calls().split(u'\n', Qt::SkipEmptyParts))
        verbs.append(call.section(u' ', 1, 1));
    EXPECT_EQ(verbs.join(u' '), u"daemon-reload restart stop daemon-reload"_s)
        << "the manager stops the timer it was given and forgets it";

    // The same click answered with OK keeps the task.
    setup.answerDialog = [](TaskDialog &dialog) {
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdOk"_s), Qt::LeftButton);
    };
    scheduleRecording(
        inputs, [] { return QDateTime(QDate(2031, 1, 31), QTime(20, 16)); }, prompt, setup, &owner);
    EXPECT_EQ(unitFiles().size(), 3) << unitFiles().join(u' ').toStdString();
    EXPECT_EQ(prompt.texts(), QStringList{u"Do you wish open Task Scheduler?"_s});
    EXPECT_TRUE(waitUntil([this] { return !setup.systemctl->busy(); }, 20000));
}

} // namespace
