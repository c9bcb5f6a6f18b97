#pragma once

#include "app/playertexts.h"
#include "app/tracehook.h"
#include "catalogue/catalogue.h"
#include "skin/appskin.h"
#include "skin/skinparam.h"

#include <QString>

class Prompt;

// The process-wide values start-up fills and the windows read. One instance
// lives in main() and is handed to whoever needs it.
class AppState
{
public:
    AppState(QString installFolder, Prompt &prompt, TraceHook trace = {});

    static inline const QString AppTitle = QStringLiteral("Tunecatch");
    static inline const QString CatalogueFileName = QStringLiteral("Stations.txt");
    // The trimming tool's command when none is stored.
    static inline const QString DefaultTrimTool =
        QStringLiteral("%APP%\\mp3Tools\\mp3DirectCut\\mp3DirectCut.exe %MP3FILE%");

    const QString InstallFolder;
    Prompt &prompt;
    TraceHook trace;

    QString DataFolder;
    QString CommandArg;
    bool LaunchMode = false;

    QString GenreFilter;
    QString CategoryFilter;
    QString TypeFilter;
    QString RatingFilter;
    QString TrimToolCommand;

    PlayerTexts playerTexts;
    Catalogue catalogue;
    ModAppSkin skin;
    cSkinParam skinParam;

    // The default-tool rule: an empty command becomes the default, anything else stays.
    void ApplyDefaultTrimTool();
};
