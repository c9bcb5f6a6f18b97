#include "ui/stations/stationfilterbar.h"

#include "controls/flowlayout.h"
#include "controls/schemebutton.h"
#include "ui/stations/stationmenus.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace {

// "Funk" is listed twice on purpose.
const QStringList genreEntries = {
    QString(),          QStringLiteral("TopTen"), QStringLiteral("Alternative"), QStringLiteral("Classical"),
    QStringLiteral("Comedy"), QStringLiteral("Country"), QStringLiteral("Dance"), QStringLiteral("Funk"),
    QStringLiteral("Jazz"),   QStringLiteral("Metal"),   QStringLiteral("Funk"),  QStringLiteral("Mixed"),
    QStringLiteral("Pop"),    QStringLiteral("Rap"),     QStringLiteral("RnB"),   QStringLiteral("Rock"),
    QStringLiteral("Talk"),   QStringLiteral("Techno"),  QStringLiteral("70s"),   QStringLiteral("80s"),
    QStringLiteral("World"),  QStringLiteral("Fun"),     QStringLiteral("Adult"),
};
const QStringList typeEntries = {
    QString(),           QStringLiteral("MP3"), QStringLiteral("TV"), QStringLiteral("OGG"),
    QStringLiteral("-"), QStringLiteral("XxX")};
const QStringList ratingEntries = {QString(),           QStringLiteral("1"), QStringLiteral("2"),
                                   QStringLiteral("3"), QStringLiteral("4"), QStringLiteral("5")};

QComboBox *newCombo(const char *name, int minimumWidth)
{
    auto *combo = new QComboBox;
    combo->setObjectName(QLatin1StringView(name));
    combo->setMinimumWidth(minimumWidth);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return combo;
}

} // namespace

StationFilterBar::StationFilterBar(QWidget *parent)
    : RoundedFrame({}, parent), m_genre(newCombo("cmbGenre", 90)), m_category(newCombo("cmbCategory", 100)),
      m_type(newCombo("cmbType", 56)), m_rating(newCombo("cmbRating", 44)), m_search(new QLineEdit)
{
    setObjectName(QStringLiteral("fraFilter"));
    setAccessibleName(tr("Filter"));
    auto *filters = new FlowLayout(this);
    // The frame's own margins already leave room round its panel.
    filters->setContentsMargins(0, 0, 0, 0);
    filters->setSpacing(6);
    const std::pair<QString, QComboBox *> labelled[] = {
        {tr("Genre"), m_genre}, {tr("Category"), m_category}, {tr("Type"), m_type}, {tr("Rating"), m_rating}};
    m_genre->addItems(genreEntries);
    m_type->addItems(typeEntries);
    m_rating->addItems(ratingEntries);
    for (const auto &[text, combo] : labelled) {
        auto *pair = new QWidget(this);
        auto *row = new QHBoxLayout(pair);
        row->setContentsMargins(0, 0, 4, 0);
        row->setSpacing(6);
        auto *label = new QLabel(text, pair);
        label->setBuddy(combo);
        row->addWidget(label);
        row->addWidget(combo);
        filters->addWidget(pair);
    }
    auto *cmdFilter = StationMenus::newButton(this, "cmdFilter", tr("Filter"));
    cmdFilter->setToolTip(tr("Filter: show only the stations that match the genre, category, type and "
                             "rating chosen."));
    filters->addWidget(cmdFilter);

    auto *search = new QWidget(this);
    auto *searchRow = new QHBoxLayout(search);
    searchRow->setContentsMargins(0, 0, 0, 0);
    searchRow->setSpacing(6);
    m_search->setObjectName(QStringLiteral("txtSearch"));
    m_search->setPlaceholderText(tr("Station or category"));
    m_search->setClearButtonEnabled(true);
    m_search->setMinimumWidth(100);
    searchRow->addWidget(m_search, 1);
    auto *cmdSearch = StationMenus::newButton(search, "cmdSearch", tr("Search"));
    cmdSearch->setToolTip(tr("Search: go to the next station whose name or category holds the text "
                             "(Enter in the box does the same; Ctrl+F comes here)."));
    searchRow->addWidget(cmdSearch);
    auto *cmdSearchWww = StationMenus::newButton(search, "cmdSearchWww", tr("Search Web"));
    cmdSearchWww->setToolTip(tr("Search Web: search the web station directory for the text and the chosen "
                                "genre, in your browser."));
    searchRow->addWidget(cmdSearchWww);
    // The search box takes the rest of its line.
    search->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    filters->addWidget(search);
}
