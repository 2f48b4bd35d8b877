#pragma once

#include <QProxyStyle>

namespace orbitledge::ui {

/// The toolkit's plainest style, with fields, buttons, check boxes, scroll bars and focus rings of the
/// family. To be set for the application. Colours come from each widget's palette.
class Style : public QProxyStyle {
    Q_OBJECT

public:
    enum class Motion { Full, Reduced };

    explicit Style(Motion motion = Motion::Full);

    /// Widgets ask for the duration of animations when they start one, and are told to look again.
    void setMotion(Motion motion);

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
        QStyleHintReturn *returnData) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
        const QWidget *widget) const override;
    QRect subElementRect(
        SubElement element, const QStyleOption *option, const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
        const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
        const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
        const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
        const QWidget *widget) const override;
    void polish(QWidget *widget) override;
    void unpolish(QWidget *widget) override;
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;

private:
    Motion m_motion;
};

} // namespace orbitledge::ui
