#include "schedule/taskunits.h"

#include "schedule/oncalendar.h"
#include "schedule/unitfile.h"

#include <QDir>

#include <array>
#include <tuple>

namespace {

const QString Unit = QStringLiteral("Unit");
const QString Timer = QStringLiteral("Timer");
const QString Service = QStringLiteral("Service");
const QString Install = QStringLiteral("Install");

const QString KeyApplication = QStringLiteral("X-Tunecatch-ApplicationName");
const QString KeyCommandLine = QStringLiteral("X-Tunecatch-CommandLine");
const QString KeyComment = QStringLiteral("X-Tunecatch-Comment");
const QString KeyPriority = QStringLiteral("X-Tunecatch-Priority");
const QString KeyCreator = QStringLiteral("X-Tunecatch-Creator");
const QString KeyAccount = QStringLiteral("X-Tunecatch-Account");
const QString KeyFlags = QStringLiteral("X-Tunecatch-Flags");
const QString KeyIdleWait = QStringLiteral("X-Tunecatch-IdleWait");
const QString KeyErrorRetry = QStringLiteral("X-Tunecatch-ErrorRetry");
const QString KeyTrigger = QStringLiteral("X-Tunecatch-Trigger");

struct NiceLevel
{
    qint32 priority;
    int nice;
};

// A user's own service manager may lower a program's priority but not raise it.
constexpr std::array<NiceLevel, 3> NiceLevels = {{
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

void addDescription(UnitFile &file, const QString &comment)
{
    if (!comment.isEmpty())
        file.Add(QStringLiteral("Description"), UnitText::EscapeSpecifiers(comment));
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
    const QString value = file.Value(Service, key);
    return value.isNull() ? std::optional<QString>(fallback) : UnitText::DecodeValue(value);
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
    const QString exact = file.Value(Service, KeyPriority);
    bool ok = false;
    if (!exact.isNull()) {
        const qint32 priority = exact.toInt(&ok);
        return ok ? std::optional<qint32>(priority) : std::nullopt;
    }
    const int nice = file.Value(Service, QStringLiteral("Nice")).toInt(&ok);
    for (const NiceLevel &level : NiceLevels) {
        if (ok && level.nice == nice)
            return level.priority;
    }
    return std::nullopt;
}

std::optional<TaskDefinition> readService(const UnitFile &file)
{
    TaskDefinition definition;
    const QString exec = file.Value(Service, QStringLiteral("ExecStart"));
    if (!exec.isNull()) {
        const std::optional<QStringList> words = UnitText::SplitExecLine(exec);
        if (!words)
            return std::nullopt;
        definition.ApplicationName = words->first();
        definition.Parameters = words->mid(1).join(u' ');
    }
    const QString description = file.Value(Unit, QStringLiteral("Description"));
    const std::optional<QString> comment =
        UnitText::UnescapeSpecifiers(description.isNull() ? QString() : description);
    const QString folder = file.Value(Service, QStringLiteral("WorkingDirectory"));
    const std::optional<QString> workingDirectory =
        UnitText::UnescapeSpecifiers(folder.isNull() ? QString() : folder);
    const std::optional<QString> application = decodedOr(file, KeyApplication, definition.ApplicationName);
    const std::optional<QString> parameters = decodedOr(file, KeyCommandLine, definition.Parameters);
    const std::optional<QString> exactComment =
        comment ? decodedOr(file, KeyComment, *comment) : std::nullopt;
    const std::optional<QString> creator = decodedOr(file, KeyCreator, QString());
    const std::optional<QString> account = decodedOr(file, KeyAccount, QString());
    const std::optional<qint32> maxRunTime =
        readMaxRunTime(file.Value(Service, QStringLiteral("RuntimeMaxSec")));
    const std::optional<qint32> priority = readPriority(file);
    const auto idleWait = readPair(file.Value(Service, KeyIdleWait));
    const auto errorRetry = readPair(file.Value(Service, KeyErrorRetry));
    bool flagsOk = false;
    definition.Flags = file.Value(Service, KeyFlags).toInt(&flagsOk);
    if (!workingDirectory || !application || !parameters || !exactComment || !creator || !account ||
        !maxRunTime || !priority || !idleWait || !errorRetry || !flagsOk)
        return std::nullopt;
    definition.ApplicationName = *application;
    definition.Parameters = *parameters;
    definition.Comment = *exactComment;
    definition.WorkingDirectory = *workingDirectory;
    definition.Creator = *creator;
    definition.Account = *account;
    definition.MaxRunTime = *maxRunTime;
    definition.Priority = *priority;
    std::tie(definition.IdleMinutes, definition.DeadlineMinutes) = *idleWait;
    std::tie(definition.ErrorRetryCount, definition.ErrorRetryInterval) = *errorRetry;
    return definition;
}

} // namespace

QString TaskUnits::ProgramPath(const TaskDefinition &definition)
{
    const QString &name = definition.ApplicationName;
    if (name.isEmpty())
        return {};
    if (QDir::isAbsolutePath(name))
        return QDir::cleanPath(name);
    if (definition.WorkingDirectory.isEmpty())
        return name;
    return QDir::cleanPath(definition.WorkingDirectory + u'/' + name);
}

bool TaskUnits::Startable(const TaskDefinition &definition)
{
    if (definition.ApplicationName.isEmpty())
        return false;
    for (const TriggerRecord &trigger : definition.Triggers) {
        if (OnCalendarFor(trigger))
            return true;
    }
    return false;
}

bool TaskUnits::RunsOnlyOnce(const TaskDefinition &definition)
{
    int starts = 0;
    for (const TriggerRecord &trigger : definition.Triggers) {
        if (!OnCalendarFor(trigger))
            continue;
        if (trigger.Type() != TriggerRecord::Once || ++starts > 1)
            return false;
    }
    return true;
}

QByteArray TaskUnits::TimerFile(const QString &name, const TaskDefinition &definition)
{
    UnitFile file(header(name));
    file.Section(Unit);
    addDescription(file, definition.Comment);
    file.Section(Timer);
    for (const TriggerRecord &trigger : definition.Triggers) {
        if (const std::optional<QString> calendar = OnCalendarFor(trigger))
            file.Add(QStringLiteral("OnCalendar"), *calendar);
    }
    // A recording should begin on the minute, not whenever systemd finds convenient.
    file.Add(QStringLiteral("AccuracySec"), QStringLiteral("1s"));
    for (const TriggerRecord &trigger : definition.Triggers)
        file.Add(KeyTrigger, QString::fromLatin1(trigger.Bytes().toHex()));
    file.Section(Install);
    file.Add(QStringLiteral("WantedBy"), QStringLiteral("timers.target"));
    return file.Bytes();
}

QByteArray TaskUnits::ServiceFile(const QString &name, const TaskDefinition &definition, const Paths &paths)
{
    UnitFile file(header(name));
    file.Section(Unit);
    addDescription(file, definition.Comment);
    file.Section(Service);
    file.Add(QStringLiteral("Type"), QStringLiteral("exec"));
    if (!definition.WorkingDirectory.isEmpty())
        file.Add(QStringLiteral("WorkingDirectory"), UnitText::EscapeSpecifiers(definition.WorkingDirectory));
    const QString program = ProgramPath(definition);
    if (!program.isEmpty())
        file.Add(QStringLiteral("ExecStart"), UnitText::ExecLine(program, arguments(definition.Parameters)));
    if ((definition.Flags & TaskFlags::DeleteWhenDone) && RunsOnlyOnce(definition)) {
        file.Add(
            QStringLiteral("ExecStopPost"),
            UnitText::ExecLine(QStringLiteral("/bin/rm"), {QStringLiteral("-f"), QStringLiteral("--"),
                                                           paths.timer, paths.service, paths.wantsLink}));
    }
    file.Add(QStringLiteral("RuntimeMaxSec"), definition.MaxRunTime == -1
                                                  ? QStringLiteral("infinity")
                                                  : QString::number(quint32(definition.MaxRunTime)) + u"ms");
    bool niceSet = false;
    for (const NiceLevel &level : NiceLevels) {
        if (level.priority == definition.Priority) {
            file.Add(QStringLiteral("Nice"), QString::number(level.nice));
            niceSet = true;
        }
    }
    if (!niceSet)
        file.Add(KeyPriority, QString::number(definition.Priority));
    if (program != definition.ApplicationName)
        file.Add(KeyApplication, UnitText::EncodeValue(definition.ApplicationName));
    if (program.isEmpty() && !definition.Parameters.isEmpty())
        file.Add(KeyCommandLine, UnitText::EncodeValue(definition.Parameters));
    // systemd trims the blanks around a value.
    if (definition.Comment != definition.Comment.trimmed())
        file.Add(KeyComment, UnitText::EncodeValue(definition.Comment));
    file.Add(KeyCreator, UnitText::EncodeValue(definition.Creator));
    file.Add(KeyAccount, UnitText::EncodeValue(definition.Account));
    file.Add(KeyFlags, QString::number(definition.Flags));
    file.Add(KeyIdleWait, pair(definition.IdleMinutes, definition.DeadlineMinutes));
    file.Add(KeyErrorRetry, pair(definition.ErrorRetryCount, definition.ErrorRetryInterval));
    return file.Bytes();
}

std::optional<TaskDefinition> TaskUnits::Read(const QByteArray &timer, const QByteArray &service)
{
    const std::optional<UnitFile> timerFile = UnitFile::Parse(timer);
    const std::optional<UnitFile> serviceFile = UnitFile::Parse(service);
    if (!timerFile || !serviceFile)
        return std::nullopt;
    std::optional<TaskDefinition> definition = readService(*serviceFile);
    if (!definition)
        return std::nullopt;
    for (const QString &hex : timerFile->Values(Timer, KeyTrigger)) {
        const std::optional<TriggerRecord> record =
            TriggerRecord::FromBytes(QByteArray::fromHex(hex.toLatin1()));
        if (!record || record->Bytes().toHex() != hex.toLatin1())
            return std::nullopt;
        definition->Triggers.append(*record);
    }
    return definition;
}
