#include "catalogue/stationfilters.h"

#include "base/settingsstore.h"

void StationFilters::load()
{
    genre = SettingsStore::GetSetting(SettingsStore::OptGenre);
    category = SettingsStore::GetSetting(SettingsStore::OptCategory);
    type = SettingsStore::GetSetting(SettingsStore::OptType);
    rating = SettingsStore::GetSetting(SettingsStore::OptRating);
}

void StationFilters::save() const
{
    SettingsStore::SaveSetting(SettingsStore::OptGenre, genre);
    SettingsStore::SaveSetting(SettingsStore::OptCategory, category);
    SettingsStore::SaveSetting(SettingsStore::OptType, type);
    SettingsStore::SaveSetting(SettingsStore::OptRating, rating);
}
