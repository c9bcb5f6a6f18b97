#pragma once

// What the settings say about the files a recording writes.
struct SongFileOptions
{
    // What becomes of the first and the last song file of a recording, which
    // hold only part of their song.
    enum class PartialSongs
    {
        Keep,   // beside the others
        Move,   // into the folder "incomplete" beside them
        Delete, // removed when they close
    };

    bool writeTags = true;
    PartialSongs partialSongs = PartialSongs::Keep;
    // One file per song: cut at the quiet moment nearest each title change
    // (SongCutter); off, at the whole frame nearest the title's interval.
    bool cutAtQuietMoment = true;

    // From the settings store (keys WriteTags, PartialSongs and CutAtQuietMoment); what cannot
    // be read there keeps its default.
    static SongFileOptions fromStore();
    void store() const;
};
