#include "ui/panel/FormField.h"

#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

namespace orbitledge::ui {

FormField::FormField(const QString &name, QWidget *control, QWidget *parent)
    : Component(parent)
    , m_column(new QVBoxLayout(this))
{
    control->setAccessibleName(name);
    m_column->addWidget(new ThemedLabel(name.toUpper(),
        {.designSize = 9,
            .weight = QFont::Medium,
            .tone = Tone::Slate,
            .tracking = 1.5,
            .overflow = ThemedLabel::Overflow::Elide}));
    m_column->addWidget(control);
    // Of a combo box the toolkit tells what is chosen as the name, and what it is for only by such a label.
    if (qobject_cast<QComboBox *>(control) != nullptr) {
        auto *const label = new QLabel(name, this);
        label->setBuddy(control);
        label->hide();
    }
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    measure();
}

void FormField::measure()
{
    m_column->setContentsMargins(0, scaled(*this, 10), 0, 0);
    m_column->setSpacing(scaled(*this, 4));
}

} // namespace orbitledge::ui
