#include "cli/Concealment.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// Matches nothing.
const QString never = u"(?!)"_s;

QString homePattern(QString home)
{
    while (home.endsWith(u'/'))
        home.chop(1);
    if (home.isEmpty())
        return never;
    // Not where a longer name begins with it.
    return QRegularExpression::escape(home) + u"(?=/|[^\\p{L}\\p{N}._-]|$)"_s;
}

QString namesPattern(const QStringList &names)
{
    QStringList patterns;
    for (const QString &name : names) {
        if (!name.isEmpty())
            patterns.append(QRegularExpression::escape(name));
    }
    if (patterns.isEmpty())
        return never;
    return u"(?<![\\p{L}\\p{N}])(%1)(?![\\p{L}\\p{N}])"_s.arg(patterns.join(u'|'));
}

} // namespace

Concealment::Concealment(const QString &home, const QStringList &userNames)
    : m_home(homePattern(home), QRegularExpression::UseUnicodePropertiesOption)
    , m_names(namesPattern(userNames), QRegularExpression::UseUnicodePropertiesOption)
{
}

QString Concealment::concealed(QString text) const
{
    static const QRegularExpression foreignHome(u"(/home/)[^/]+"_s);
    // A modifier of a locale ("ca_ES@valencia") has no dot behind it.
    static const QRegularExpression address(u"[^\\s/<>\"]+@[^\\s/<>\"]+\\.[^\\s/<>\"]+"_s);
    text.replace(m_home, u"~"_s);
    text.replace(foreignHome, u"\\1<user>"_s);
    text.replace(address, u"<address>"_s);
    return text.replace(m_names, u"<user>"_s);
}

} // namespace orbitledge
