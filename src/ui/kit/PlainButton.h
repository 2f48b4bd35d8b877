#pragma once

#include "ui/kit/ButtonBase.h"
#include "ui/kit/Palette.h"

namespace orbitledge::ui {

/// A button that is only its text.
class PlainButton : public ButtonBase {
    Q_OBJECT

public:
    struct Look {
        qreal designSize = 12;
        QFont::Weight weight = QFont::DemiBold;
        Tone tone = Tone::Cyan;
        /// Where there is not room for it, the text goes on in the next line.
        bool wraps = false;
    };

    explicit PlainButton(const QString &text, QWidget *parent = nullptr);
    PlainButton(const QString &text, Look look, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont labelFont() const;
    /// With the room around the text.
    QSize wrappedSize(int width) const;

    Look m_look;
};

} // namespace orbitledge::ui
