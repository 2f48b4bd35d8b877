#pragma once

#include <QImage>
#include <QObject>
#include <QUrl>

namespace orbitledge::ui {

/// The pictures of logos, as far as they are there.
class LogoImages : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// At once. Null where it is not there; then it is fetched, unless that failed before.
    virtual QImage image(const QUrl &url) = 0;

    /// Nobody is signed in any more: none of them is left behind.
    virtual void clear() = 0;

Q_SIGNALS:
    /// It is there now.
    void arrived(const QUrl &url);
};

} // namespace orbitledge::ui
