#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace orbitledge {

/// What the running program can be asked to show, or to do, from outside.
enum class ApplicationAction { Open, QuickAdd, Settings, Quit };

/// As launchers and the command line have it: "quick-add".
QString nameOf(ApplicationAction action);
std::optional<ApplicationAction> applicationActionNamed(const QString &name);

/// How others reach the running program: launchers, a second start, a notification that outlived its sender.
class ApplicationService : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    /// `activationToken` is what the desktop wants to see from a window that is to come forward; empty where
    /// there is none.
    void requested(orbitledge::ApplicationAction action, const QString &activationToken);
    /// The page of a reminder that somebody chose.
    void pageRequested(const QString &page, const QString &activationToken);
};

} // namespace orbitledge
