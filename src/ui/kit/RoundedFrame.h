#pragma once

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"

#include <QWidget>

#include <optional>

namespace orbitledge::ui {

/// A rounded ground, with a line around it or without, for a layout of other components.
class RoundedFrame : public QWidget {
    Q_OBJECT

public:
    struct Look {
        Tone ground = Tone::Surface;
        std::optional<Tone> line = Tone::Stroke;
        qreal radius = controlRadius;
    };

    explicit RoundedFrame(QWidget *parent = nullptr);
    RoundedFrame(Look look, QWidget *parent = nullptr);

    void setLook(Look look);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    Look m_look;
};

} // namespace orbitledge::ui
