#pragma once

#include <QString>

// The main window's four filters, kept in the settings between runs.
struct StationFilters
{
    QString genre;
    QString category;
    QString type;
    QString rating;

    void load();
    void save() const;
};
