#include "schedule/systemctl.h"

#include <QProcess>
#include <QTimer>

namespace {

QString shellQuoted(const QString &word)
{
    QString quoted = word;
    quoted.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + quoted + u'\'';
}

// Only calls that change something are worth running after the program has gone.
bool changesSomething(const QStringList &arguments)
{
    return !arguments.isEmpty() && arguments.first() != u"show";
}

} // namespace

Systemctl::Systemctl(QObject *parent) : QObject(parent) {}

ProcessSystemctl::ProcessSystemctl(QString program, int timeoutMs, QObject *parent)
    : Systemctl(parent), m_program(std::move(program)), m_timeoutMs(timeoutMs), m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &ProcessSystemctl::timedOut);
}

ProcessSystemctl::~ProcessSystemctl()
{
    handOver();
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(1000);
    }
}

void ProcessSystemctl::call(const QStringList &arguments, Done done)
{
    m_queue.append({arguments, std::move(done)});
    tellBusy();
    if (!m_process)
        startNext();
}

bool ProcessSystemctl::busy() const
{
    return !m_queue.isEmpty();
}

void ProcessSystemctl::startNext()
{
    if (m_queue.isEmpty()) {
        tellBusy();
        return;
    }
    m_process = new QProcess(this);
    // Times in UTC, so they read back the same whatever the user's zone.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    m_process->setProcessEnvironment(environment);
    connect(m_process, &QProcess::finished, this, &ProcessSystemctl::finished);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            conclude({});
    });
    m_process->start(m_program, QStringList{QStringLiteral("--user")} + m_queue.first().arguments);
    m_timer->start(m_timeoutMs);
}

void ProcessSystemctl::finished()
{
    Result result;
    result.exitCode = m_process->exitStatus() == QProcess::NormalExit ? m_process->exitCode() : -1;
    result.output = m_process->readAllStandardOutput();
    result.error = m_process->readAllStandardError();
    // systemctl's wording when neither the private socket nor the user bus
    // answers, or when a session bus is there but cannot start the manager.
    result.reached = !result.error.contains("Failed to connect to bus") &&
                     !result.error.contains("Failed to connect to user scope bus") &&
                     !result.error.contains("org.freedesktop.systemd1");
    conclude(result);
}

void ProcessSystemctl::timedOut()
{
    m_process->disconnect(this);
    // A killed process ends at once; reaping it here keeps no zombie behind.
    m_process->kill();
    m_process->waitForFinished(1000);
    conclude({});
}

void ProcessSystemctl::conclude(const Result &result)
{
    m_timer->stop();
    m_process->disconnect(this);
    m_process->deleteLater();
    m_process = nullptr;
    QList<Call> answered{m_queue.takeFirst()};
    if (!result.reached) {
        answered += m_queue;
        m_queue.clear();
    }
    // The answers may queue new calls.
    for (const Call &call : answered) {
        if (call.done)
            call.done(result);
    }
    if (!m_process)
        startNext();
}

void ProcessSystemctl::tellBusy()
{
    if (busy() != m_toldBusy) {
        m_toldBusy = busy();
        emit busyChanged(m_toldBusy);
    }
}

void ProcessSystemctl::handOver()
{
    QStringList lines;
    const int seconds = (m_timeoutMs + 999) / 1000;
    for (const Call &call : std::as_const(m_queue)) {
        if (!changesSomething(call.arguments))
            continue;
        QStringList words{QStringLiteral("timeout"), QString::number(seconds), m_program,
                          QStringLiteral("--user")};
        words += call.arguments;
        for (QString &word : words)
            word = shellQuoted(word);
        lines.append(words.join(u' '));
    }
    if (lines.isEmpty())
        return;
    QProcess shell;
    shell.setProgram(QStringLiteral("/bin/sh"));
    shell.setArguments({QStringLiteral("-c"), lines.join(QStringLiteral("; "))});
    shell.setStandardInputFile(QProcess::nullDevice());
    shell.setStandardOutputFile(QProcess::nullDevice());
    shell.setStandardErrorFile(QProcess::nullDevice());
    shell.startDetached();
}
