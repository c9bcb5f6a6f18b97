#include "catalogue/stationinput.h"

#include <QRegularExpression>
#include <QUrl>

namespace {

bool hasScheme(const QUrl &url, std::initializer_list<const char16_t *> schemes)
{
    for (const char16_t *scheme : schemes) {
        if (url.scheme().compare(QStringView(scheme), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool isAddressWithHost(const QString &address, std::initializer_list<const char16_t *> schemes)
{
    const QUrl url(address, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() && hasScheme(url, schemes);
}

} // namespace

QString StationInput::label(Field field)
{
    switch (field) {
    case Field::None:
        return {};
    case Field::Name:
        return tr("Name");
    case Field::StreamURL:
        return tr("Stream address");
    case Field::Genre:
        return tr("Genre");
    case Field::Category:
        return tr("Category");
    case Field::BitRate:
        return tr("Bit rate");
    case Field::Format:
        return tr("Format");
    case Field::InfoUrl:
        return tr("Information address");
    case Field::OutputFile:
        return tr("Output file");
    }
    return {};
}

bool StationInput::isStreamAddress(const QString &address)
{
    static const QRegularExpression reference(QStringLiteral("^ssrn#\\d+\\.pls$"),
                                              QRegularExpression::CaseInsensitiveOption);
    return reference.match(address).hasMatch() || isAddressWithHost(address, {u"http", u"https", u"icyx"});
}

bool StationInput::isWebAddress(const QString &address)
{
    return isAddressWithHost(address, {u"http", u"https"});
}

StationInput::Problem StationInput::check(const Station &station, const QString &separator)
{
    const std::pair<Field, const QString &> texts[] = {
        {Field::Name, station.Name},       {Field::StreamURL, station.StreamURL},
        {Field::Genre, station.Genre},     {Field::Category, station.Category},
        {Field::BitRate, station.BitRate}, {Field::Format, station.Format},
        {Field::InfoUrl, station.InfoUrl}, {Field::OutputFile, station.OutputFile},
    };
    for (const auto &[field, text] : texts) {
        if (!separator.isEmpty() && text.contains(separator)) {
            return {field, tr("%1 may not hold \"%2\": it separates the fields in the station list.")
                               .arg(label(field), separator)};
        }
        if (text.contains(u'\r') || text.contains(u'\n'))
            return {field, tr("%1 may not hold a line break.").arg(label(field))};
    }
    if (station.Name.trimmed().isEmpty())
        return {Field::Name, tr("A station needs a name.")};
    if (station.StreamURL.isEmpty())
        return {Field::StreamURL, tr("A station needs a stream address.")};
    if (!isStreamAddress(station.StreamURL)) {
        return {Field::StreamURL,
                tr("The stream address must begin with http:// or https:// and name a host, as in "
                   "http://ice1.example.org:8000/stream.")};
    }
    static const QRegularExpression number(QStringLiteral("^\\d{0,5}$"));
    if (!number.match(station.BitRate).hasMatch())
        return {Field::BitRate, tr("The bit rate is a number of kbit/s, such as 128.")};
    // The browser gets it: a page address, with or without its http://, and nothing else.
    if (!station.InfoUrl.isEmpty() && !hasScheme(QUrl::fromUserInput(station.InfoUrl), {u"http", u"https"}))
        return {Field::InfoUrl,
                tr("The information address must be a web page, as in https://www.example.org/.")};
    return {};
}
