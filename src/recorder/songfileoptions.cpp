#include "recorder/songfileoptions.h"

#include "base/apperror.h"
#include "base/settingsstore.h"
#include "recorder/songcutter.h"

SongFileOptions SongFileOptions::fromStore()
{
    // A value edited into something else by hand leaves its default.
    SongFileOptions options;
    try {
        options.writeTags = SettingsStore::getBoolean(SettingsStore::WriteTags, options.writeTags);
    } catch (const AppError &) {
    }
    try {
        const qint32 partial = SettingsStore::getNumber(SettingsStore::PartialSongs, 0);
        if (partial >= 0 && partial <= qint32(PartialSongs::Delete))
            options.partialSongs = PartialSongs(partial);
    } catch (const AppError &) {
    }
    options.cutAtQuietMoment = SongCutter::quietSearchSetting();
    return options;
}

void SongFileOptions::store() const
{
    SettingsStore::saveBoolean(SettingsStore::WriteTags, writeTags);
    SettingsStore::saveNumber(SettingsStore::PartialSongs, qint32(partialSongs));
    SongCutter::saveQuietSearchSetting(cutAtQuietMoment);
}
