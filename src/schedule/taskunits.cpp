#include "schedule/taskunits.h"

#include "base/apperror.h"
#include "schedule/oncalendar.h"
#include "schedule/unitfile.h"

#include <QDir>

#include <QSet>

#include <array>
#include <tuple>

namespace {

const QString sectionUnit = QStringLiteral("Unit");
const QString sectionTimer = QStringLiteral("Timer");
const QString sectionService = QStringLiteral("Service");
const QString sectionInstall = QStringLiteral("Install");

const QString keyApplication = QStringLiteral("X-Tunecatch-ApplicationName");
const QString keyCommandLine = QStringLiteral("X-Tunecatch-CommandLine");
const QString keyComment = QStringLiteral("X-Tunecatch-Comment");
const QString keyPriority = QStringLiteral("X-Tunecatch-Priority");
const QString keyCreator = QStringLiteral("X-Tunecatch-Creator");
const QString keyAccount = QStringLiteral("X-Tunecatch-Account");
const QString keyFlags = QStringLiteral("X-Tunecatch-Flags");
const QString keyIdleWait = QStringLiteral("X-Tunecatch-IdleWait");
const QString keyErrorRetry = QStringLiteral("X-Tunecatch-ErrorRetry");
const QString keyTrigger = QStringLiteral("X-Tunecatch-Trigger");
const QString keyName = QStringLiteral("X-Tunecatch-Name");

struct NiceLevel
{
    qint32 priority;
    int nice;
};

// A user's own service manager may lower a program's priority but not raise it.
constexpr std::array<NiceLevel, 3> niceLevels = {{
    {TaskPriority::Idle, 19},
    {TaskPriority::BelowNormal, 10},
    {TaskPriority::Normal, 0},
}};

QString header(const QString &name)
{
    return QStringLiteral("Tunecatch scheduled recording \"%1\".\n"
                          "Change it in Tunecatch's scheduled recordings window: the program\n"
                          "leaves alone a file that was changed by hand.")
        .arg(name);
}

QStringList arguments(const QString &commandLine)
{
    // The program rejoins its arguments with single blanks, which gives the
    // command line back exactly, blanks in a row included.
    return commandLine.isEmpty() ? QStringList() : commandLine.split(u' ');
}

// The [Unit] section both files start with: the name and the comment.
void addUnitSection(UnitFile &file, const QString &name, const QString &comment)
{
    file.section(sectionUnit);
    if (!comment.isEmpty())
        file.add(QStringLiteral("Description"), UnitText::escapeSpecifiers(comment));
    file.add(keyName, UnitText::encodeValue(name));
}

// The triggers that start the task, that is those with a calendar.
QList<TriggerRecord> startingTriggers(const TaskDefinition &definition, QDate today)
{
    QList<TriggerRecord> starting;
    for (const TriggerRecord &trigger : definition.triggers) {
        if (!onCalendarsFor(trigger, today).isEmpty())
            starting.append(trigger);
    }
    return starting;
}

QString pair(int a, int b)
{
    return QString::number(a) + u' ' + QString::number(b);
}

std::optional<std::pair<qint16, qint16>> readPair(const QString &text)
{
    const QStringList parts = text.split(u' ');
    if (parts.size() != 2)
        return std::nullopt;
    bool okA = false;
    bool okB = false;
    const short a = parts[0].toShort(&okA);
    const short b = parts[1].toShort(&okB);
    if (!okA || !okB)
        return std::nullopt;
    return std::pair<qint16, qint16>(a, b);
}

std::optional<QString> decodedOr(const UnitFile &file, const QString &key, const QString &fallback)
{
    const QString value = file.value(sectionService, key);
    return value.isNull() ? std::optional<QString>(fallback) : UnitText::decodeValue(value);
}

std::optional<qint32> readMaxRunTime(const QString &text)
{
    if (text == u"infinity")
        return -1;
    if (!text.endsWith(u"ms"))
        return std::nullopt;
    bool ok = false;
    const uint value = text.chopped(2).toUInt(&ok);
    if (!ok)
        return std::nullopt;
    return qint32(value);
}

std::optional<qint32> readPriority(const UnitFile &file)
{
    const QString exact = file.value(sectionService, keyPriority);
    bool ok = false;
    if (!exact.isNull()) {
        const qint32 priority = exact.toInt(&ok);
        return ok ? std::optional<qint32>(priority) : std::nullopt;
    }
    const int nice = file.value(sectionService, QStringLiteral("Nice")).toInt(&ok);
    for (const NiceLevel &level : niceLevels) {
        if (ok && level.nice == nice)
            return level.priority;
    }
    return std::nullopt;
}

std::optional<TaskDefinition> readService(const UnitFile &file)
{
    TaskDefinition definition;
    const QString exec = file.value(sectionService, QStringLiteral("ExecStart"));
    if (!exec.isNull()) {
        const std::optional<QStringList> words = UnitText::splitExecLine(exec);
        if (!words)
            return std::nullopt;
        definition.applicationName = words->first();
        definition.parameters = words->mid(1).join(u' ');
    }
    const QString description = file.value(sectionUnit, QStringLiteral("Description"));
    const std::optional<QString> comment =
        UnitText::unescapeSpecifiers(description.isNull() ? QString() : description);
    const QString folder = file.value(sectionService, QStringLiteral("WorkingDirectory"));
    const std::optional<QString> workingDirectory =
        UnitText::unescapeSpecifiers(folder.isNull() ? QString() : folder);
    const std::optional<QString> application = decodedOr(file, keyApplication, definition.applicationName);
    const std::optional<QString> parameters = decodedOr(file, keyCommandLine, definition.parameters);
    const std::optional<QString> exactComment =
        comment ? decodedOr(file, keyComment, *comment) : std::nullopt;
    const std::optional<QString> creator = decodedOr(file, keyCreator, QString());
    const std::optional<QString> account = decodedOr(file, keyAccount, QString());
    const std::optional<qint32> maxRunTime =
        readMaxRunTime(file.value(sectionService, QStringLiteral("RuntimeMaxSec")));
    const std::optional<qint32> priority = readPriority(file);
    const auto idleWait = readPair(file.value(sectionService, keyIdleWait));
    const auto errorRetry = readPair(file.value(sectionService, keyErrorRetry));
    bool flagsOk = false;
    definition.flags = file.value(sectionService, keyFlags).toInt(&flagsOk);
    if (!workingDirectory || !application || !parameters || !exactComment || !creator || !account ||
        !maxRunTime || !priority || !idleWait || !errorRetry || !flagsOk)
        return std::nullopt;
    definition.applicationName = *application;
    definition.parameters = *parameters;
    definition.comment = *exactComment;
    definition.workingDirectory = *workingDirectory;
    definition.creator = *creator;
    definition.account = *account;
    definition.maxRunTime = *maxRunTime;
    definition.priority = *priority;
    std::tie(definition.idleMinutes, definition.deadlineMinutes) = *idleWait;
    std::tie(definition.errorRetryCount, definition.errorRetryInterval) = *errorRetry;
    return definition;
}

} // namespace

QString TaskUnits::programPath(const TaskDefinition &definition)
{
    const QString &name = definition.applicationName;
    if (name.isEmpty())
        return {};
    if (QDir::isAbsolutePath(name))
        return QDir::cleanPath(name);
    if (definition.workingDirectory.isEmpty())
        return name;
    return QDir::cleanPath(definition.workingDirectory + u'/' + name);
}

bool TaskUnits::startable(const TaskDefinition &definition, QDate today)
{
    return !definition.applicationName.isEmpty() && !startingTriggers(definition, today).isEmpty();
}

bool TaskUnits::runsOnlyOnce(const TaskDefinition &definition, QDate today)
{
    const QList<TriggerRecord> starting = startingTriggers(definition, today);
    return starting.size() <= 1 && (starting.isEmpty() || starting.first().type() == TriggerRecord::Once);
}

QString TaskUnits::refusal(const TaskDefinition &definition, QDate today)
{
    for (const TriggerRecord &trigger : definition.triggers) {
        const bool calendarType =
            trigger.type() >= TriggerRecord::Once && trigger.type() <= TriggerRecord::MonthlyDow;
        if (calendarType && !(trigger.longWord(TriggerRecord::Flags) & TriggerRecord::FlagDisabled)) {
            if (const QString problem = trigger.problem(); !problem.isEmpty())
                return problem;
        }
    }
    const QList<TriggerRecord> starting = startingTriggers(definition, today);
    QSet<int> delays;
    for (const TriggerRecord &trigger : starting) {
        if (trigger.longWord(TriggerRecord::Duration) != 0 || trigger.longWord(TriggerRecord::Interval) != 0)
            return AppError::tr("A recording cannot be repeated every few minutes: give each start a trigger "
                                "of its own, and the recording its stop condition.");
        if (intervalCondition(trigger) && starting.size() > 1)
            return AppError::tr("A recording that repeats every few days or weeks can have no other start "
                                "times.");
        delays.insert(trigger.word(TriggerRecord::RandomInterval));
    }
    if (delays.size() > 1)
        return AppError::tr("All start times of one recording must have the same random delay.");
    return {};
}

bool TaskUnits::showsWindow(const TaskDefinition &definition, const QStringList &display)
{
    return (definition.flags & TaskFlags::Interactive) && !display.isEmpty();
}

QByteArray TaskUnits::timerFile(const QString &name, const TaskDefinition &definition, const Context &context)
{
    UnitFile file(header(name));
    addUnitSection(file, name, definition.comment);
    file.section(sectionTimer);
    for (const TriggerRecord &trigger : definition.triggers) {
        for (const QString &calendar : onCalendarsFor(trigger, context.today))
            file.add(QStringLiteral("OnCalendar"), calendar);
    }
    // A recording should begin on the minute, not whenever systemd finds convenient.
    file.add(QStringLiteral("AccuracySec"), QStringLiteral("1s"));
    // The starting triggers share one delay (refusal sees to it).
    const QList<TriggerRecord> starting = startingTriggers(definition, context.today);
    if (!starting.isEmpty() && starting.first().word(TriggerRecord::RandomInterval) > 0) {
        file.add(QStringLiteral("RandomizedDelaySec"),
                 QString::number(starting.first().word(TriggerRecord::RandomInterval)) +
                     QStringLiteral("min"));
    }
    for (const TriggerRecord &trigger : definition.triggers)
        file.add(keyTrigger, QString::fromLatin1(trigger.bytes().toHex()));
    file.section(sectionInstall);
    file.add(QStringLiteral("WantedBy"), QStringLiteral("timers.target"));
    return file.bytes();
}

QByteArray TaskUnits::serviceFile(const QString &name, const TaskDefinition &definition, const Paths &paths,
                                  const Context &context)
{
    UnitFile file(header(name));
    addUnitSection(file, name, definition.comment);
    file.section(sectionService);
    file.add(QStringLiteral("Type"), QStringLiteral("exec"));
    if (!definition.workingDirectory.isEmpty())
        file.add(QStringLiteral("WorkingDirectory"), UnitText::escapeSpecifiers(definition.workingDirectory));
    // The user's service manager may know no display: an interactive
    // recording is given the one of the session that scheduled it.
    if (showsWindow(definition, context.display))
        file.add(QStringLiteral("Environment"), UnitText::environmentLine(context.display));
    const QList<TriggerRecord> starting = startingTriggers(definition, context.today);
    if (starting.size() == 1) {
        if (const std::optional<QStringList> condition = intervalCondition(starting.first()))
            file.add(QStringLiteral("ExecCondition"),
                     UnitText::execLine(condition->first(), condition->mid(1)));
    }
    const QString program = programPath(definition);
    if (!program.isEmpty())
        file.add(QStringLiteral("ExecStart"), UnitText::execLine(program, arguments(definition.parameters)));
    if ((definition.flags & TaskFlags::DeleteWhenDone) && runsOnlyOnce(definition, context.today)) {
        file.add(
            QStringLiteral("ExecStopPost"),
            UnitText::execLine(QStringLiteral("/bin/rm"), {QStringLiteral("-f"), QStringLiteral("--"),
                                                           paths.timer, paths.service, paths.wantsLink}));
        // Without a reload the manager keeps the removed units loaded.
        file.add(QStringLiteral("ExecStopPost"),
                 UnitText::execLine(QStringLiteral("systemctl"),
                                    {QStringLiteral("--user"), QStringLiteral("--no-block"),
                                     QStringLiteral("daemon-reload")}));
    }
    file.add(QStringLiteral("RuntimeMaxSec"), definition.maxRunTime == -1
                                                  ? QStringLiteral("infinity")
                                                  : QString::number(quint32(definition.maxRunTime)) + u"ms");
    bool niceSet = false;
    for (const NiceLevel &level : niceLevels) {
        if (level.priority == definition.priority) {
            file.add(QStringLiteral("Nice"), QString::number(level.nice));
            niceSet = true;
        }
    }
    if (!niceSet)
        file.add(keyPriority, QString::number(definition.priority));
    if (program != definition.applicationName)
        file.add(keyApplication, UnitText::encodeValue(definition.applicationName));
    if (program.isEmpty() && !definition.parameters.isEmpty())
        file.add(keyCommandLine, UnitText::encodeValue(definition.parameters));
    // systemd trims the blanks around a value.
    if (definition.comment != definition.comment.trimmed())
        file.add(keyComment, UnitText::encodeValue(definition.comment));
    file.add(keyCreator, UnitText::encodeValue(definition.creator));
    file.add(keyAccount, UnitText::encodeValue(definition.account));
    file.add(keyFlags, QString::number(definition.flags));
    file.add(keyIdleWait, pair(definition.idleMinutes, definition.deadlineMinutes));
    file.add(keyErrorRetry, pair(definition.errorRetryCount, definition.errorRetryInterval));
    return file.bytes();
}

std::optional<TaskDefinition> TaskUnits::read(const QByteArray &timer, const QByteArray &service)
{
    const std::optional<UnitFile> timerFile = UnitFile::parse(timer);
    const std::optional<UnitFile> serviceFile = UnitFile::parse(service);
    if (!timerFile || !serviceFile)
        return std::nullopt;
    std::optional<TaskDefinition> definition = readService(*serviceFile);
    if (!definition)
        return std::nullopt;
    for (const QString &hex : timerFile->values(sectionTimer, keyTrigger)) {
        const std::optional<TriggerRecord> record =
            TriggerRecord::fromBytes(QByteArray::fromHex(hex.toLatin1()));
        if (!record || record->bytes().toHex() != hex.toLatin1())
            return std::nullopt;
        definition->triggers.append(*record);
    }
    return definition;
}

std::optional<QString> TaskUnits::storedName(const QByteArray &unitFile)
{
    const std::optional<UnitFile> file = UnitFile::parse(unitFile);
    if (!file)
        return std::nullopt;
    const QString value = file->value(sectionUnit, keyName);
    return value.isNull() ? std::nullopt : UnitText::decodeValue(value);
}
