#pragma once

// What start-up and the closing procedure need of the windowing side. The
// program's own implementation shows real windows; tests record the calls.
class AppWindows
{
public:
    virtual ~AppWindows() = default;

    // Applies the platform's visual style to standard controls.
    virtual void InitCommonControls() = 0;
    // Creates the main window; it fills itself from the catalogue. May throw AppError.
    virtual void LoadMainWindow() = 0;
    virtual void ShowMainWindow() = 0;
    // Creates and shows the recorder window, which reads the command argument itself.
    virtual void ShowRecorderWindow() = 0;
    // Lets pending window messages run once.
    virtual void ProcessEvents() = 0;
    // Unloads every window still loaded, newest first.
    virtual void UnloadAllWindows() = 0;
    virtual void EndProcess() = 0;
};
