#include "controls/flowlayout.h"

#include <QWidget>

namespace {

bool isSpacer(QLayoutItem *item)
{
    return item->spacerItem() != nullptr;
}

// A spacer counts as empty, but still keeps its distance.
bool isHidden(QLayoutItem *item)
{
    return item->isEmpty() && !isSpacer(item);
}

bool expands(QLayoutItem *item)
{
    return !isSpacer(item) && (item->expandingDirections() & Qt::Horizontal);
}

} // namespace

FlowLayout::FlowLayout(QWidget *parent) : QLayout(parent) {}

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_items);
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (index < 0 || index >= m_items.size())
        return nullptr;
    return m_items.takeAt(index);
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (QLayoutItem *item : m_items) {
        if (!item->isEmpty() && !isSpacer(item))
            size = size.expandedTo(item->minimumSize());
    }
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize FlowLayout::sizeHint() const
{
    int width = 0;
    int height = 0;
    for (QLayoutItem *item : m_items) {
        if (isHidden(item))
            continue;
        width += item->sizeHint().width() + (width > 0 ? qMax(0, spacing()) : 0);
        height = qMax(height, item->sizeHint().height());
    }
    const QMargins margins = contentsMargins();
    return {width + margins.left() + margins.right(), height + margins.top() + margins.bottom()};
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowLayout::arrange(const QRect &rect, bool place) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    const int gap = qMax(0, spacing());
    int top = area.top();
    QList<QLayoutItem *> line;
    int lineWidth = 0;

    const auto finishLine = [&] {
        if (line.isEmpty())
            return;
        int lineHeight = 0;
        int expanding = 0;
        for (QLayoutItem *item : line) {
            lineHeight = qMax(lineHeight, item->sizeHint().height());
            expanding += expands(item) ? 1 : 0;
        }
        if (place) {
            int extra = qMax(0, area.width() - lineWidth);
            int x = area.left();
            for (QLayoutItem *item : line) {
                int width = qMin(item->sizeHint().width(), area.width());
                if (expands(item)) {
                    const int share = extra / expanding--;
                    width += share;
                    extra -= share;
                }
                const int height =
                    qMin(lineHeight, qMax(item->minimumSize().height(), item->sizeHint().height()));
                item->setGeometry(QRect(x, top + (lineHeight - height) / 2, width, height));
                x += width + gap;
            }
        }
        top += lineHeight + gap;
        line.clear();
        lineWidth = 0;
    };

    for (QLayoutItem *item : m_items) {
        if (isHidden(item))
            continue;
        const int width = item->sizeHint().width();
        if (!line.isEmpty() && lineWidth + gap + width > area.width())
            finishLine();
        if (line.isEmpty() && isSpacer(item))
            continue;
        lineWidth += (line.isEmpty() ? 0 : gap) + width;
        line.append(item);
    }
    finishLine();
    const QMargins margins = contentsMargins();
    return qMax(0, top - gap - area.top()) + margins.top() + margins.bottom();
}
