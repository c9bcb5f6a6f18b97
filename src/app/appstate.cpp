#include "app/appstate.h"

AppState::AppState(QString installFolder, Prompt &prompt, TraceHook trace)
    : InstallFolder(std::move(installFolder)), prompt(prompt), trace(std::move(trace)), skin(InstallFolder)
{
}

void AppState::ApplyDefaultTrimTool()
{
    if (TrimToolCommand.isEmpty())
        TrimToolCommand = DefaultTrimTool;
}
