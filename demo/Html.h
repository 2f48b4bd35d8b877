#pragma once

#include <QString>

#include <initializer_list>

namespace orbitledge::demo {

/// A piece of a page. Made from texts, which are escaped, and from elements; markup as such comes only from
/// this program's own literals, so that no text can become markup by oversight.
class Html {
public:
    Html() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): a text is what most elements hold, and is safe
    Html(const QString &text);

    /// A literal of this program.
    static Html literal(QLatin1StringView markup);

    [[nodiscard]] const QString &markup() const { return m_markup; }
    [[nodiscard]] bool isEmpty() const { return m_markup.isEmpty(); }

    Html &operator+=(const Html &other)
    {
        m_markup += other.m_markup;
        return *this;
    }
    friend Html operator+(Html left, const Html &right) { return left += right; }

private:
    friend Html element(QLatin1StringView, std::initializer_list<struct Attribute>, const Html &);
    friend Html voidElement(QLatin1StringView, std::initializer_list<struct Attribute>);

    QString m_markup;
};

struct Attribute {
    QLatin1StringView name;
    QString value;
    /// Left out where not.
    bool isSet = true;
    /// Written as its name alone.
    bool isFlag = false;
};

inline Attribute flag(QLatin1StringView name, bool isSet = true)
{
    return {name, {}, isSet, true};
}

/// `<tag …>content</tag>`
Html element(QLatin1StringView tag, std::initializer_list<Attribute> attributes, const Html &content = {});
/// `<tag …>`, for what has neither content nor end.
Html voidElement(QLatin1StringView tag, std::initializer_list<Attribute> attributes);

QString escaped(const QString &text);

} // namespace orbitledge::demo
