#pragma once

#include <QObject>

namespace orbitledge {

/// How the person wants programs to look, as the desktop tells it. Followed while the program runs.
class DesktopPreferences : public QObject {
    Q_OBJECT

public:
    enum class Colors { NoPreference, Dark, Light };

    using QObject::QObject;

    [[nodiscard]] virtual Colors colors() const = 0;
    /// What is read and used should stand out more than usual.
    [[nodiscard]] virtual bool increasesContrast() const = 0;
    /// Nothing should move that need not.
    [[nodiscard]] virtual bool reducesMotion() const = 0;
    /// Of all text; 1 is the usual size.
    [[nodiscard]] virtual double textScale() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace orbitledge
