#pragma once

#include <QLayout>
#include <QList>

// Lays its items out in a row that wraps onto further lines where the width
// ends, so that a row of controls needs only the width of its widest item.
// Items that expand horizontally share what is left of their line; a spacer
// at the start of a line takes no room.
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget *parent = nullptr);
    ~FlowLayout() override;
    Q_DISABLE_COPY_MOVE(FlowLayout)

    void addItem(QLayoutItem *item) override;
    int count() const override { return int(m_items.size()); }
    QLayoutItem *itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect &rect) override;

private:
    // Places the items in rect, or only measures when place is false; the height used.
    int arrange(const QRect &rect, bool place) const;

    QList<QLayoutItem *> m_items;
};
