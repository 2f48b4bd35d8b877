#pragma once

#include <QStringList>

class QComboBox;
class QPushButton;
class QSpinBox;
class QWidget;

namespace orbitledge::ui {

// The toolkit's own controls, as the form wants them: they leave the wheel to the form, which scrolls.

QComboBox *makeChoice(const QStringList &titles);
QSpinBox *makeNumber(int fewest, int most);

/// All fields of the form have the same width.
void measureField(QWidget &field);

/// For what is not easily undone.
QPushButton *makeDestructiveButton(const QString &text);

} // namespace orbitledge::ui
