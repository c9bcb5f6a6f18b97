#pragma once

// What start-up and the closing procedure need of the windowing side. The
// program's own implementation shows real windows; tests record the calls.
class AppWindows
{
public:
    virtual ~AppWindows() = default;

    // Applies the platform's visual style to standard controls.
    virtual void initCommonControls() = 0;
    // Creates the main window; it fills itself from the catalogue. May throw AppError.
    virtual void loadMainWindow() = 0;
    virtual void showMainWindow() = 0;
    // Creates and shows the recorder window, which reads the command argument itself.
    virtual void showRecorderWindow() = 0;
    // Lets pending window messages run once.
    virtual void processEvents() = 0;
    // Unloads every window still loaded, newest first.
    virtual void unloadAllWindows() = 0;
    virtual void endProcess() = 0;
};
