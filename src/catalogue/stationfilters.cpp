#include "catalogue/stationfilters.h"

#include "base/settingsstore.h"

void StationFilters::load()
{
    genre = SettingsStore::getSetting(SettingsStore::OptGenre);
    category = SettingsStore::getSetting(SettingsStore::OptCategory);
    type = SettingsStore::getSetting(SettingsStore::OptType);
    rating = SettingsStore::getSetting(SettingsStore::OptRating);
}

void StationFilters::save() const
{
    SettingsStore::saveSetting(SettingsStore::OptGenre, genre);
    SettingsStore::saveSetting(SettingsStore::OptCategory, category);
    SettingsStore::saveSetting(SettingsStore::OptType, type);
    SettingsStore::saveSetting(SettingsStore::OptRating, rating);
}
