#pragma once

#include "catalogue/station.h"

#include <QCoreApplication>
#include <QString>

// What a station typed into a form must be before it joins the catalogue:
// a name, a stream address the players and the recorder can open, an
// information address that is a web page (a browser is sent there), and no field holding the
// catalogue's separator or a line break, which would break its line in the file.
class StationInput
{
    Q_DECLARE_TR_FUNCTIONS(StationInput)

public:
    enum class Field
    {
        None,
        Name,
        StreamURL,
        Genre,
        Category,
        BitRate,
        Format,
        InfoUrl,
        OutputFile,
    };
    struct Problem
    {
        Field field = Field::None;
        QString message; // empty when there is none
    };

    // The form's caption of a field.
    static QString label(Field field);
    // The first problem of the station's fields, in the form's order.
    static Problem check(const Station &station, const QString &separator);
    // An http://, https:// or icyx:// address with a host, or a directory
    // reference ("ssrn#<number>.pls").
    static bool isStreamAddress(const QString &address);
    // An http:// or https:// address with a host: what may be opened in a browser.
    static bool isWebAddress(const QString &address);
};
