#include "ui/directory/directoryresultmodel.h"

#include "ui/directory/faviconicons.h"

namespace {

// What a list row shows: one line, whatever the directory sent; a run of
// line ends and other control characters becomes one blank.
QString oneLine(const QString &text)
{
    QString line;
    line.reserve(text.size());
    for (const QChar c : text) {
        if (c.unicode() >= 0x20 && c.unicode() != 0x7f)
            line += c;
        else if (!line.endsWith(u' '))
            line += u' ';
    }
    return line.trimmed();
}

DirectoryStation shown(DirectoryStation station)
{
    station.name = oneLine(station.name);
    station.country = oneLine(station.country);
    station.tags = oneLine(station.tags);
    station.codec = oneLine(station.codec);
    station.favicon = station.favicon.trimmed();
    return station;
}

} // namespace

std::optional<DirectoryQuery::Order> DirectoryResultModel::orderOf(int column)
{
    switch (column) {
    case ColName:
        return DirectoryQuery::Order::Name;
    case ColCodec:
        return DirectoryQuery::Order::Codec;
    case ColBitRate:
        return DirectoryQuery::Order::BitRate;
    case ColVotes:
        return DirectoryQuery::Order::Votes;
    case ColClicks:
        return DirectoryQuery::Order::ClickCount;
    default:
        return std::nullopt;
    }
}

int DirectoryResultModel::columnOf(DirectoryQuery::Order order)
{
    for (int column = 0; column < ColumnCount; ++column) {
        if (orderOf(column) == order)
            return column;
    }
    return ColVotes;
}

DirectoryResultModel::DirectoryResultModel(FaviconIcons &icons, QObject *parent)
    : QAbstractTableModel(parent), m_icons(icons)
{
    connect(&m_icons, &FaviconIcons::iconReady, this, &DirectoryResultModel::onIconReady);
}

void DirectoryResultModel::setMaxRows(int maxRows)
{
    m_maxRows = qMax(1, maxRows);
}

void DirectoryResultModel::setResults(const QList<DirectoryStation> &stations, bool more)
{
    beginResetModel();
    m_stations.clear();
    m_rowsByIcon.clear();
    m_more = false;
    m_asked = false;
    endResetModel();
    add(stations, more);
}

void DirectoryResultModel::appendResults(const QList<DirectoryStation> &stations, bool more)
{
    add(stations, more);
}

void DirectoryResultModel::endPaging()
{
    m_more = false;
    m_asked = false;
}

void DirectoryResultModel::add(const QList<DirectoryStation> &stations, bool more)
{
    const qsizetype room = m_maxRows - m_stations.size();
    const qsizetype count = qMin(stations.size(), room);
    m_asked = false;
    m_more = more && count == stations.size() && m_stations.size() + count < m_maxRows;
    if (count <= 0)
        return;
    const int first = int(m_stations.size());
    beginInsertRows({}, first, first + int(count) - 1);
    m_stations.reserve(first + count);
    for (qsizetype i = 0; i < count; ++i) {
        m_stations.append(shown(stations.at(i)));
        const QString &icon = m_stations.constLast().favicon;
        if (!icon.isEmpty())
            m_rowsByIcon[icon].append(first + int(i));
    }
    endInsertRows();
}

int DirectoryResultModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_stations.size());
}

int DirectoryResultModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant DirectoryResultModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_stations.size())
        return {};
    const DirectoryStation &s = m_stations.at(index.row());
    const int column = index.column();
    if (role == Qt::DisplayRole) {
        switch (column) {
        case ColName:
            return s.name;
        case ColCountry:
            return s.country;
        case ColTags:
            return s.tags;
        case ColCodec:
            return s.codec;
        case ColBitRate:
            return s.bitrate > 0 ? QString::number(s.bitrate) : QString();
        case ColVotes:
            return QString::number(s.votes);
        case ColClicks:
            return QString::number(s.clickCount);
        default:
            return {};
        }
    }
    if (role == Qt::DecorationRole && column == ColName)
        return m_icons.icon(s.favicon);
    if (role == Qt::ToolTipRole && column == ColName)
        return s.streamAddress();
    if (role == Qt::TextAlignmentRole && column >= ColBitRate)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant DirectoryResultModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    // Counts and rates are wanted largest first, names and codecs from A.
    if (role == Qt::InitialSortOrderRole)
        return int(section >= ColBitRate ? Qt::DescendingOrder : Qt::AscendingOrder);
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case ColName:
        return tr("Station");
    case ColCountry:
        return tr("Country");
    case ColTags:
        return tr("Tags");
    case ColCodec:
        return tr("Codec");
    case ColBitRate:
        return tr("Bit rate");
    case ColVotes:
        return tr("Votes");
    case ColClicks:
        return tr("Clicks");
    default:
        return {};
    }
}

bool DirectoryResultModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && m_more && !m_asked;
}

void DirectoryResultModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    m_asked = true;
    emit moreWanted();
}

void DirectoryResultModel::onIconReady(const QString &address)
{
    for (const int row : m_rowsByIcon.value(address))
        emit dataChanged(index(row, ColName), index(row, ColName), {Qt::DecorationRole});
}
