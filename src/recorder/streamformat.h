#pragma once

#include <QString>
#include <QStringView>

// The container a station's audio arrives in, as its content type names it.
enum class StreamFormat
{
    Mp3,
    Aac, // AAC and AAC+ in ADTS frames
    Ogg,
};

// The format a response's content type announces: "audio/mpeg" is MP3;
// "audio/aac", "audio/aacp" and "audio/x-aac" are ADTS; "application/ogg" and
// "audio/ogg" are Ogg. Letter case and parameters ("; charset=...") do not
// count; an unknown or missing type is taken as MP3, as stations that send none
// almost always are.
StreamFormat formatFromContentType(QStringView contentType);

// The format a station's answer announces in its "content-type:" line (the
// key in any letter case); MP3 when it has none.
StreamFormat formatFromHeader(QStringView header);

// The file extension of a format, with its dot: ".mp3", ".aac", ".ogg".
QString formatExtension(StreamFormat format);

// A short name for display beside the bit rate: "MP3", "AAC", "Ogg".
QString formatName(StreamFormat format);

// The file-name template with the format's extension. The rule looks at the
// template, not at a name made from it, so a placeholder's text ("%SONG%"
// becoming "hit.mp3") never counts as an ending. An ending that is one of the
// known extensions (".mp3", ".aac", ".ogg", any letter case) is replaced by the
// format's; any other template gets the extension added, also one that ends in
// a placeholder or another extension (".wav" becomes ".wav.aac").
QString templateWithExtension(const QString &templ, StreamFormat format);
