#include "recorder/launchreport.h"

#include "recorder/streamrecorder.h"

#include <cstdio>
#include <utility>

LaunchReport::LaunchReport(LineWriter write, QObject *parent) : QObject(parent), m_write(std::move(write)) {}

void LaunchReport::watch(const StreamRecorder &recorder)
{
    connect(&recorder, &StreamRecorder::statusChanged, this, [this](const QString &text) {
        if (!text.isEmpty())
            m_write(text);
    });
    connect(&recorder, &StreamRecorder::stationNameChanged, this,
            [this](const QString &name) { m_write(tr("Recording %1").arg(name)); });
    connect(&recorder, &StreamRecorder::stopped, this, [this](const StopReason &reason) {
        m_exitStatus = ExitStatus::of(reason.kind);
        // A failure's text was the last status already.
        if (reason.text.isEmpty())
            m_write(reason.summary());
    });
}

void LaunchReport::toStandardError(const QString &line)
{
    std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stderr);
}
