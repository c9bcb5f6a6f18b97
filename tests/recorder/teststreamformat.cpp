#include "recorder/streamformat.h"

#include <gtest/gtest.h>

TEST(StreamFormat, ContentTypeNamesTheFormat)
{
    const struct
    {
        const char16_t *type;
        StreamFormat format;
    } rows[] = {{u"audio/mpeg", StreamFormat::Mp3},
                {u"audio/aac", StreamFormat::Aac},
                {u"Audio/AACP", StreamFormat::Aac},
                {u"audio/x-aac; charset=utf-8", StreamFormat::Aac},
                {u" application/ogg ", StreamFormat::Ogg},
                {u"audio/ogg;codecs=opus", StreamFormat::Ogg},
                {u"audio/aac-x", StreamFormat::Mp3},
                {u"video/ogg", StreamFormat::Mp3},
                {u"", StreamFormat::Mp3}};
    for (const auto &row : rows)
        EXPECT_EQ(formatFromContentType(row.type), row.format) << QString::fromUtf16(row.type).toStdString();
}

TEST(StreamFormat, TemplateEndsInTheFormatsExtension)
{
    const struct
    {
        const char16_t *templ;
        StreamFormat format;
        const char16_t *expected;
    } rows[] = {{u".\\%STATION%_%DATE%_%TIME%.mp3", StreamFormat::Aac, u".\\%STATION%_%DATE%_%TIME%.aac"},
                {u"%SONG%.MP3", StreamFormat::Ogg, u"%SONG%.ogg"},
                {u"%SONG%.MP3", StreamFormat::Mp3, u"%SONG%.MP3"},
                {u"x.aac", StreamFormat::Mp3, u"x.mp3"},
                {u"x.ogg", StreamFormat::Ogg, u"x.ogg"},
                {u"/music/%STATION% - %SONG%", StreamFormat::Aac, u"/music/%STATION% - %SONG%.aac"},
                {u"take.wav", StreamFormat::Mp3, u"take.wav.mp3"},
                {u"mp3", StreamFormat::Ogg, u"mp3.ogg"}};
    for (const auto &row : rows)
        EXPECT_EQ(templateWithExtension(QString::fromUtf16(row.templ), row.format),
                  QString::fromUtf16(row.expected))
            << QString::fromUtf16(row.templ).toStdString();
    EXPECT_EQ(formatExtension(StreamFormat::Aac), QStringLiteral(".aac"));
    EXPECT_EQ(formatName(StreamFormat::Ogg), QStringLiteral("Ogg"));
}
