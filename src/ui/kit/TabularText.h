#pragma once

#include <QFont>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <QTextLayout>

class QPainter;

namespace orbitledge::ui {

/// One line of text whose digits all have the advance of the widest of their script, so that amounts stand
/// under each other and do not move when they change. Each digit is in the middle of its advance. Any decimal
/// digit of Unicode counts, and the order of the letters is that of the text's direction.
class TabularText {
public:
    TabularText(
        const QString &text, const QFont &font, Qt::LayoutDirection direction = Qt::LayoutDirectionAuto);

    QSizeF size() const;

    /// From the line's upper left corner, in the painter's pen.
    void draw(QPainter &painter, QPointF corner) const;

private:
    // It lays out at once, and drawing does not change it.
    QTextLayout m_layout;
    qreal m_width = 0;
};

} // namespace orbitledge::ui
