#include "recorder/cuesheet.h"

#include "recorder/songframes.h"
#include "support/testaudio.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace TestAudio;

namespace {

QString sheetOnDisk(const CueSheet &sheet)
{
    QFile file(sheet.path());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList indexLines(const QString &text)
{
    QStringList found;
    for (const QString &line : text.split(QStringLiteral("\r\n")))
        if (line.trimmed().startsWith(QStringLiteral("INDEX 01 ")))
            found.append(line.trimmed().mid(9));
    return found;
}

} // namespace

TEST(CueSheet, ListsEachTitleWhereItsAudioBeginsInTheFile)
{
    const Encoded &audio = encoded(Clip::Mp3);
    SongFrames frames(StreamFormat::Mp3, audio.bytes.size());
    frames.push(audio.bytes);
    frames.finish();
    const QList<Packet> reference = packets(audio.path);
    CueSheet sheet(writeFile(QStringLiteral("Radio \"X\" 07-09.mp3"), audio.bytes), StreamFormat::Mp3,
                   QStringLiteral("Radio \"X\""));
    EXPECT_TRUE(sheet.addTrack(QStringLiteral("Intro"), frames.timeAt(0)));
    // A title begins at the first frame at or after its position in the stream.
    EXPECT_TRUE(sheet.addTrack(QStringLiteral("Band - Say \"Hi\""), frames.timeAt(reference[40].pos + 5)));
    EXPECT_TRUE(sheet.addTrack(QStringLiteral(" - "), frames.timeAt(reference[90].pos)));
    EXPECT_TRUE(sheet.finish(frames.timeAt(audio.bytes.size())));
    const QString expected = QStringLiteral("REM COMMENT \"Tunecatch\"\r\n"
                                            "PERFORMER \"Radio 'X'\"\r\n"
                                            "TITLE \"Radio 'X'\"\r\n"
                                            "FILE \"Radio \"X\" 07-09.mp3\" MP3\r\n"
                                            "  TRACK 01 AUDIO\r\n"
                                            "    TITLE \"Intro\"\r\n"
                                            "    INDEX 01 00:00:00\r\n"
                                            "  TRACK 02 AUDIO\r\n"
                                            "    PERFORMER \"Band\"\r\n"
                                            "    TITLE \"Say 'Hi'\"\r\n"
                                            "    INDEX 01 %1\r\n"
                                            "  TRACK 03 AUDIO\r\n"
                                            "    INDEX 01 %2\r\n");
    // mm:ss:ff of ffprobe's time for the frame, 75 frames a second.
    const auto cueTime = [](double seconds) {
        const int cueFrames = int(seconds * 75);
        return QStringLiteral("%1:%2:%3")
            .arg(cueFrames / 75 / 60, 2, 10, QLatin1Char('0'))
            .arg(cueFrames / 75 % 60, 2, 10, QLatin1Char('0'))
            .arg(cueFrames % 75, 2, 10, QLatin1Char('0'));
    };
    EXPECT_EQ(sheetOnDisk(sheet), expected.arg(cueTime(reference[41].time), cueTime(reference[90].time)));
    EXPECT_TRUE(sheet.path().endsWith(QStringLiteral("/Radio \"X\" 07-09.cue")));
}

TEST(CueSheet, KeepsTracksInOrderAndWithinTheFormatsLimits)
{
    CueSheet sheet(writeFile(QStringLiteral("long.ogg"), {}), StreamFormat::Ogg, QStringLiteral("Station"));
    const qint64 second = 1000000000;
    sheet.addTrack(QStringLiteral("A"), 0);
    sheet.addTrack(QStringLiteral("B"), 6000 * second);
    sheet.addTrack(QStringLiteral("C"), 6000 * second + second / 100); // the same 1/75 s: replaces B
    sheet.addTrack(QStringLiteral("D"), 10 * second);                  // back in time: replaces C
    EXPECT_EQ(indexLines(sheet.text()),
              QStringList({QStringLiteral("00:00:00"), QStringLiteral("100:00:00")}));
    EXPECT_TRUE(sheet.text().contains(QStringLiteral("TITLE \"D\"")));
    EXPECT_TRUE(sheet.text().contains(QStringLiteral("FILE \"long.ogg\" WAVE")));
    for (int i = 0; i < 120; ++i)
        sheet.addTrack(QStringLiteral("T%1").arg(i), (7000 + i) * second);
    EXPECT_EQ(indexLines(sheet.text()).size(), CueSheet::MaxTracks);
    // A title that comes as the recording stops has no audio.
    CueSheet last(writeFile(QStringLiteral("last.mp3"), {}), StreamFormat::Mp3, QStringLiteral("Station"));
    last.addTrack(QStringLiteral("A"), 0);
    last.addTrack(QStringLiteral("B"), 5 * second);
    EXPECT_TRUE(last.finish(5 * second));
    EXPECT_EQ(indexLines(sheetOnDisk(last)), QStringList({QStringLiteral("00:00:00")}));
}

TEST(CueSheet, AFullDiskCostsTheNewestTitlesOnly)
{
    CueSheet sheet(writeFile(QStringLiteral("full.mp3"), {}), StreamFormat::Mp3, QStringLiteral("Station"));
    ASSERT_TRUE(sheet.addTrack(QStringLiteral("A"), 0));
    const QString written = sheetOnDisk(sheet);
    {
        const FileSizeLimit full(written.size() + 10);
        EXPECT_FALSE(sheet.addTrack(QStringLiteral("B"), 1000000000));
        EXPECT_FALSE(sheet.error().isEmpty());
    }
    EXPECT_EQ(sheetOnDisk(sheet), written);
    EXPECT_TRUE(sheet.addTrack(QStringLiteral("C"), 2000000000));
    EXPECT_EQ(indexLines(sheetOnDisk(sheet)).size(), 3);
    EXPECT_TRUE(sheet.error().isEmpty());
}
