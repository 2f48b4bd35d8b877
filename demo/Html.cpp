#include "demo/Html.h"

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

QString opening(QLatin1StringView tag, std::initializer_list<Attribute> attributes)
{
    QString result = u'<' + QString(tag);
    for (const Attribute &attribute : attributes) {
        if (!attribute.isSet)
            continue;
        result += u' ' + QString(attribute.name);
        if (!attribute.isFlag)
            result += u"=\""_s + escaped(attribute.value) + u'"';
    }
    return result + u'>';
}

} // namespace

QString escaped(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&':
            result += "&amp;"_L1;
            break;
        case u'<':
            result += "&lt;"_L1;
            break;
        case u'>':
            result += "&gt;"_L1;
            break;
        case u'"':
            result += "&quot;"_L1;
            break;
        case u'\'':
            result += "&#39;"_L1;
            break;
        default:
            // Control characters have no place in a page, not even escaped.
            if ((c < u' ' && c != u'\n' && c != u'\t') || c == QChar(0x7F))
                result += QChar(QChar::ReplacementCharacter);
            else
                result += c;
        }
    }
    return result;
}

Html::Html(const QString &text)
    : m_markup(escaped(text))
{
}

Html Html::literal(QLatin1StringView markup)
{
    Html result;
    result.m_markup = markup;
    return result;
}

Html element(QLatin1StringView tag, std::initializer_list<Attribute> attributes, const Html &content)
{
    Html result;
    result.m_markup = opening(tag, attributes) + content.m_markup + u"</"_s + QString(tag) + u'>';
    return result;
}

Html voidElement(QLatin1StringView tag, std::initializer_list<Attribute> attributes)
{
    Html result;
    result.m_markup = opening(tag, attributes);
    return result;
}

} // namespace orbitledge::demo
