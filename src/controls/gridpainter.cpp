#include "controls/gridpainter.h"

#include "base/conversions.h"
#include "controls/lynxgrid.h"
#include "controls/progresspainter.h"

#include <QDateTime>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>

namespace {

QColor blend(const QColor &over, const QColor &under, qreal amount)
{
    return QColor::fromRgbF(over.redF() * amount + under.redF() * (1 - amount),
                            over.greenF() * amount + under.greenF() * (1 - amount),
                            over.blueF() * amount + under.blueF() * (1 - amount));
}

} // namespace

int GridPainter::paintRows(QPainter &p, const QRect &clip) const
{
    p.fillRect(clip, m_grid.m_look.backBkg);

    const int first = m_grid.topDisplay() + clip.top() / m_grid.m_rowHeight;
    const int last =
        qMin(m_grid.m_data.displayCount() - 1, m_grid.topDisplay() + clip.bottom() / m_grid.m_rowHeight);
    int painted = 0;
    for (int display = first; display <= last; ++display) {
        const int row = m_grid.m_data.rowAtDisplay(display);
        paintRow(p, row, display, (display - m_grid.topDisplay()) * m_grid.m_rowHeight, clip);
        ++painted;
    }

    if (m_grid.m_gridLines == GridLineMode::Vertical || m_grid.m_gridLines == GridLineMode::Both) {
        // Column lines run on below the last row so that the columns read as columns.
        const int bottom = (last - m_grid.topDisplay() + 1) * m_grid.m_rowHeight;
        if (bottom < clip.bottom() && m_grid.m_gridLineWidth > 0) {
            p.setPen(QPen(m_grid.m_look.grid, m_grid.m_gridLineWidth));
            int x = -m_grid.xOffset();
            for (int col = 0; col < m_grid.Cols(); ++col) {
                if (!m_grid.m_data.column(col).visible)
                    continue;
                x += m_grid.m_data.column(col).width;
                p.drawLine(x - 1, bottom, x - 1, clip.bottom());
            }
        }
    }

    // Focus without a current row (tabbing into the grid): the whole view is framed.
    if (m_grid.hasFocus() && m_grid.m_focusMode != GridFocusMode::None &&
        m_grid.m_data.displayOf(m_grid.m_row) < 0)
        paintFocus(p, m_grid.viewport()->rect(), m_grid.m_look.focusRect, 2);
    return painted;
}

QString GridPainter::displayText(int row, int col) const
{
    const GridColumn &column = m_grid.m_data.column(col);
    const QString &text = m_grid.m_data.cell(row, col).text;
    if (!m_grid.m_formatCells || column.format.isEmpty() || text.isEmpty())
        return text;
    if (column.type == GridColumnType::Number) {
        const qsizetype point = column.format.indexOf(u'.');
        const int decimals = point < 0 ? 0 : static_cast<int>(column.format.size() - point - 1);
        const double value = Convert::leadingNumber(text);
        return column.format.contains(u',') ? QLocale().toString(value, 'f', decimals)
                                            : QString::number(value, 'f', decimals);
    }
    if (column.type == GridColumnType::Date) {
        const QDateTime when = GridData::cellDate(text);
        return when.isValid() ? when.toString(column.format) : text;
    }
    return text;
}

void GridPainter::paintRow(QPainter &p, int row, int display, int y, const QRect &clip) const
{
    const GridItem &item = m_grid.m_data.item(row);
    const bool showSelection = !(m_grid.m_hideSelection && !m_grid.hasFocus());
    const bool selected = showSelection && (item.flags & GridItem::Selected);
    int x = -m_grid.xOffset();
    for (int col = 0; col < m_grid.Cols(); ++col) {
        const GridColumn &column = m_grid.m_data.column(col);
        if (!column.visible)
            continue;
        const QRect cell(x, y, column.width, m_grid.m_rowHeight);
        x += column.width;
        if (cell.right() < clip.left() || cell.left() > clip.right())
            continue;
        const bool cellSelected =
            selected && (m_grid.m_fullRowSelect || col == m_grid.m_col || m_grid.m_col < 0);
        QColor back = display % 2 ? m_grid.m_look.backAlt : m_grid.m_look.back;
        if (item.extra && item.extra->back.isValid())
            back = item.extra->back;
        if (const GridCellExtra *extra = m_grid.m_data.findCellExtra(row, col);
            extra && extra->back.isValid())
            back = extra->back;
        if (cellSelected)
            back = m_grid.m_alphaBlend ? blend(m_grid.m_look.backSel, back, 0.55) : m_grid.m_look.backSel;
        p.fillRect(cell, back);
        paintCell(p, row, col, cell, cellSelected);
        if (m_grid.m_gridLineWidth > 0 && m_grid.m_gridLines != GridLineMode::None) {
            p.setPen(QPen(m_grid.m_look.grid, m_grid.m_gridLineWidth));
            if (m_grid.m_gridLines != GridLineMode::Vertical)
                p.drawLine(cell.left(), cell.bottom(), cell.right(), cell.bottom());
            if (m_grid.m_gridLines != GridLineMode::Horizontal)
                p.drawLine(cell.right(), cell.top(), cell.right(), cell.bottom());
        }
    }

    if (row != m_grid.m_row || m_grid.m_focusMode == GridFocusMode::None || !m_grid.hasFocus() ||
        m_grid.isEditing())
        return;
    if (m_grid.m_focusMode == GridFocusMode::Row) {
        paintFocus(p, QRect(-m_grid.xOffset(), y, m_grid.contentWidth(), m_grid.m_rowHeight),
                   m_grid.m_look.focusRect, 1);
        return;
    }
    // The current cell is framed even when the whole row is selected: F2, Enter
    // and Space act on it, so the user must see which one it is.
    const QColor color = selected && !m_grid.m_alphaBlend ? m_grid.m_look.foreSel : m_grid.m_look.focusRect;
    paintFocus(p, m_grid.cellRect(row, m_grid.m_col), color, 2);
}

void GridPainter::paintFocus(QPainter &p, const QRect &rect, const QColor &color, int width) const
{
    p.save();
    p.setPen(QPen(color, width, m_grid.m_focusStyle == GridFocusStyle::Dotted ? Qt::DotLine : Qt::SolidLine,
                  Qt::SquareCap, Qt::MiterJoin));
    p.setBrush(Qt::NoBrush);
    const int inset = width / 2;
    p.drawRect(rect.adjusted(inset, inset, -inset - 1, -inset - 1));
    p.restore();
}

void GridPainter::paintCheck(QPainter &p, const QRect &box, bool checked, const QColor &color) const
{
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(color, 1));
    p.setBrush(m_grid.m_look.back);
    p.drawRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    if (checked) {
        QPainterPath tick;
        tick.moveTo(box.left() + box.width() * 0.22, box.top() + box.height() * 0.52);
        tick.lineTo(box.left() + box.width() * 0.42, box.top() + box.height() * 0.74);
        tick.lineTo(box.left() + box.width() * 0.80, box.top() + box.height() * 0.28);
        p.setPen(QPen(m_grid.m_look.focusRect, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.setBrush(Qt::NoBrush);
        p.drawPath(tick);
    }
    p.restore();
}

void GridPainter::paintCell(QPainter &p, int row, int col, const QRect &rect, bool selected) const
{
    const GridColumn &column = m_grid.m_data.column(col);
    const GridItem &item = m_grid.m_data.item(row);
    const GridCell &cell = m_grid.m_data.cell(row, col);
    const GridCellExtra *extra = m_grid.m_data.findCellExtra(row, col);

    QColor fore = m_grid.m_look.fore;
    if (item.extra && item.extra->fore.isValid())
        fore = item.extra->fore;
    if (extra && extra->fore.isValid())
        fore = extra->fore;
    if (selected && !m_grid.m_alphaBlend)
        fore = m_grid.m_look.foreSel;

    QRect area = rect.adjusted(cellPadding, 0, -cellPadding, 0);
    const bool firstCol = col == m_grid.firstVisibleCol();
    if (firstCol && m_grid.m_checkBoxes) {
        const QRect box = m_grid.itemCheckRect(row);
        paintCheck(p, box, item.flags & GridItem::Checked, fore);
        area.setLeft(box.right() + cellPadding);
    }

    int image = extra ? extra->image : -1;
    if (image < 0 && firstCol && item.extra)
        image = item.extra->image;
    if (image < 0)
        image = column.image;
    if (image >= 0 && image < m_grid.m_images.size()) {
        const int size = qMax(1, m_grid.m_rowHeight - 6);
        int x = area.left();
        if (column.imageAlignment & Qt::AlignHCenter)
            x = area.left() + (area.width() - size) / 2;
        else if (column.imageAlignment & Qt::AlignRight)
            x = area.right() - size;
        const QIcon::Mode mode = selected && m_grid.m_selectImages ? QIcon::Selected : QIcon::Normal;
        m_grid.m_images.at(image).paint(&p, QRect(x, rect.top() + 3, size, size), Qt::AlignCenter, mode);
        if (column.imageAlignment & Qt::AlignRight)
            area.setRight(x - cellPadding);
        else if (!(column.imageAlignment & Qt::AlignHCenter))
            area.setLeft(x + size + cellPadding);
    }

    const Qt::Alignment alignment = m_grid.m_data.cellAlignment(row, col);
    if (column.type == GridColumnType::CheckBox) {
        paintCheck(p, m_grid.checkRect(rect, alignment), cell.flags & GridCell::Checked, fore);
        return;
    }

    if (extra && extra->progress >= 0) {
        // The same bar as the program's progress bars, in the grid's own colours.
        const ProgressColors colors{blend(m_grid.m_look.progress, m_grid.m_look.back, 0.2),
                                    m_grid.m_look.progress, m_grid.m_look.grid, m_grid.m_look.fore,
                                    m_grid.m_look.foreSel};
        paintProgress(p, area.adjusted(0, 3, 0, -3), extra->progress / 100.0, QString(), colors);
    }

    const QString text = displayText(row, col);
    if (text.isEmpty())
        return;
    const bool plainFont = !extra && !(item.flags & GridItem::Bold);
    if (!plainFont) {
        QFont f = m_grid.font();
        f.setBold(m_grid.CellFontBold(row, col));
        f.setItalic(m_grid.CellFontItalic(row, col));
        f.setUnderline(m_grid.CellFontUnderline(row, col));
        if (extra && !extra->fontName.isEmpty())
            f.setFamily(extra->fontName);
        p.setFont(f);
    }
    p.setPen(fore);
    const bool wrap = m_grid.m_data.cellWordWrap(row, col);
    const Qt::Alignment flags = (alignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
    if (wrap)
        p.drawText(area, int(flags) | Qt::TextWordWrap, text);
    else if (m_grid.m_ellipsis)
        p.drawText(area, int(flags), p.fontMetrics().elidedText(text, Qt::ElideRight, area.width()));
    else
        p.drawText(area, int(flags), text);
    if (!plainFont)
        p.setFont(m_grid.font());
}

void GridPainter::paintHeader(QPainter &p, int width, int hotCol, int dropCol) const
{
    const int height = m_grid.headerHeight();
    p.fillRect(0, 0, width, height, m_grid.m_look.backFixed);
    int x = -m_grid.xOffset();
    const int sortCol = m_grid.sortColumn();
    for (int col = 0; col < m_grid.Cols(); ++col) {
        const GridColumn &column = m_grid.m_data.column(col);
        if (!column.visible)
            continue;
        const QRect rect(x, 0, column.width, height);
        x += column.width;
        if (rect.right() < 0 || rect.left() > width)
            continue;
        const bool hot = m_grid.m_hotHeader && col == hotCol;
        if (m_grid.m_themeStyle == GridThemeStyle::Gradient) {
            QLinearGradient shade(rect.topLeft(), rect.bottomLeft());
            shade.setColorAt(0, hot ? m_grid.m_look.backFixed.lighter(125)
                                    : m_grid.m_look.backFixed.lighter(110));
            shade.setColorAt(1, hot ? m_grid.m_look.backFixed.lighter(105)
                                    : m_grid.m_look.backFixed.darker(104));
            p.fillRect(rect, shade);
        } else if (hot) {
            p.fillRect(rect, m_grid.m_look.backFixed.lighter(115));
        }
        p.setPen(m_grid.m_look.grid);
        p.drawLine(rect.right(), rect.top() + 3, rect.right(), rect.bottom() - 3);

        QRect text = rect.adjusted(cellPadding - 1, 0, -(cellPadding - 1), 0);
        if (col == sortCol && text.width() > 16) {
            // The sort mark: a small triangle at the right, up for ascending.
            const int cx = text.right() - 4;
            const int cy = rect.center().y();
            QPolygon mark;
            if (m_grid.m_sortOrder == GridSortOrder::Ascending)
                mark << QPoint(cx - 4, cy + 2) << QPoint(cx + 4, cy + 2) << QPoint(cx, cy - 3);
            else
                mark << QPoint(cx - 4, cy - 2) << QPoint(cx + 4, cy - 2) << QPoint(cx, cy + 3);
            p.save();
            p.setRenderHint(QPainter::Antialiasing);
            p.setPen(Qt::NoPen);
            p.setBrush(m_grid.m_look.foreHdr);
            p.drawPolygon(mark);
            p.restore();
            text.setRight(cx - 8);
        }
        p.setPen(hot ? m_grid.m_look.foreHdr : m_grid.m_look.foreFixed);
        const Qt::Alignment alignment = (column.alignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
        p.drawText(text, int(alignment),
                   p.fontMetrics().elidedText(column.heading, Qt::ElideRight, text.width()));
    }
    p.setPen(m_grid.m_look.grid);
    p.drawLine(0, height - 1, width, height - 1);
    if (dropCol >= 0) {
        const int dropX =
            (dropCol >= m_grid.Cols() ? m_grid.contentWidth() : m_grid.ColLeft(dropCol)) - m_grid.xOffset();
        p.fillRect(dropX - 1, 0, 3, height, m_grid.m_look.focusRect);
    }
}
