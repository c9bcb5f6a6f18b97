#pragma once

#include "schedule/taskservice.h"

#include <QMap>
#include <QSet>
#include <QStringList>

// A task store in memory, for the scheduler classes: tasks in insertion
// order, names it refuses to read, text values it refuses to keep, and a
// record of the tasks it was asked to run.
class MemoryTaskService : public TaskService
{
public:
    QString TargetComputer() const override { return m_computer; }
    void setTargetComputer(const QString &computer) override;
    QStringList taskNames() override;
    TaskDefinition newWorkItem(const QString &name) override;
    TaskDefinition activate(const QString &name) override;
    void save(const QString &name, const TaskDefinition &definition) override;
    void remove(const QString &name) override;
    void checkText(TextField field, const QString &value) const override;
    QString fileName(const QString &name) const override;
    bool isRunning() override { return true; }
    TaskRunState runState(const QString &) override { return {}; }
    void run(const QString &name) override;
    void terminate(const QString &) override {}
    bool showsWindow(const TaskDefinition &definition) const override
    {
        return definition.flags & TaskFlags::Interactive;
    }
    QStringList order;
    QMap<QString, TaskDefinition> tasks;
    QSet<QString> unreadable;
    bool enumFails = false;
    // Text values the store will not keep.
    QMap<TextField, QString> refused;
    QStringList requests;

private:
    QString m_computer;
};

// A property sheet that records where it was opened and answers with confirmed.
class RecordingEditor : public TaskEditor
{
public:
    bool editTask(Task &, QObject *owner) override
    {
        owners.append(owner);
        return confirmed;
    }
    QList<QObject *> owners;
    bool confirmed = true;
};
