#pragma once

#include "ui/kit/Palette.h"

#include <QFont>
#include <QWidget>

namespace orbitledge::ui {

/// A text as it is, never markup. Whatever is seen of it, its accessible name is the whole text, unless
/// another one is set.
class ThemedLabel : public QWidget {
    Q_OBJECT

public:
    /// What happens where there is not room for all of it.
    enum class Overflow {
        /// It takes the room it needs.
        Keep,
        /// Its end gives way to an ellipsis.
        Elide,
        /// It goes on in the next line.
        Wrap,
    };

    enum class Digits { Proportional, Tabular };

    struct Look {
        qreal designSize = 12;
        QFont::Weight weight = QFont::Normal;
        Tone tone = Tone::Ink;
        qreal tracking = 0;
        Overflow overflow = Overflow::Keep;
        /// Of labels that keep their width; others have proportional ones.
        Digits digits = Digits::Proportional;
        Qt::Alignment alignment = Qt::AlignLeading | Qt::AlignVCenter;
    };

    explicit ThemedLabel(QString text = QString(), QWidget *parent = nullptr);
    ThemedLabel(QString text, Look look, QWidget *parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString &text);
    const Look &look() const { return m_look; }
    void setLook(const Look &look);

    /// Told to assistive technology as a heading.
    void setHeading(bool isHeading) { m_isHeading = isHeading; }
    bool isHeading() const { return m_isHeading; }

    /// Whether some of the text does not fit.
    bool isElided() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QFont textFont() const;
    bool isTabular() const;
    qreal trailingTracking() const;
    qreal naturalWidth() const;
    QSize wrappedSize(qreal width) const;
    void paintTabular(QPainter &painter) const;

    QString m_text;
    Look m_look;
    bool m_isHeading = false;
};

} // namespace orbitledge::ui
