#include "support/stationwindow.h"

#include "base/appinfo.h"
#include "controls/lynxgrid.h"
#include "schedule/recordingscheduler.h"
#include "ui/recorder/frmtc.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

const QString StationWindowTest::catalogue5 =
    u"Rock One|Rock|128|mp3|Rock|.\\%STATION%.mp3|True|3|||http://127.0.0.1:8000/a|i\r\n"
    "Classic Hits|Classic rock|128|MP3|Hard rock|o|False|0|||http://127.0.0.1:8000/b|i\r\n"
    "Jazz Cafe|Jazz|128|ogg|Lounge|o|False|5|||http://127.0.0.1:8000/c|i\r\n"
    "Talk Radio|Talk|128|mp3|News|o|True|2|||http://127.0.0.1:8000/d|i\r\n"
    "Rockabilly|Country|128|mp3|Oldies|o|False|3|||http://127.0.0.1:8000/e|i\r\n"_s;
const QString StationWindowTest::allFive = u"Rock One,Classic Hits,Jazz Cafe,Talk Radio,Rockabilly"_s;

bool BrowserlessShell::openDocument(const QString &address)
{
    opened.append(address);
    return true;
}

void StationWindowTest::SetUp()
{
    QCoreApplication::instance()->installEventFilter(&keys);
    writeCatalogue(catalogue5);
}

void StationWindowTest::TearDown()
{
    window.reset();
    // Recorder windows closed with the list go now, while their state still exists.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::instance()->removeEventFilter(&keys);
}

void StationWindowTest::writeCatalogue(const QString &stations)
{
    TempProfile::writeFile(cataloguePath(),
                           TempProfile::utf16File(u"2.1\r\n|\r\n# versions\r\n# format\r\n"_s + stations));
    window.reset();
    state = std::make_unique<ProgramParts>(profile.installFolder(), prompt);
    state->catalogue.load(prompt, AppInfo::title);
}

QString StationWindowTest::catalogueText() const
{
    const QByteArray bytes = TempProfile::readFile(cataloguePath());
    return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData() + 2),
                              (bytes.size() - 2) / 2);
}

void StationWindowTest::open(const MediaPlayerFactory &factory)
{
    const auto newRecorder = [this] {
        FrmTC::Hooks hooks;
        hooks.schedule = [this](const RecordingInputs &inputs, const auto &, QWidget *) {
            scheduled << inputs.station;
        };
        return new FrmTC(prompt, state->launch, power, nullptr, std::move(hooks));
    };
    StationCommands::Services services{prompt, shell, keys, newRecorder, checkTiming, runModal, chooseSaveFile};
    const MediaPlayerFactory scripted = [this](QWidget *owner) {
        return new PlayerView(players.emplace_back(new ScriptedPlayer), nullptr, owner);
    };
    FrmStations::Parts parts = stationWindowParts(*state);
    parts.openHistory = openHistory;
    window = std::make_unique<FrmStations>(std::move(parts), std::move(services), factory ? factory : scripted);
    startup = std::make_unique<Startup>(*state, windows);
    QObject::connect(window.get(), &FrmStations::unloaded, window.get(), [this] { startup->close(); });
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    grid = window->findChild<LynxGrid *>(u"LynxGrid1"_s);
    ASSERT_NE(grid, nullptr);
}

void StationWindowTest::activate()
{
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
}

void StationWindowTest::click(const char *button, quint32 heldKey)
{
    const bool control = heldKey == leftControlKey;
    // The keys' X key codes on an evdev keyboard.
    const quint32 keycode = heldKey == leftShiftKey ? 50 : heldKey == rightShiftKey ? 62 : 37;
    const Qt::KeyboardModifiers held = heldKey == 0 ? Qt::NoModifier
                                       : control    ? Qt::ControlModifier
                                                    : Qt::ShiftModifier;
    const auto key = [&](QEvent::Type type) {
        QKeyEvent event(type, control ? Qt::Key_Control : Qt::Key_Shift, held, keycode, heldKey, 0);
        QApplication::sendEvent(window.get(), &event);
    };
    if (heldKey)
        key(QEvent::KeyPress);
    QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton, held);
    if (heldKey)
        key(QEvent::KeyRelease);
}

int StationWindowTest::pos(Col column) const
{
    return grid->ColPosition(column);
}

QString StationWindowTest::shown(Col column) const
{
    QStringList texts;
    for (int row = 0; row < grid->ItemCount(); ++row)
        texts << grid->CellText(row, pos(column));
    return texts.join(u',');
}

void StationWindowTest::filter(const char *genre, const char *category, const char *type, const char *rating)
{
    child<QComboBox>("cmbGenre")->setCurrentText(QLatin1StringView(genre));
    child<QComboBox>("cmbCategory")->setCurrentText(QLatin1StringView(category));
    child<QComboBox>("cmbType")->setCurrentText(QLatin1StringView(type));
    child<QComboBox>("cmbRating")->setCurrentText(QLatin1StringView(rating));
    child<QPushButton>("cmdFilter")->click();
}

void StationWindowTest::editText(int row, Col column, const QString &text)
{
    ASSERT_TRUE(grid->EditCell(row, pos(column)));
    auto *box = grid->viewport()->findChild<QLineEdit *>();
    box->selectAll();
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Return);
}
