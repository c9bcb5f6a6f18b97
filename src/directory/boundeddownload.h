#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

// One GET whose answer is held to a number of bytes and a time: a server that
// sends without end, trickles or falls silent ends the download instead of
// growing memory or waiting for ever. Ends with exactly one finished();
// destroying it earlier aborts the transfer without it.
class BoundedDownload : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BoundedDownload)

public:
    struct Limits
    {
        qint64 maxBytes = 16 * 1024 * 1024;
        int silenceMs = 15000;  // no byte for so long ends it
        int deadlineMs = 60000; // the whole transfer, however it trickles
    };
    enum class Outcome
    {
        Running,
        Done,
        NetworkError, // no connection, refused, TLS, a broken transfer
        HttpError,    // an answer with a status of 400 or more
        TooLarge,
        TimedOut,
    };

    BoundedDownload(QNetworkAccessManager &network, const QNetworkRequest &request, const Limits &limits,
                    QObject *parent = nullptr);
    ~BoundedDownload() override;

    // Stops the transfer without finished(). Safe from any slot, also one of
    // finished() itself.
    void cancel();

    Outcome outcome() const { return m_outcome; }
    const QByteArray &body() const { return m_body; }
    int httpStatus() const { return m_status; }
    // Why it failed, for people; empty when done.
    QString errorText() const;
    // Another server might answer: no connection, a timeout, or a status of
    // 500 or more. A refused request or a bad answer would be the same there.
    bool worthRetrying() const;

signals:
    void finished();

private:
    void onReadyRead();
    void onFinished();
    void end(Outcome outcome);

    // Its network manager may go first and take the reply with it.
    QPointer<QNetworkReply> m_reply;
    Limits m_limits;
    QTimer m_silence;
    QTimer m_deadline;
    QByteArray m_body;
    int m_status = 0;
    QString m_networkError;
    Outcome m_outcome = Outcome::Running;
};
