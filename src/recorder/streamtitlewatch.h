#pragma once

#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/streamconnection.h"

#include <QObject>
#include <QString>

// Follows the titles a station names in its stream, keeping none of its
// audio: the song now playing, for a player whose media backend does not
// report it. It reads a connection of its own, with the request and the
// reconnections a recording has, and lets go of a station that sends no
// titles (no metadata interval) or cannot be reached, saying nothing.
class StreamTitleWatch : public QObject, private IcyStreamHost
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StreamTitleWatch)

public:
    explicit StreamTitleWatch(StreamTiming timing = {}, QObject *parent = nullptr);
    ~StreamTitleWatch() override;

    // Whether an address is a station's stream (http, https or icyx) that may name titles.
    static bool watches(const QString &address);
    // Follows the station at address, after ending what was followed, from
    // no title; an address that is no station's stream is not followed.
    void watch(const QString &address);
    // Ends the connection; the title stays as it was.
    void stop();
    bool watching() const { return m_watching; }
    QString title() const { return m_title; }

signals:
    void titleChanged(const QString &title);

private:
    void onData(const QByteArray &bytes);

    QString shownTitle() const override { return m_title; }
    void showTitle(const QString &title) override;
    void setWriteEnabled(bool) override {}
    void WriteToDisk(QByteArrayView, bool) override {}
    void NewSong(const QString &) override {}
    // Nothing is written, so nothing has to be opened first.
    bool isFileOpen() const override { return true; }
    void switchToContinuous() override {}

    StreamConnection m_connection;
    IcyStream m_stream;
    QString m_title;
    bool m_watching = false;
};
