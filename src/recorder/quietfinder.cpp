#include "recorder/quietfinder.h"

#include "recorder/loudnessenvelope.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace {

struct Run
{
    qint64 first = 0;
    qint64 end = 0; // past the last block
    qint64 length() const { return end - first; }
};

double timeOf(qint64 block)
{
    return static_cast<double>(block) * LoudnessEnvelope::BlockSeconds;
}

qint64 blocksIn(double seconds)
{
    return std::max<qint64>(1, std::llround(seconds / LoudnessEnvelope::BlockSeconds));
}

// The cut inside a quiet run: the lead-in before its end, never before its middle.
double cutInRun(const Run &run, double leadIn)
{
    const double start = timeOf(run.first);
    const double end = timeOf(run.end);
    return std::max((start + end) / 2, end - leadIn);
}

bool soundIn(const LoudnessEnvelope &loudness, qint64 first, qint64 end, const QuietRules &rules)
{
    const double threshold = std::pow(10.0, rules.thresholdDb / 10);
    for (qint64 b = first; b < end; ++b)
        if (loudness.meanSquare(b) >= threshold)
            return true;
    return false;
}

std::optional<QuietMoment> quietRun(const LoudnessEnvelope &loudness, qint64 first, qint64 end,
                                    double expected, const QuietRules &rules)
{
    const double threshold = std::pow(10.0, rules.thresholdDb / 10);
    std::optional<Run> best;
    Run run{first, first};
    auto close = [&] {
        if (run.length() < blocksIn(rules.minimumRun))
            return;
        const auto distance = [&](const Run &r) { return std::abs(cutInRun(r, rules.leadIn) - expected); };
        if (!best || run.length() > best->length() ||
            (run.length() == best->length() && distance(run) < distance(*best)))
            best = run;
    };
    for (qint64 b = first; b < end; ++b) {
        const float level = loudness.meanSquare(b);
        if (level >= 0 && level < threshold) {
            if (run.length() == 0)
                run.first = b;
            run.end = b + 1;
            continue;
        }
        close();
        run = {b + 1, b + 1};
    }
    close();
    if (!best)
        return std::nullopt;
    return QuietMoment{CutQuality::Silence, cutInRun(*best, rules.leadIn), timeOf(best->first),
                       timeOf(best->end)};
}

std::optional<QuietMoment> softest(const LoudnessEnvelope &loudness, qint64 first, qint64 end,
                                   double expected, const QuietRules &rules)
{
    std::vector<float> levels;
    for (qint64 b = first; b < end; ++b)
        if (loudness.meanSquare(b) >= 0)
            levels.push_back(loudness.meanSquare(b));
    const qint64 length = blocksIn(rules.softestLength);
    if (static_cast<qint64>(levels.size()) < length)
        return std::nullopt;
    std::nth_element(levels.begin(), levels.begin() + static_cast<qsizetype>(levels.size() / 2),
                     levels.end());
    const double limit = levels[levels.size() / 2] * std::pow(10.0, -rules.softestDepthDb / 10);
    std::optional<QuietMoment> best;
    double bestLevel = 0;
    for (qint64 b = first; b + length <= end; ++b) {
        double sum = 0;
        qint64 known = 0;
        for (qint64 k = b; k < b + length; ++k) {
            const float level = loudness.meanSquare(k);
            sum += level >= 0 ? level : 0;
            known += level >= 0 ? 1 : 0;
        }
        if (known < length)
            continue;
        const double level = sum / static_cast<double>(length);
        const double time = (timeOf(b) + timeOf(b + length)) / 2;
        if (level > limit)
            continue;
        if (!best || level < bestLevel ||
            (level == bestLevel && std::abs(time - expected) < std::abs(best->time - expected))) {
            best = QuietMoment{CutQuality::Quietest, time, timeOf(b), timeOf(b + length)};
            bestLevel = level;
        }
    }
    return best;
}

} // namespace

QuietMoment findQuietMoment(const LoudnessEnvelope &loudness, double from, double to, double expected,
                            const QuietRules &rules)
{
    const qint64 first = LoudnessEnvelope::blockAt(from);
    const qint64 end = std::max(first, LoudnessEnvelope::blockAt(to));
    expected = std::clamp(expected, from, std::max(from, to));
    if (!soundIn(loudness, first, end, rules))
        return QuietMoment{CutQuality::Title, expected, expected, expected};
    if (auto run = quietRun(loudness, first, end, expected, rules))
        return *run;
    if (auto dip = softest(loudness, first, end, expected, rules))
        return *dip;
    return QuietMoment{CutQuality::Title, expected, expected, expected};
}
