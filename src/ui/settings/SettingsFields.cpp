#include "ui/settings/SettingsFields.h"

#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QComboBox>
#include <QEvent>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal fieldWidth = 168;

class WheelFilter : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (event->type() != QEvent::Wheel)
            return false;
        event->ignore(); // goes on to who scrolls
        return true;
    }
};

void leaveWheel(QWidget *field)
{
    field->setFocusPolicy(Qt::StrongFocus);
    field->installEventFilter(new WheelFilter(field));
}

/// The toolkit puts digits, which are written from left to right, at the left in every window.
class NumberField : public QSpinBox {
public:
    NumberField() { setAlignment(leadingIn(*this)); }

protected:
    void changeEvent(QEvent *event) override
    {
        QSpinBox::changeEvent(event);
        if (event->type() == QEvent::LayoutDirectionChange)
            setAlignment(leadingIn(*this));
    }
};

class DestructiveButton : public QPushButton {
public:
    explicit DestructiveButton(const QString &text)
        : QPushButton(text)
    {
        dress();
    }

protected:
    void changeEvent(QEvent *event) override
    {
        QPushButton::changeEvent(event);
        if (event->type() == QEvent::PaletteChange)
            dress();
    }

private:
    void dress()
    {
        const QColor ink = colorOf(Tone::Alert, colorSchemeOf(palette()));
        if (palette().color(QPalette::Active, QPalette::ButtonText) == ink)
            return;
        QPalette dressed;
        dressed.setColor(QPalette::ButtonText, ink);
        setPalette(dressed);
    }
};

} // namespace

QComboBox *makeChoice(const QStringList &titles)
{
    auto *const choice = new QComboBox;
    choice->addItems(titles);
    leaveWheel(choice);
    return choice;
}

QSpinBox *makeNumber(int fewest, int most)
{
    auto *const number = new NumberField;
    number->setRange(fewest, most);
    leaveWheel(number);
    return number;
}

void measureField(QWidget &field)
{
    field.setMinimumWidth(std::max(field.sizeHint().width(), scaled(field, fieldWidth)));
}

QPushButton *makeDestructiveButton(const QString &text)
{
    return new DestructiveButton(text);
}

} // namespace orbitledge::ui
