#include "ui/kit/Field.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Typography.h"

#include <QEvent>

namespace orbitledge::ui {

namespace {

/// The toolkit adds two pixels and the frame's one.
constexpr qreal sideInset = 7;

} // namespace

Field::Field(QWidget *parent)
    : QLineEdit(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setInsets();
}

QSize Field::sizeHint() const
{
    return {QLineEdit::sizeHint().width(), scaled(*this, controlHeight)};
}

QSize Field::minimumSizeHint() const
{
    return {QLineEdit::minimumSizeHint().width(), scaled(*this, controlHeight)};
}

void Field::setInsets()
{
    const int inset = scaled(*this, sideInset);
    setTextMargins(inset, 0, inset, 0);
}

void Field::changeEvent(QEvent *event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        setInsets();
        updateGeometry();
    }
}

} // namespace orbitledge::ui
