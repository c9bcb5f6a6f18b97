#pragma once

#include "controls/roundedframe.h"

class QComboBox;
class QLineEdit;

// The main window's filter frame: the genre, category, type and rating
// drop-downs with their captions, Filter, the search box, Search and Search
// Web. Its rows wrap in a narrow window; each caption stays with its drop-down.
// The genre, type and rating drop-downs come with their fixed entries; the
// categories are the catalogue's, which the window fills in.
class StationFilterBar : public RoundedFrame
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationFilterBar)

public:
    explicit StationFilterBar(QWidget *parent = nullptr);

    QComboBox *genre() const { return m_genre; }
    QComboBox *category() const { return m_category; }
    QComboBox *type() const { return m_type; }
    QComboBox *rating() const { return m_rating; }
    QLineEdit *search() const { return m_search; }

private:
    QComboBox *m_genre;
    QComboBox *m_category;
    QComboBox *m_type;
    QComboBox *m_rating;
    QLineEdit *m_search;
};
