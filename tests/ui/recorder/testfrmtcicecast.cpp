// End to end: the recorder window against Debian's icecast2, fed by ezstream
// with MP3 files made here, all on 127.0.0.1.
#include "ui/recorder/frmtc.h"

#include "base/apppaths.h"
#include "base/launchoptions.h"
#include "recorder/songcutter.h"
#include "support/fakepowercontrol.h"
#include "support/eventwait.h"
#include "support/icecaststation.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class RecorderAgainstIcecast : public ProfileTest
{
protected:
    void SetUp() override
    {
        if (const QString missing = IcecastStation::missing(); !missing.isEmpty())
            GTEST_SKIP() << missing.toStdString();
        // No burst on connect: a burst would place titles by the time of sending, not by the audio.
        const QString failed = station.start(false);
        ASSERT_TRUE(failed.isEmpty()) << failed.toStdString();
    }
    static double duration(const QString &file)
    {
        const auto [code, output] = IcecastStation::run(
            u"ffprobe -v error -show_entries format=duration -of csv=p=0 \"%1\""_s.arg(file));
        return code == 0 ? output.trimmed().toDouble() : -1;
    }
    IcecastStation station;
    ScriptedPrompt prompt;
    LaunchOptions launch;
    FakePowerControl power;
};

TEST_F(RecorderAgainstIcecast, SingleSongRecordingSplitsAtEachTitleAndEveryFileDecodes)
{
    // Songs of 3.3 s with pauses in them: the split is the whole-frame rule's,
    // at the titles (the cut at the quiet moment is tested on songs with gaps).
    SongCutter::saveQuietSearchSetting(false);
    FrmTC window(prompt, launch, power);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    const auto label = [&](const char *name) { return window.findChild<QLabel *>(QLatin1StringView(name)); };
    window.findChild<QLineEdit *>(u"txtStream"_s)->setText(station.url());
    window.findChild<QLineEdit *>(u"txtSave"_s)->setText(u"./%STATION%_%SONG%.mp3"_s);
    label("LblStation")->setText(u"Ice"_s);
    window.findChild<QCheckBox *>(u"chkSingleSong"_s)->setChecked(true);
    auto *record = window.findChild<QPushButton *>(u"cmdRecord"_s);
    window.show();
    record->click();
    // Two title changes after the first title; stop while the buffer holds
    // audio only, so the last file ends on audio too.
    QStringList seen;
    const bool changedTwice = waitUntil(
        [&] {
            const QString title = label("lbSong")->text();
            if (!title.isEmpty() && (seen.isEmpty() || seen.last() != title))
                seen.append(title);
            if (seen.size() < 3 || window.stream().receiveBufferLength() > window.stream().MetaInterval())
                return false;
            record->click();
            return true;
        },
        40000);
    ASSERT_TRUE(changedTwice) << "titles seen: " << seen.join(u", "_s).toStdString();
    EXPECT_EQ(label("lbStream")->text(), u"Icecast Test FM"_s);
    EXPECT_EQ(label("lbGenre")->text(), u"Speech"_s);
    QStringList expected;
    for (const QString &title : seen) {
        EXPECT_TRUE(IcecastStation::titles().contains(title)) << title.toStdString();
        expected.append(u"Ice_"_s + title + u".mp3"_s);
    }
    expected.sort();
    const QDir recordings(AppPaths::recordingsFolder());
    EXPECT_EQ(recordings.entryList(QDir::Files, QDir::Name), expected);
    for (const QString &name : expected) {
        const auto [code, output] =
            IcecastStation::run(u"mpg123 -t -q \"%1\""_s.arg(recordings.filePath(name)));
        EXPECT_EQ(code, 0) << name.toStdString() << ": " << output.toStdString();
        EXPECT_GT(duration(recordings.filePath(name)), 0.5) << name.toStdString();
    }
    // The middle song is whole: its own length (3.3 s) plus the interval it
    // shares with the song before, give or take the one-second intervals the
    // split falls on (titles sit on interval boundaries, so a song may lose up
    // to one interval at its start).
    const double middle = duration(recordings.filePath(u"Ice_"_s + seen[1] + u".mp3"_s));
    EXPECT_GT(middle, 2.5);
    EXPECT_LT(middle, 5.5);
}

} // namespace
