#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace orbitledge {

/// Makes texts from the machine fit to be shown to strangers: paths in the home folder begin with "~", what
/// is named like the person or lies where people's folders are is "<user>", and an e-mail address is
/// "<address>".
class Concealment {
public:
    Concealment(const QString &home, const QStringList &userNames);

    [[nodiscard]] QString concealed(QString text) const;

private:
    QRegularExpression m_home;
    QRegularExpression m_names;
};

} // namespace orbitledge
