#pragma once

#include "base/launchoptions.h"
#include "base/tracehook.h"
#include "base/trimtool.h"
#include "catalogue/catalogue.h"
#include "catalogue/stationfilters.h"
#include "player/playertexts.h"
#include "skin/appearance.h"

#include <QString>

class Prompt;

// What the program is made of. main() owns one and hands it to start-up and
// the composition root only; every window and step below them is given just
// the parts it uses.
struct ProgramParts
{
    ProgramParts(QString folder, Prompt &userPrompt, TraceHook traceHook = {})
        : installFolder(std::move(folder)), prompt(userPrompt), trace(std::move(traceHook)),
          appearance(installFolder)
    {
    }
    Q_DISABLE_COPY_MOVE(ProgramParts)

    const QString installFolder;
    Prompt &prompt;
    TraceHook trace;

    LaunchOptions launch;
    StationFilters filters;
    TrimTool trimTool;
    PlayerTexts playerTexts;
    Catalogue catalogue;
    Appearance appearance;
};
