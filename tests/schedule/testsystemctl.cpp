// systemctl run as a child process: a user manager that is not there, one
// that answers, and one that never does.
#include "schedule/systemctl.h"

#include "support/eventwait.h"
#include "support/tempprofile.h"
#include "support/usermanager.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// Calls systemctl and waits, through the event loop, for its answer.
std::optional<Systemctl::Result> ask(Systemctl &systemctl, const QStringList &arguments)
{
    std::optional<Systemctl::Result> answer;
    systemctl.call(arguments, [&answer](const Systemctl::Result &result) { answer = result; });
    waitUntil([&answer] { return answer.has_value(); }, 30000);
    return answer;
}

class RealSystemctl : public ProfileTest
{
public:
    // The profile's own runtime folder holds no manager's socket; no session bus either.
    void SetUp() override { qunsetenv("DBUS_SESSION_BUS_ADDRESS"); }
    void TearDown() override
    {
        if (!m_bus.isEmpty())
            qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus);
    }

private:
    const QByteArray m_bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
};

TEST_F(RealSystemctl, NoUserManagerIsToldApartFromOneThatAnswers)
{
    ProcessSystemctl systemctl;
    const std::optional<Systemctl::Result> unreached = ask(systemctl, {u"show"_s, u"--property=Version"_s});
    ASSERT_TRUE(unreached);
    EXPECT_FALSE(unreached->reached) << unreached->error.toStdString();
    UserManager manager;
    if (!manager.running())
        GTEST_SKIP() << manager.why().toStdString();
    const std::optional<Systemctl::Result> reached = ask(systemctl, {u"show"_s, u"--property=Version"_s});
    ASSERT_TRUE(reached);
    EXPECT_TRUE(reached->reached) << reached->error.toStdString();
    EXPECT_EQ(reached->exitCode, 0);
    EXPECT_TRUE(reached->output.startsWith("Version=")) << reached->output.toStdString();
    const std::optional<Systemctl::Result> refused = ask(systemctl, {u"start"_s, u"absent.service"_s});
    ASSERT_TRUE(refused);
    EXPECT_TRUE(refused->reached) << "a refusal is an answer";
    EXPECT_NE(refused->exitCode, 0);
}

// A systemctl that writes down each call and hangs while its hang file exists.
class HangingSystemctl : public ProfileTest
{
public:
    void SetUp() override
    {
        TempProfile::writeFile(program, "#!/bin/sh\necho \"$*\" >> \"$0.calls\"\n"
                                        "while [ -e \"$0.hang\" ]; do sleep 0.05; done\n");
        QFile::setPermissions(program,
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        TempProfile::writeFile(program + u".hang"_s, "");
    }
    QString calls() const { return QString::fromUtf8(TempProfile::readFile(program + u".calls"_s)); }
    void letGo() const { QFile::remove(program + u".hang"_s); }
    const QString program = profile.root() + u"/systemctl"_s;
};

TEST_F(HangingSystemctl, AManagerThatNeverAnswersTimesOutAndTheCallsBehindItFailWithIt)
{
    ProcessSystemctl systemctl(program, 2000);
    QSignalSpy busy(&systemctl, &Systemctl::busyChanged);
    QStringList answered;
    for (const QString &verb : {u"daemon-reload"_s, u"restart"_s}) {
        systemctl.call({verb}, [&answered, verb](const Systemctl::Result &result) {
            answered.append(verb + (result.reached ? u" reached"_s : u" not reached"_s));
        });
    }
    EXPECT_TRUE(systemctl.busy()) << "the calls queue; nothing waits";
    EXPECT_TRUE(answered.isEmpty());
    ASSERT_TRUE(waitUntil([&answered] { return answered.size() == 2; }, 20000));
    EXPECT_EQ(answered, (QStringList{u"daemon-reload not reached"_s, u"restart not reached"_s}));
    EXPECT_EQ(calls(), u"--user daemon-reload\n"_s) << "asked once, then left alone";
    EXPECT_FALSE(systemctl.busy());
    EXPECT_EQ(busy.size(), 2);
    letGo();
}

TEST_F(HangingSystemctl, CallsThatChangeSomethingOutliveTheProgram)
{
    {
        ProcessSystemctl systemctl(program);
        systemctl.call({u"show"_s});
        systemctl.call({u"daemon-reload"_s});
        systemctl.call({u"restart"_s, u"it's.timer"_s});
        systemctl.call({u"show"_s, u"--property=Version"_s});
        ASSERT_TRUE(waitUntil([this] { return !calls().isEmpty(); }, 20000));
    }
    letGo();
    EXPECT_TRUE(waitUntil([this] { return calls().count(u'\n') == 3; }, 20000)) << calls().toStdString();
    EXPECT_EQ(calls(), u"--user show\n--user daemon-reload\n--user restart it's.timer\n"_s);
}

} // namespace
