#include "schedule/systemdtaskservice.h"

#include "schedule/taskerrors.h"
#include "schedule/unitfile.h"
#include "schedule/unitnames.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
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

// QSaveFile writes beside the file under its name and 7 more characters,
// which the file system's limit of 255 bytes must leave room for too.
constexpr int saveFileMargin = 7;

// A service left without its timer this long ago is no save in progress.
constexpr qint64 orphanAgeSeconds = 60;

} // namespace

QString SystemdTaskService::userUnitFolder()
{
    QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (!QDir::isAbsolutePath(config))
        config = QDir::homePath() + QStringLiteral("/.config");
    return config + QStringLiteral("/systemd/user");
}

QStringList SystemdTaskService::sessionDisplay()
{
    QStringList display;
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty() && !hasControlCharacters(value))
            display.append(QLatin1StringView(name) + u'=' + value);
    }
    return display;
}

SystemdTaskService::SystemdTaskService(QString unitFolder, Systemctl &systemctl, QStringList display,
                                       QObject *parent)
    : QObject(parent), m_folder(std::move(unitFolder)), m_systemctl(systemctl), m_display(std::move(display))
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
    if (QString::fromUtf8(name.toUtf8()) != name)
        throw TaskErrors::badTaskName(name,
                                      AppError::tr("it holds characters that cannot be written as UTF-8."));
    return UnitNames::fitted(name, UnitNames::maxUnitName - int(serviceSuffix.size()) - saveFileMargin);
}

TaskUnits::Paths SystemdTaskService::pathsFor(const QString &name) const
{
    const QString base = unitBase(name);
    return {m_folder + u'/' + base + timerSuffix, m_folder + u'/' + base + serviceSuffix,
            m_folder + QStringLiteral("/timers.target.wants/") + base + timerSuffix};
}

std::optional<QString> SystemdTaskService::taskNameOf(const QString &base) const
{
    if (const std::optional<QString> name = UnitNames::unescape(base))
        return name;
    if (!UnitNames::isShortened(base))
        return std::nullopt;
    // A shortened file name: the task's name is inside, and must lead back to the file.
    const std::optional<QString> name = TaskUnits::storedName(readAll(m_folder + u'/' + base + timerSuffix));
    try {
        if (name && unitBase(*name) == base)
            return name;
    } catch (const AppError &) {
    }
    return std::nullopt;
}

QStringList SystemdTaskService::taskNames()
{
    m_reachable.reset();
    m_runStates.clear();
    removeOrphans();
    QStringList names;
    const QStringList timers = QDir(m_folder).entryList({u'*' + timerSuffix}, QDir::Files, QDir::Name);
    for (const QString &timer : timers) {
        const QString base = timer.chopped(timerSuffix.size());
        const std::optional<QString> name = taskNameOf(base);
        if (name && QFileInfo::exists(m_folder + u'/' + base + serviceSuffix))
            names.append(*name);
    }
    m_listed = names;
    return names;
}

void SystemdTaskService::removeOrphans() const
{
    const QDateTime settled = QDateTime::currentDateTime().addSecs(-orphanAgeSeconds);
    const QFileInfoList services =
        QDir(m_folder).entryInfoList({u'*' + serviceSuffix}, QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo &service : services) {
        const QString timer =
            m_folder + u'/' + service.fileName().chopped(serviceSuffix.size()) + timerSuffix;
        if (!exists(timer) && service.lastModified() < settled && !service.isSymLink() &&
            UnitFile::parse(readAll(service.filePath())))
            QFile::remove(service.filePath());
    }
}

TaskDefinition SystemdTaskService::newWorkItem(const QString &name)
{
    const TaskUnits::Paths paths = pathsFor(name);
    // A service of ours without its timer is what a failed save left: it
    // does not keep the name from being used.
    if (!exists(paths.timer) && exists(paths.service) && !QFileInfo(paths.service).isSymLink() &&
        UnitFile::parse(readAll(paths.service)))
        QFile::remove(paths.service);
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
    const std::optional<QString> stored = TaskUnits::storedName(readAll(paths.timer));
    if (stored && *stored != name)
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
    const TaskUnits::Context context{QDate::currentDate(), m_display};
    // A task that would never run as set is not saved as if it would.
    if (const QString why = TaskUnits::refusal(definition, context.today); !why.isEmpty())
        throw TaskErrors::refused(why);
    const TaskUnits::Paths paths = pathsFor(name);
    // Files of the same name that the program did not write stay as they are.
    for (const QString &path : {paths.timer, paths.service}) {
        if (!ownOrAbsent(path))
            throw TaskErrors::notOurs(path);
    }
    if (!QDir().mkpath(m_folder))
        throw AppError::pathFileAccess(m_folder);
    const bool known = exists(paths.timer);
    writeFile(paths.service, TaskUnits::serviceFile(name, definition, paths, context));
    try {
        writeFile(paths.timer, TaskUnits::timerFile(name, definition, context));
    } catch (const AppError &) {
        if (!known)
            QFile::remove(paths.service);
        throw;
    }

    const bool starts =
        TaskUnits::startable(definition, context.today) && !(definition.flags & TaskFlags::Disabled);
    if (starts)
        link(paths);
    else
        unlink(paths);
    // A new task that cannot start yet (the first, empty save) is nothing the manager needs to hear of.
    if (!starts && !known)
        return;
    const QString timer = QFileInfo(paths.timer).fileName();
    ask({QStringLiteral("daemon-reload")});
    ask({starts ? QStringLiteral("restart") : QStringLiteral("stop"), timer});
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
    unlink(paths);
    for (const QString &path : {paths.timer, paths.service}) {
        if (exists(path) && !QFile::remove(path))
            throw AppError::pathFileAccess(path);
    }
    // The manager still has the timer loaded: stop it, then let it forget both.
    ask({QStringLiteral("stop"), QFileInfo(paths.timer).fileName()});
    ask({QStringLiteral("daemon-reload")});
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

void SystemdTaskService::ask(const QStringList &arguments, const Systemctl::Done &then)
{
    if (m_reachable == false)
        return;
    m_systemctl.call(arguments, [self = QPointer(this), then](const Systemctl::Result &result) {
        if (!self)
            return;
        self->m_reachable = result.reached;
        if (then)
            then(result);
    });
}

bool SystemdTaskService::isRunning()
{
    return m_reachable.value_or(false);
}

TaskRunState SystemdTaskService::runState(const QString &name)
{
    return m_runStates.value(name);
}

void SystemdTaskService::queryRunStates()
{
    const QStringList names = m_listed;
    QStringList arguments{QStringLiteral("show")};
    if (names.isEmpty()) {
        arguments.append(QStringLiteral("--property=Version"));
    } else {
        arguments += {QStringLiteral("--timestamp=unix"),
                      QStringLiteral("--property=ActiveState,NextElapseUSecRealtime,LastTriggerUSec,"
                                     "ExecMainStartTimestamp,ExecMainStatus"),
                      QStringLiteral("--")};
        for (const QString &name : names) {
            const TaskUnits::Paths paths = pathsFor(name);
            arguments += {QFileInfo(paths.timer).fileName(), QFileInfo(paths.service).fileName()};
        }
    }
    if (m_reachable == false) {
        emit runStatesKnown();
        return;
    }
    ask(arguments, [this, names](const Systemctl::Result &shown) {
        showRunStates(names, shown);
        emit runStatesKnown();
    });
}

// `systemctl show` answers with one block per unit, the timer and then the
// service of each task.
void SystemdTaskService::showRunStates(const QStringList &names, const Systemctl::Result &shown)
{
    m_runStates.clear();
    const QList<QHash<QString, QString>> blocks = showBlocks(shown.output);
    if (!shown.reached || shown.exitCode != 0 || blocks.size() < 2 * names.size())
        return;
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QHash<QString, QString> &timer = blocks[2 * i];
        const QHash<QString, QString> &service = blocks[2 * i + 1];
        TaskRunState state;
        state.exitCode = service.value(QStringLiteral("ExecMainStatus")).toInt();
        state.nextRun = timestamp(timer.value(QStringLiteral("NextElapseUSecRealtime")));
        state.lastRun = timestamp(service.value(QStringLiteral("ExecMainStartTimestamp")));
        if (state.lastRun.isNull())
            state.lastRun = timestamp(timer.value(QStringLiteral("LastTriggerUSec")));
        const std::optional<TaskDefinition> stored = readOwn(pathsFor(names[i]));
        const QString active = service.value(QStringLiteral("ActiveState"));
        if (active == u"active" || active == u"activating" || active == u"deactivating" ||
            active == u"reloading")
            state.status = TaskStatus::Running;
        else if (stored && (stored->flags & TaskFlags::Disabled))
            state.status = TaskStatus::Disabled;
        else if (!state.nextRun.isNull())
            state.status = state.lastRun.isNull() ? TaskStatus::HasNotRun : TaskStatus::Ready;
        else
            state.status = state.lastRun.isNull() ? TaskStatus::NotScheduled : TaskStatus::NoMoreRuns;
        m_runStates.insert(names[i], state);
    }
}

void SystemdTaskService::run(const QString &name)
{
    activate(name);
    if (m_reachable == false)
        throw TaskErrors::serviceNotRunning();
    ask({QStringLiteral("start"), QStringLiteral("--no-block"),
         QFileInfo(pathsFor(name).service).fileName()});
}

void SystemdTaskService::terminate(const QString &name)
{
    activate(name);
    if (m_reachable == false)
        throw TaskErrors::serviceNotRunning();
    ask({QStringLiteral("stop"), QStringLiteral("--no-block"), QFileInfo(pathsFor(name).service).fileName()});
}

bool SystemdTaskService::showsWindow(const TaskDefinition &definition) const
{
    return TaskUnits::showsWindow(definition, m_display);
}
