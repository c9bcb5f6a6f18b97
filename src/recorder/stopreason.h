#pragma once

#include <QString>

// Why a recording stopped: the kind for whoever acts on it, the text for
// whoever shows it (empty when the stop was asked for).
struct StopReason
{
    enum class Kind
    {
        Stopped,      // the Stop command, or the window closing
        LimitReached, // the selected stop limit
        BadSwitches,  // a launch command line that asks for what cannot be done
        BadAddress,   // an address that cannot be parsed
        Unreachable,  // no stream came: no connection, a refusal, a playlist without a stream
        Dropped,      // the stream stopped and could not be reached again
        StreamFailed, // the station's stream cannot be recorded
        OutputFailed, // a file could not be opened or written
    };
    Kind kind = Kind::Stopped;
    QString text;

    // The line that says how the recording ended: the text, or for a stop
    // that was asked for, which one it was.
    QString summary() const;
};

// How a launched recording ends, as the program's exit status.
namespace ExitStatus {

inline constexpr int Done = 0;         // its limit, or a stop
inline constexpr int BadSwitches = 2;  // the command line or the address
inline constexpr int Unreachable = 3;  // the station could not be reached, or refused
inline constexpr int OutputFailed = 4; // a file could not be made or written
inline constexpr int Dropped = 5;      // the station dropped and did not come back

int of(StopReason::Kind kind);
// What the status says, for a list of past runs.
QString text(int status);

} // namespace ExitStatus
