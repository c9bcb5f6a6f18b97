#pragma once

class LoudnessEnvelope;

// How a cut was placed, surest first.
enum class CutQuality
{
    Silence,  // in a quiet stretch between songs
    Quietest, // no such stretch: at the softest moment, clearly softer than the rest
    Title,    // nothing to go by: where the title says (moved by the station's delay)
};

// What counts as quiet. Levels are RMS over 10 ms blocks of the mono mix,
// in dB against full scale (a full-scale square wave is 0 dBFS).
struct QuietRules
{
    double thresholdDb = -45;
    double minimumRun = 0.3;
    // A song should start on its first note but keep its attack whole: the
    // cut goes this long before the end of the quiet stretch (or into its
    // middle when the stretch is shorter than twice this).
    double leadIn = 0.2;
    double softestLength = 0.1;
    // The softest moment counts only this far below the window's median
    // block level: a gap over a noise floor is; a crossfade, or a song's
    // own soft beat, is not.
    double softestDepthDb = 20;
};

// Where to cut and how sure: `time` is the cut; [from, to] the stretch it was
// found in (where any point would do nearly as well), equal to `time` for a
// cut at the title.
struct QuietMoment
{
    CutQuality quality = CutQuality::Title;
    double time = 0;
    double from = 0;
    double to = 0;
};

// Looks between `from` and `to` for the longest run of blocks under the
// threshold that lasts at least the minimum; among equally long runs, the
// nearest to `expected`. Without one, the softest stretch; without that, or
// when the whole window is quiet (no sound at all), `expected`.
QuietMoment findQuietMoment(const LoudnessEnvelope &loudness, double from, double to, double expected,
                            const QuietRules &rules = {});
