#include "recorder/launchreport.h"

#include "recorder/streamrecorder.h"
#include "support/eventwait.h"
#include "support/fakepowercontrol.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using LaunchReportTest = ProfileTest;

// Launched recordings that end each way: the lines they leave and the exit status.
TEST_F(LaunchReportTest, EveryStatusIsALineAndTheEndIsTheExitStatus)
{
    IcyServer server;
    server.songs = {{"Song", 2000}};
    ASSERT_TRUE(server.start());
    IcyServer dropping;
    dropping.songs = {{"Song", 2000}};
    dropping.stallAfter = 2;
    ASSERT_TRUE(dropping.start());
    const QString refused = u"127.0.0.1:"_s + QString::number(IcyServer::refusedPort()) + u'/';
    const struct
    {
        QString address, saveTemplate;
        double megabytes; // 0: no limit
        int status;
        QString last; // the last line's beginning
    } rows[] = {
        {server.url(), u"./%STATION%.mp3"_s, 0.1, ExitStatus::Done, u"The recording reached its limit."_s},
        {{}, u"./%STATION%.mp3"_s, 0, ExitStatus::BadSwitches, u"No stream address given (-a)."_s},
        {server.url(), u"./%STATION%.mp3"_s, -1, ExitStatus::BadSwitches, u"A stop limit (-t, -b)"_s},
        {u"host:x/"_s, u"./%STATION%.mp3"_s, 0, ExitStatus::BadSwitches, u"Invalid stream address"_s},
        {refused, u"./%STATION%.mp3"_s, 0, ExitStatus::Unreachable, StreamConnection::TextNoConnection},
        {server.url(), u"/proc/none/%STATION%.mp3"_s, 0, ExitStatus::OutputFailed, u"Unable to open"_s},
        {dropping.url(), u"./%STATION%.mp3"_s, 0, ExitStatus::Dropped,
         u"Radio Station could not be reached"_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address.toStdString() + ' ' + row.saveTemplate.toStdString());
        ScriptedPrompt prompt;
        FakePowerControl power;
        StreamRecorder recorder(prompt, power, {true, {}, {1000ms, {50ms, 50ms}}});
        QStringList lines;
        LaunchReport report([&lines](const QString &line) { lines << line; });
        report.watch(recorder);
        RecordingSettings settings;
        settings.address = row.address;
        settings.saveTemplate = row.saveTemplate;
        settings.station = u"Loop"_s;
        if (row.megabytes != 0)
            settings.limit = {{RecorderStats::Limit::Megabytes, row.megabytes}};
        recorder.setSettings(settings);
        recorder.start();
        if (row.address == dropping.url()) {
            ASSERT_TRUE(waitUntil([&] { return dropping.clientCount() == 2; }, 15000));
            dropping.stopListening();
        }
        ASSERT_TRUE(waitUntil([&] { return !recorder.Recording(); }, 15000));
        EXPECT_EQ(report.exitStatus(), row.status);
        ASSERT_FALSE(lines.isEmpty());
        EXPECT_TRUE(lines.last().startsWith(row.last)) << lines.join(u" | "_s).toStdString();
        if (row.status == ExitStatus::Done || row.status == ExitStatus::Dropped) {
            EXPECT_TRUE(lines.contains(u"Recording Loopback FM"_s));
        }
    }
}

} // namespace
