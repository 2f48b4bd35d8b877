#pragma once

#include "presentation/LogoContent.h"
#include "ui/panel/LogoImages.h"

#include <QImage>
#include <QPointer>
#include <QWidget>

namespace orbitledge::ui {

/// A rounded square with a logo, or with initials while there is none. Nothing for assistive technology, as
/// the name stands beside it.
class LogoTile : public QWidget {
    Q_OBJECT

public:
    /// In the design's pixels.
    struct Measures {
        qreal side = 0;
        qreal radius = 0;
        qreal imageInset = 0;
        qreal initialsSize = 0;
        /// Of the tint behind the initials.
        qreal groundOpacity = 0;
        /// The line around initials is of the tint.
        bool hasTintedLine = true;
    };

    /// Without `images` it shows initials only.
    LogoTile(const Measures &measures, LogoImages *images, QWidget *parent);

    void setContent(const LogoContent &content);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void paintImage(QPainter &painter, const QImage &image);
    const QImage &scaledTo(QSize pixels, const QImage &image);
    void paintInitials(QPainter &painter) const;

    Measures m_measures;
    QPointer<LogoImages> m_images;
    LogoContent m_content;
    /// The picture as it was painted last, and which one that was.
    QImage m_scaled;
    qint64 m_scaledKey = 0;
};

} // namespace orbitledge::ui
