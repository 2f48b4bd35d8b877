#include "ui/settings/NoteLabel.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/Typography.h"

#include <QEvent>

namespace orbitledge::ui {

namespace {

constexpr qreal noteSize = 12;

} // namespace

NoteLabel::NoteLabel(Tone tone, Selection selection, QWidget *parent)
    : QLabel(parent)
    , m_tone(tone)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    if (selection == Selection::Selectable) {
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        setFocusPolicy(Qt::StrongFocus);
    }
    setVisible(false);
    dress();
}

void NoteLabel::setNote(const std::optional<QString> &note)
{
    const QString wanted = note.value_or(QString());
    if (wanted == text())
        return;
    setText(wanted);
    setVisible(!wanted.isEmpty());
    if (wanted.isEmpty() || !isVisible())
        return;
    // What was there before the window was is no news.
    if (isActiveWindow())
        announce(*this, wanted);
    Q_EMIT arrived();
}

void NoteLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    const bool concernsLook = event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange
        || event->type() == QEvent::LayoutDirectionChange;
    if (!m_isDressing && concernsLook)
        dress();
}

void NoteLabel::dress()
{
    m_isDressing = true;
    setFont(fontOf(*this, noteSize));
    QPalette dressed;
    dressed.setColor(QPalette::WindowText, colorOf(m_tone, colorSchemeOf(palette())));
    dressed.setColor(QPalette::Text, colorOf(m_tone, colorSchemeOf(palette())));
    setPalette(dressed);
    setAlignment(leadingIn(*this));
    m_isDressing = false;
}

} // namespace orbitledge::ui
