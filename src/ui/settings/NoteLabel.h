#pragma once

#include "ui/kit/Palette.h"

#include <QLabel>

#include <optional>

namespace orbitledge::ui {

/// A small text under what it belongs to, as it is, never markup; hidden where there is none.
class NoteLabel : public QLabel {
    Q_OBJECT

public:
    enum class Selection {
        None,
        /// The text can be selected and copied, by pointer and keyboard, and comes up as news when it
        /// changes.
        Selectable,
    };

    explicit NoteLabel(
        Tone tone = Tone::Slate, Selection selection = Selection::None, QWidget *parent = nullptr);

    void setNote(const std::optional<QString> &note);

    /// To be called when the text scale changes: a font of its own is not told of that.
    void dress();

Q_SIGNALS:
    /// There is something else to read.
    void arrived();

protected:
    void changeEvent(QEvent *event) override;

private:
    Tone m_tone;
    bool m_isDressing = false;
};

} // namespace orbitledge::ui
