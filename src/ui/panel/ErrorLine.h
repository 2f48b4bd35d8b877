#pragma once

#include "ui/panel/Component.h"

#include <optional>

class QHBoxLayout;

namespace orbitledge::ui {

class ThemedLabel;

/// What went wrong with what a form was to do. Where nothing did, it is not there.
class ErrorLine : public Component {
    Q_OBJECT

public:
    struct Look {
        qreal designSize = 11;
        bool hasSymbol = false;
        /// Between it and what is above, in the design's pixels.
        qreal gap = 10;
    };

    /// `introduction` is what those are told before the message who do not see where it stands.
    ErrorLine(QString introduction, const Look &look, QWidget *parent = nullptr);

    /// Whether it is another message, and not none.
    bool setMessage(const std::optional<QString> &message);
    /// Has it read out, where there is one.
    void announce();

Q_SIGNALS:
    /// With what is read out.
    void announced(const QString &text);

protected:
    void measure() final;

private:
    QString m_introduction;
    Look m_look;
    std::optional<QString> m_message;
    QHBoxLayout *m_row;
    ThemedLabel *m_text;
};

} // namespace orbitledge::ui
