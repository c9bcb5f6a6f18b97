#include "schedule/systemdtaskservice.h"

#include "schedule/taskerrors.h"
#include "schedule/unitfile.h"
#include "schedule/unitnames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QSysInfo>
#include <QTimeZone>

namespace {

const QString timerSuffix = QStringLiteral(".timer");
const QString serviceSuffix = QStringLiteral(".service");

bool hasControlCharacters(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            return true;
    }
    return false;
}

bool exists(const QString &path)
{
    return QFileInfo(path).exists() || QFileInfo(path).isSymLink();
}

// The program's unit files are a few hundred bytes; anything far larger is not one of them.
constexpr qint64 maxUnitFileSize = 64 * 1024;

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maxUnitFileSize)
        return {};
    return file.read(maxUnitFileSize);
}

// A file the program wrote and nobody changed since, or no file at all.
bool ownOrAbsent(const QString &path)
{
    return !exists(path) || (!QFileInfo(path).isSymLink() && UnitFile::parse(readAll(path)));
}

// `systemctl show` prints one block of Key=Value lines per unit, in the
// order asked, separated by an empty line.
QList<QHash<QString, QString>> showBlocks(const QByteArray &output)
{
    QList<QHash<QString, QString>> blocks(1);
    for (const QString &line : QString::fromUtf8(output).split(u'\n')) {
        if (line.isEmpty()) {
            if (!blocks.last().isEmpty())
                blocks.append(QHash<QString, QString>());
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (equals > 0)
            blocks.last().insert(line.left(equals), line.mid(equals + 1));
    }
    return blocks;
}

// systemctl prints most times as "@<seconds>" when asked for `--timestamp=unix`,
// but the timer's own as "Mon 2026-11-23 20:15:00 UTC" (it runs with TZ=UTC).
// Anything else, an empty value included, is no time.
QDateTime timestamp(const QString &value)
{
    if (value.startsWith(u'@')) {
        bool ok = false;
        const qint64 seconds = value.mid(1).toLongLong(&ok);
        return ok && seconds > 0 ? QDateTime::fromSecsSinceEpoch(seconds) : QDateTime();
    }
    const QStringList parts = value.split(u' ');
    if (parts.size() != 4 || parts[3] != u"UTC")
        return {};
    const QDateTime utc(QDate::fromString(parts[1], Qt::ISODate), QTime::fromString(parts[2], Qt::ISODate),
                        QTimeZone::utc());
    return utc.isValid() ? utc.toLocalTime() : QDateTime();
}

} // namespace

QString SystemdTaskService::userUnitFolder()
{
    QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (!QDir::isAbsolutePath(config))
        config = QDir::homePath() + QStringLiteral("/.config");
    return config + QStringLiteral("/systemd/user");
}

SystemdTaskService::SystemdTaskService(QString unitFolder, Systemctl &systemctl)
    : m_folder(std::move(unitFolder)), m_systemctl(systemctl)
{
}

QString SystemdTaskService::TargetComputer() const
{
    return QSysInfo::machineHostName();
}

void SystemdTaskService::setTargetComputer(const QString &computer)
{
    QString name = computer;
    while (name.startsWith(u'\\'))
        name.remove(0, 1);
    if (!name.isEmpty() && name.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) != 0)
        throw TaskErrors::refused(AppError::tr("Only this computer's scheduled recordings can be managed."));
}

QString SystemdTaskService::unitBase(const QString &name)
{
    if (name.isEmpty())
        throw TaskErrors::badTaskName(name, AppError::tr("the name is empty."));
    if (hasControlCharacters(name))
        throw TaskErrors::badTaskName(name,
                                      AppError::tr("it holds line breaks or other control characters."));
    const QString base = UnitNames::escape(name);
    if (QString::fromUtf8(name.toUtf8()) != name)
        throw TaskErrors::badTaskName(name,
                                      AppError::tr("it holds characters that cannot be written as UTF-8."));
    if (base.size() + serviceSuffix.size() > UnitNames::maxUnitName)
        throw TaskErrors::badTaskName(name, AppError::tr("it is too long for a systemd unit name."));
    return base;
}

TaskUnits::Paths SystemdTaskService::pathsFor(const QString &name) const
{
    const QString base = unitBase(name);
    return {m_folder + u'/' + base + timerSuffix, m_folder + u'/' + base + serviceSuffix,
            m_folder + QStringLiteral("/timers.target.wants/") + base + timerSuffix};
}

QStringList SystemdTaskService::taskNames()
{
    m_reachable.reset();
    QStringList names;
    const QStringList timers = QDir(m_folder).entryList({u'*' + timerSuffix}, QDir::Files, QDir::Name);
    for (const QString &timer : timers) {
        const QString base = timer.chopped(timerSuffix.size());
        const std::optional<QString> name = UnitNames::unescape(base);
        if (name && QFileInfo::exists(m_folder + u'/' + base + serviceSuffix))
            names.append(*name);
    }
    return names;
}

TaskDefinition SystemdTaskService::newWorkItem(const QString &name)
{
    const TaskUnits::Paths paths = pathsFor(name);
    if (exists(paths.timer) || exists(paths.service))
        throw TaskErrors::taskExists(name);
    return {};
}

std::optional<TaskDefinition> SystemdTaskService::readOwn(const TaskUnits::Paths &paths) const
{
    return TaskUnits::read(readAll(paths.timer), readAll(paths.service));
}

TaskDefinition SystemdTaskService::activate(const QString &name)
{
    const TaskUnits::Paths paths = pathsFor(name);
    if (!QFileInfo::exists(paths.timer) || !QFileInfo::exists(paths.service))
        throw TaskErrors::taskNotFound(name);
    std::optional<TaskDefinition> definition = readOwn(paths);
    if (!definition)
        throw TaskErrors::damaged(paths.service);
    return *definition;
}

void SystemdTaskService::writeFile(const QString &path, const QByteArray &bytes) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw AppError::pathFileAccess(path);
}

void SystemdTaskService::save(const QString &name, const TaskDefinition &definition)
{
    checkText(TextField::ApplicationName, definition.applicationName);
    checkText(TextField::Parameters, definition.parameters);
    checkText(TextField::Comment, definition.comment);
    checkText(TextField::Creator, definition.creator);
    checkText(TextField::WorkingDirectory, definition.workingDirectory);
    checkText(TextField::Account, definition.account);
    const TaskUnits::Paths paths = pathsFor(name);
    // Files of the same name that the program did not write stay as they are.
    for (const QString &path : {paths.timer, paths.service}) {
        if (!ownOrAbsent(path))
            throw TaskErrors::notOurs(path);
    }
    if (!QDir().mkpath(m_folder))
        throw AppError::pathFileAccess(m_folder);
    writeFile(paths.service, TaskUnits::serviceFile(name, definition, paths));
    writeFile(paths.timer, TaskUnits::timerFile(name, definition));

    const bool starts = TaskUnits::startable(definition) && !(definition.flags & TaskFlags::Disabled);
    if (starts)
        link(paths);
    else
        unlink(paths);
    const QString timer = QFileInfo(paths.timer).fileName();
    if (call({QStringLiteral("daemon-reload")}).reached)
        call({starts ? QStringLiteral("restart") : QStringLiteral("stop"), timer});
}

void SystemdTaskService::link(const TaskUnits::Paths &paths) const
{
    const QFileInfo existing(paths.wantsLink);
    if (existing.isSymLink() && existing.symLinkTarget() == paths.timer)
        return;
    if (existing.exists() || existing.isSymLink())
        return; // something of the user's own: leave it
    QDir().mkpath(existing.absolutePath());
    if (!QFile::link(paths.timer, paths.wantsLink))
        throw AppError::pathFileAccess(paths.wantsLink);
}

void SystemdTaskService::unlink(const TaskUnits::Paths &paths) const
{
    const QFileInfo existing(paths.wantsLink);
    if (existing.isSymLink() && existing.symLinkTarget() == paths.timer)
        QFile::remove(paths.wantsLink);
}

void SystemdTaskService::remove(const QString &name)
{
    const TaskUnits::Paths paths = pathsFor(name);
    if (!exists(paths.timer) && !exists(paths.service))
        throw TaskErrors::taskNotFound(name);
    for (const QString &path : {paths.timer, paths.service}) {
        if (!ownOrAbsent(path))
            throw TaskErrors::notOurs(path);
    }
    call({QStringLiteral("stop"), QFileInfo(paths.timer).fileName()});
    unlink(paths);
    for (const QString &path : {paths.timer, paths.service}) {
        if (exists(path) && !QFile::remove(path))
            throw AppError::pathFileAccess(path);
    }
    call({QStringLiteral("daemon-reload")});
}

void SystemdTaskService::checkText(TextField field, const QString &value) const
{
    if (hasControlCharacters(value))
        throw TaskErrors::refused(
            AppError::tr("A unit file cannot hold line breaks or other control characters."));
    if (QString::fromUtf8(value.toUtf8()) != value)
        throw TaskErrors::refused(AppError::tr("The text holds characters that cannot be written as UTF-8."));
    if (field == TextField::WorkingDirectory && !value.isEmpty() &&
        (!QDir::isAbsolutePath(value) || value != value.trimmed()))
        throw TaskErrors::refused(
            AppError::tr("The working folder must be a full path without blanks around it."));
}

QString SystemdTaskService::fileName(const QString &name) const
{
    return pathsFor(name).service;
}

Systemctl::Result SystemdTaskService::call(const QStringList &arguments)
{
    if (m_reachable == false)
        return {};
    Systemctl::Result result = m_systemctl.run(arguments);
    m_reachable = result.reached;
    return result;
}

bool SystemdTaskService::isRunning()
{
    if (!m_reachable)
        call({QStringLiteral("show"), QStringLiteral("--property=Version")});
    return m_reachable.value_or(false);
}

void SystemdTaskService::requireManager()
{
    if (!isRunning())
        throw TaskErrors::serviceNotRunning();
}

TaskRunState SystemdTaskService::runState(const QString &name)
{
    const TaskUnits::Paths paths = pathsFor(name);
    if (!isRunning())
        return {};
    const Systemctl::Result shown =
        call({QStringLiteral("show"), QStringLiteral("--timestamp=unix"),
              QStringLiteral("--property=ActiveState,NextElapseUSecRealtime,LastTriggerUSec,"
                             "ExecMainStartTimestamp,ExecMainStatus"),
              QStringLiteral("--"), QFileInfo(paths.timer).fileName(), QFileInfo(paths.service).fileName()});
    const QList<QHash<QString, QString>> blocks = showBlocks(shown.output);
    if (!shown.reached || shown.exitCode != 0 || blocks.size() < 2)
        return {};
    const QHash<QString, QString> &timer = blocks[0];
    const QHash<QString, QString> &service = blocks[1];

    TaskRunState state;
    state.exitCode = service.value(QStringLiteral("ExecMainStatus")).toInt();
    state.nextRun = timestamp(timer.value(QStringLiteral("NextElapseUSecRealtime")));
    state.lastRun = timestamp(service.value(QStringLiteral("ExecMainStartTimestamp")));
    if (state.lastRun.isNull())
        state.lastRun = timestamp(timer.value(QStringLiteral("LastTriggerUSec")));
    const std::optional<TaskDefinition> stored = readOwn(paths);
    const QString active = service.value(QStringLiteral("ActiveState"));
    if (active == u"active" || active == u"activating" || active == u"deactivating" || active == u"reloading")
        state.status = TaskStatus::Running;
    else if (stored && (stored->flags & TaskFlags::Disabled))
        state.status = TaskStatus::Disabled;
    else if (!state.nextRun.isNull())
        state.status = state.lastRun.isNull() ? TaskStatus::HasNotRun : TaskStatus::Ready;
    else
        state.status = state.lastRun.isNull() ? TaskStatus::NotScheduled : TaskStatus::NoMoreRuns;
    return state;
}

void SystemdTaskService::run(const QString &name)
{
    controlService(QStringLiteral("start"), name);
}

void SystemdTaskService::terminate(const QString &name)
{
    controlService(QStringLiteral("stop"), name);
}

void SystemdTaskService::controlService(const QString &verb, const QString &name)
{
    activate(name);
    requireManager();
    const Systemctl::Result result =
        call({verb, QStringLiteral("--no-block"), QFileInfo(pathsFor(name).service).fileName()});
    if (result.exitCode != 0)
        throw TaskErrors::refused(QString::fromUtf8(result.error).trimmed());
}
