#pragma once

#include <QStringDecoder>

#include <algorithm>
#include <string_view>

namespace orbitledge::fuzz {

/// Whether a text is JSON (RFC 8259), letter by letter and without a parser of anyone's: UTF-8, an optional
/// byte order mark, one value, escaped surrogates only in pairs.
class JsonGrammar {
public:
    explicit JsonGrammar(std::string_view text)
        : m_rest(text)
    {
        QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString ignored = decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
        if (decode.hasError() || ignored.isNull())
            return;
        accept("\xEF\xBB\xBF");
        skipSpace();
        m_isJson = value(0) && (skipSpace(), m_rest.empty());
    }

    [[nodiscard]] bool isJson() const { return m_isJson; }
    /// Arrays and objects within each other. Stops counting, and reading, at `depthLimit`.
    [[nodiscard]] int depth() const { return m_depth; }

    static constexpr int depthLimit = 500;

    /// Takes a number off the start of a text; false where there is none.
    static bool takeNumber(std::string_view &text)
    {
        const auto digits = [&text] {
            const auto count = std::min(text.find_first_not_of("0123456789"), text.size());
            text.remove_prefix(count);
            return count;
        };
        const auto one = [&text](std::string_view any) {
            if (text.empty() || any.find(text.front()) == std::string_view::npos)
                return false;
            text.remove_prefix(1);
            return true;
        };
        one("-");
        if (!one("0") && digits() == 0)
            return false;
        if (one(".") && digits() == 0)
            return false;
        if (one("eE")) {
            one("+-");
            return digits() > 0;
        }
        return true;
    }

private:
    bool accept(std::string_view word)
    {
        if (!m_rest.starts_with(word))
            return false;
        m_rest.remove_prefix(word.size());
        return true;
    }

    void skipSpace() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r\n"), m_rest.size())); }

    bool value(int depth)
    {
        m_depth = std::max(m_depth, depth);
        if (accept("\""))
            return string();
        if (accept("["))
            return depth < depthLimit && list("]", [this, depth] { return value(depth + 1); });
        if (accept("{"))
            return depth < depthLimit && list("}", [this, depth] { return member(depth + 1); });
        return accept("true") || accept("false") || accept("null") || takeNumber(m_rest);
    }

    template <typename Element> bool list(std::string_view end, Element element)
    {
        skipSpace();
        if (accept(end))
            return true;
        do {
            skipSpace();
            if (!element())
                return false;
            skipSpace();
        } while (accept(","));
        return accept(end);
    }

    bool member(int depth)
    {
        if (!accept("\"") || !string())
            return false;
        skipSpace();
        if (!accept(":"))
            return false;
        skipSpace();
        return value(depth);
    }

    bool string()
    {
        while (!m_rest.empty()) {
            const auto c = static_cast<unsigned char>(m_rest.front());
            m_rest.remove_prefix(1);
            if (c == '"')
                return true;
            if (c < 0x20 || (c == '\\' && !escape()))
                return false;
        }
        return false;
    }

    bool escape()
    {
        if (m_rest.empty())
            return false;
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        if (c != 'u')
            return std::string_view("\"\\/bfnrt").find(c) != std::string_view::npos;
        const int unit = hexadecimal();
        if (unit >= 0xD800 && unit < 0xDC00) {
            if (!accept("\\u"))
                return false;
            const int low = hexadecimal();
            return low >= 0xDC00 && low < 0xE000;
        }
        return unit >= 0 && !(unit >= 0xDC00 && unit < 0xE000);
    }

    int hexadecimal()
    {
        int unit = 0;
        for (int i = 0; i < 4; ++i) {
            if (m_rest.empty())
                return -1;
            const auto digit
                = std::string_view("0123456789abcdef").find(static_cast<char>(m_rest.front() | 0x20));
            if (digit == std::string_view::npos || m_rest.front() < '0')
                return -1;
            unit = unit * 16 + static_cast<int>(digit);
            m_rest.remove_prefix(1);
        }
        return unit;
    }

    std::string_view m_rest;
    int m_depth = 0;
    bool m_isJson = false;
};

} // namespace orbitledge::fuzz
