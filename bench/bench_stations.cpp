// The main window over a generated catalogue of 100,000 stations: filling the
// grid, filtering, one search step, a heading click, memory, and what a scroll
// repaints.
#include "benchsupport.h"

#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "base/appinfo.h"
#include "app/desktopshell.h"
#include "app/keystate.h"
#include "controls/gridheader.h"
#include "controls/lynxgrid.h"
#include "ui/stations/frmstations.h"
#include "ui/player/qtmediaplayer.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr int stationTotal = 100000;

// Stations of typical size, with genres, categories and formats spread so
// that filters keep a realistic share.
Station generated(int i)
{
    static const QString genres[] = {QStringLiteral("Rock"),    QStringLiteral("Jazz"),  QStringLiteral("Classical"),
                                     QStringLiteral("Talk"),    QStringLiteral("Dance"), QStringLiteral("Classic Rock"),
                                     QStringLiteral("Country"), QStringLiteral("Pop"),   QStringLiteral("World")};
    const QString n = QString::number(i);
    Station s = Station::newStation();
    s.Name = QStringLiteral("Radio ") + n + QStringLiteral(" Live FM");
    s.Genre = genres[i % 9];
    s.BitRate = i % 3 ? QStringLiteral("128") : QStringLiteral("64");
    s.Format = i % 4 ? QStringLiteral("mp3") : QStringLiteral("ogg");
    s.Category = QStringLiteral("Region ") + QString::number(i % 40);
    s.Rating = i % 6;
    s.LastDate = i % 5 ? QString() : QStringLiteral("2024-03-01");
    s.CallSign = QStringLiteral("K") + n;
    s.StreamURL = QStringLiteral("http://stream") + n + QStringLiteral(".example.net:8000/live");
    s.InfoUrl = QStringLiteral("http://www.station") + n + QStringLiteral(".example.net/");
    return s;
}

// One window over the catalogue, shared by the benchmarks in their order.
struct MainWindow
{
    MainWindow() : state(QStringLiteral("."), prompt)
    {
        {
            Catalogue source;
            for (int i = 1; i <= stationTotal; ++i)
                source.append(generated(i));
            source.save();
        }
#ifdef __GLIBC__
        // Hand the generator's memory back, so that the resident size is the window's and the catalogue's.
        malloc_trim(0);
#endif
        // Loaded from the file, so that every field is its own string as in real use.
        state.catalogue.load(prompt, AppInfo::title);
        window = std::make_unique<FrmStations>(stationWindowParts(state),
                                               StationCommands::Services{prompt, shell, keys, {}}, QtMediaPlayer::create);
        window->show();
        QCoreApplication::processEvents();
        grid = window->findChild<LynxGrid *>(QStringLiteral("LynxGrid1"));
    }

    template <typename T>
    T *child(const char *name) const
    {
        return window->findChild<T *>(QLatin1StringView(name));
    }

    void setFilters(const QString &genre)
    {
        child<QComboBox>("cmbGenre")->setCurrentText(genre);
        child<QPushButton>("cmdFilter")->click();
    }

    QuietPrompt prompt;
    ProgramParts state;
    // No command runs here: the window only needs them to exist.
    DesktopShell shell;
    KeyState keys;
    std::unique_ptr<FrmStations> window;
    LynxGrid *grid = nullptr;
};

// Made on first use, so that the memory benchmark sees it arrive; gone before the application.
std::unique_ptr<MainWindow> sharedWindow;

MainWindow &mainWindow()
{
    if (!sharedWindow)
        sharedWindow = std::make_unique<MainWindow>();
    return *sharedWindow;
}

void BM_WindowMemory(benchmark::State &state)
{
    const double before = processMegabytes("VmRSS:");
    for (auto _ : state)
        benchmark::DoNotOptimize(mainWindow().grid);
    MainWindow &w = mainWindow();
    if (w.grid->ItemCount() != stationTotal || w.prompt.messages != 0)
        state.SkipWithError("the generated catalogue did not load whole");
    state.counters["rows"] = w.grid->ItemCount();
    state.counters["rss_MB"] = processMegabytes("VmRSS:");
    state.counters["window_and_catalogue_MB"] = processMegabytes("VmRSS:") - before;
}
BENCHMARK(BM_WindowMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

// All filters empty: the whole catalogue, drawing off for the fill.
void BM_GridFill(benchmark::State &state)
{
    MainWindow &w = mainWindow();
    for (auto _ : state)
        w.setFilters(QString());
    state.counters["rows"] = w.grid->ItemCount();
}
BENCHMARK(BM_GridFill)->Unit(benchmark::kMillisecond);

void BM_ApplyFilter(benchmark::State &state)
{
    MainWindow &w = mainWindow();
    for (auto _ : state)
        w.setFilters(QStringLiteral("Rock"));
    state.counters["rows"] = w.grid->ItemCount();
    w.setFilters(QString());
}
BENCHMARK(BM_ApplyFilter)->Unit(benchmark::kMillisecond);

// One step of the text search: a text that turns up every few thousand rows,
// and one that is nowhere, so the step reads both cells of every row.
void BM_SearchStep(benchmark::State &state)
{
    MainWindow &w = mainWindow();
    const QString text = state.range(0) ? QStringLiteral("Radio 777") : QStringLiteral("no such station");
    w.child<QLineEdit>("txtSearch")->setText(text);
    w.grid->GotoCell(0, 1);
    auto *cmdSearch = w.child<QPushButton>("cmdSearch");
    for (auto _ : state)
        cmdSearch->click();
    state.SetLabel(state.range(0) ? "next match" : "no match");
}
BENCHMARK(BM_SearchStep)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

// A click on a heading sorts the whole list, the next one reverses it; the
// repaint that follows is part of the wait. Station names are all different,
// genres are few (many equal keys), ratings are short numbers.
void BM_HeadingClick(benchmark::State &state)
{
    MainWindow &w = mainWindow();
    auto *header = w.grid->findChild<GridHeader *>();
    const int col = w.grid->ColPosition(static_cast<int>(state.range(0)));
    const QPointF at(w.grid->ColLeft(col) + w.grid->ColWidth(col) / 2.0, header->height() / 2.0);
    const auto click = [header, &at](QEvent::Type type) {
        QMouseEvent event(type, at, header->mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(header, &event);
    };
    for (auto _ : state) {
        click(QEvent::MouseButtonPress);
        click(QEvent::MouseButtonRelease);
        QCoreApplication::processEvents();
    }
    if (w.grid->sortColumn() != col)
        state.SkipWithError("the click did not sort");
    state.SetLabel(w.grid->ColHeading(col).toStdString());
    state.counters["rows"] = w.grid->ItemCount();
    w.setFilters(QString());
}
BENCHMARK(BM_HeadingClick)
    ->Arg(FrmStations::ColStation)
    ->Arg(FrmStations::ColGenre)
    ->Arg(FrmStations::ColRating)
    ->Unit(benchmark::kMillisecond);

// A paint after each page down draws only the rows in view, whatever the row count.
void BM_ScrollPaint(benchmark::State &state)
{
    MainWindow &w = mainWindow();
    QScrollBar *bar = w.grid->verticalScrollBar();
    QImage image(w.grid->viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    bar->setValue(0);
    int mostRows = 0;
    for (auto _ : state) {
        bar->setValue(bar->value() + bar->pageStep() > bar->maximum() ? 0 : bar->value() + bar->pageStep());
        w.grid->viewport()->render(&image);
        mostRows = qMax(mostRows, w.grid->lastPaintedRows());
    }
    state.counters["rows_in_view"] = w.grid->ItemsVisible();
    state.counters["most_rows_painted"] = mostRows;
    state.counters["rows_total"] = w.grid->ItemCount();
    if (mostRows > w.grid->ItemsVisible() + 1)
        state.SkipWithError("a paint drew rows outside the view");
}
BENCHMARK(BM_ScrollPaint)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    // The catalogue lives in the data folder, which APPDATA points at.
    const QTemporaryDir appData;
    qputenv("APPDATA", QFile::encodeName(appData.path()));
    QDir().mkpath(appData.path() + QStringLiteral("/Tunecatch"));

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    sharedWindow.reset();
    std::printf("Peak memory: %.1f MB\n", processMegabytes("VmHWM:"));
    return 0;
}
