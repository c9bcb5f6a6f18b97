#pragma once

#include <QWidget>

#include <functional>

class HistoryFilter;
class HistoryModel;
class HistoryStore;
class Prompt;
class QAction;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableView;
class Shell;

// The History window: every title seen while playing or recording, newest
// first, with its station and time. A text (searched in titles and station
// names), a station and a day narrow the rows; the rows shown export as CSV;
// a row's menu copies its "Artist - Title" or searches it on the web.
class FrmHistory : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmHistory)

public:
    // The web search a row's menu opens; %1 is the title, encoded for an address.
    static inline const QString WebSearchAddress = QStringLiteral("https://duckduckgo.com/?q=%1");

    struct Hooks
    {
        // The file to export to, from the suggested path; empty when cancelled.
        // Empty means the save dialog.
        std::function<QString(QWidget *parent, const QString &suggested)> chooseExportPath;
    };

    FrmHistory(HistoryStore &store, Shell &shell, Prompt &prompt, Hooks hooks = {},
               QWidget *parent = nullptr);

    // What the row menu does, on the current row.
    void copyTitle();
    void searchTitle();
    void exportCsv();

private:
    void buildControls();
    void addStation(const QString &station);
    void dayFilterChanged();
    void showCount();
    void showRowMenu(const QPoint &at);
    // The current row's title; empty when no row is current.
    QString currentTitle() const;

    HistoryStore &m_store;
    Shell &m_shell;
    Prompt &m_prompt;
    Hooks m_hooks;
    HistoryModel *m_model;
    HistoryFilter *m_filter;

    QLineEdit *m_txtSearch = nullptr;
    QComboBox *m_cmbStation = nullptr;
    QCheckBox *m_chkDay = nullptr;
    QDateEdit *m_dtpDay = nullptr;
    QTableView *m_grdTitles = nullptr;
    QLabel *m_lblCount = nullptr;
    QAction *m_actCopy = nullptr;
    QAction *m_actSearch = nullptr;
};
