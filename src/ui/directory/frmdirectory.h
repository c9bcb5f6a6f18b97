#pragma once

#include "catalogue/stationexchange.h"
#include "directory/directoryclient.h"
#include "directory/directoryquery.h"
#include "directory/faviconcache.h"
#include "ui/directory/directoryresultmodel.h"
#include "ui/directory/faviconicons.h"

#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableView;
class StationPlayer;

// The station directory window: searches the open station directory as the
// user types (after a short pause; a new search cancels the one under way),
// with filters and the directory's own orders, lists what it finds a page at
// a time with the stations' icons, plays the selected station in the main
// window's player (telling the directory of the click) and adds the chosen
// stations to the catalogue.
class FrmDirectory : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmDirectory)

public:
    struct Parts
    {
        StationPlayer &player;
        // Adds stations to the catalogue and shows them in the main list.
        std::function<StationExchange::AddResult(const QList<Station> &)> add;
        // The catalogue's categories, offered for the stations added.
        QStringList categories;
        // The configured server ("scheme://host[:port]"); empty finds the directory's servers.
        QString server;
        QString iconFolder = FaviconCache::defaultFolder();
    };

    // Typing rests this long before it searches.
    static constexpr int searchDelayMs = 400;
    // A selection rests this long before it plays, so that moving through
    // the list with the keys does not start every station on the way.
    static constexpr int playDelayMs = 300;
    static const QList<int> bitRateChoices;

    explicit FrmDirectory(Parts parts, QWidget *parent = nullptr);
    ~FrmDirectory() override;

    // Stations asked for at a time, and at most in the list.
    void setPaging(int pageSize, int maxRows);
    // Searches with the window's text, filters and order now.
    void searchNow();
    // Adds the selected stations (or the current one) to the catalogue.
    void addSelected();
    DirectoryClient &client() { return m_client; }
    DirectoryResultModel &results() { return m_model; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildControls();
    void setAccessibleNames();
    void connectControls();
    DirectoryQuery query() const;
    void onSearchFinished(const DirectoryQuery &query, const QList<DirectoryStation> &stations);
    void onSearchFailed(const DirectoryQuery &query, const QString &message);
    void onListFinished(DirectoryClient::ListKind kind, const QList<DirectoryFilterValue> &values);
    void onSortChanged(int column, Qt::SortOrder order);
    void fetchNextPage();
    void playCurrent();
    void showBusy();
    void showStatus(const QString &text);

    Parts m_parts;
    DirectoryClient m_client;
    FaviconCache m_iconCache;
    FaviconIcons m_icons;
    DirectoryResultModel m_model;
    QTimer m_searchTimer;
    QTimer m_playTimer;
    DirectoryQuery::Order m_order = DirectoryQuery::Order::Votes;
    bool m_descending = true;
    int m_pageSize = DirectoryQuery::defaultPageSize;
    // The search whose pages the list shows.
    DirectoryQuery m_shown;

    QLineEdit *m_txtSearch = nullptr;
    QProgressBar *m_spinner = nullptr;
    QComboBox *m_cmbTag = nullptr;
    QComboBox *m_cmbCountry = nullptr;
    QComboBox *m_cmbLanguage = nullptr;
    QComboBox *m_cmbCodec = nullptr;
    QComboBox *m_cmbBitRate = nullptr;
    QTableView *m_lstResults = nullptr;
    QLabel *m_lblStatus = nullptr;
    QComboBox *m_cmbCategory = nullptr;
    QPushButton *m_cmdAdd = nullptr;
    QPushButton *m_cmdClose = nullptr;
};
