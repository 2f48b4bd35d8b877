#include "platform/linux/DesktopEntryFile.h"

#include <algorithm>
#include <array>

namespace orbitledge {

namespace {

constexpr QByteArrayView mainGroupHead = "[Desktop Entry]";

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isEmptyLine(const QByteArray &line)
{
    return line.trimmed().isEmpty();
}

bool isComment(const QByteArray &line)
{
    return line.startsWith('#');
}

bool isGroupHead(const QByteArray &line)
{
    return line.startsWith('[') && line.trimmed().endsWith(']');
}

bool isMainGroupHead(const QByteArray &line)
{
    return isGroupHead(line) && line.trimmed() == mainGroupHead;
}

/// What stands before the first "="; empty where the line is no key.
QByteArray keyOf(const QByteArray &line)
{
    if (isComment(line) || isGroupHead(line))
        return {};
    return line.first(std::max<qsizetype>(line.indexOf('='), 0)).trimmed();
}

/// What an escape sequence in a value stands for.
struct Escape {
    char letter;
    char meaning;
};
constexpr std::array escapes{
    Escape{'s', ' '}, Escape{'n', '\n'}, Escape{'t', '\t'}, Escape{'r', '\r'}, Escape{'\\', '\\'}};

QByteArray unescaped(const QByteArray &value)
{
    QByteArray result;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const char next = i + 1 < value.size() ? value[i + 1] : '\0';
        const auto *const escape = std::ranges::find(escapes, next, &Escape::letter);
        if (value[i] != '\\' || escape == escapes.end()) {
            result.append(value[i]);
            continue;
        }
        result.append(escape->meaning);
        ++i;
    }
    return result;
}

QByteArray escaped(const QByteArray &value)
{
    QByteArray result;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const auto *const escape = std::ranges::find(escapes, value[i], &Escape::meaning);
        const bool isInside = i > 0 && i + 1 < value.size(); // where blanks are not lost
        if (escape == escapes.end() || (value[i] == ' ' && isInside))
            result.append(value[i]);
        else
            result.append('\\').append(escape->letter);
    }
    return result;
}

} // namespace

DesktopEntryFile::DesktopEntryFile()
    : m_lines{mainGroupHead.toByteArray()}
{
}

std::optional<DesktopEntryFile> DesktopEntryFile::fromText(const QByteArray &text)
{
    DesktopEntryFile file;
    file.m_lines = text.split('\n');
    while (!file.m_lines.isEmpty() && isEmptyLine(file.m_lines.constLast()))
        file.m_lines.removeLast();
    const auto isHead = std::ranges::find_if(file.m_lines, isGroupHead);
    if (isHead == file.m_lines.end() || !isMainGroupHead(*isHead))
        return std::nullopt;
    const auto isIdle = [](const QByteArray &line) { return isEmptyLine(line) || isComment(line); };
    const bool startsWithIt = std::all_of(file.m_lines.begin(), isHead, isIdle);
    const bool isWellFormed = std::all_of(isHead, file.m_lines.end(),
        [&](const QByteArray &line) { return isIdle(line) || isGroupHead(line) || !keyOf(line).isEmpty(); });
    if (!startsWithIt || !isWellFormed)
        return std::nullopt;
    return file;
}

QByteArray DesktopEntryFile::text() const
{
    return m_lines.join('\n') + '\n';
}

std::pair<qsizetype, qsizetype> DesktopEntryFile::mainGroup() const
{
    const auto head = std::ranges::find_if(m_lines, isMainGroupHead);
    auto end = std::find_if(head + 1, m_lines.end(), isGroupHead);
    while (isEmptyLine(*(end - 1)))
        --end;
    return {head + 1 - m_lines.begin(), end - m_lines.begin()};
}

std::optional<QByteArray> DesktopEntryFile::value(QByteArrayView key) const
{
    const auto [begin, end] = mainGroup();
    for (qsizetype i = end - 1; i >= begin; --i) {
        if (keyOf(m_lines[i]) == key)
            return unescaped(m_lines[i].sliced(m_lines[i].indexOf('=') + 1).trimmed());
    }
    return std::nullopt;
}

std::optional<bool> DesktopEntryFile::truthValue(QByteArrayView key) const
{
    const auto text = value(key);
    // The numbers are of the format's first versions; desktops still take them.
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    return std::nullopt;
}

void DesktopEntryFile::setValue(QByteArrayView key, const QByteArray &value)
{
    const QByteArray line = key.toByteArray() + '=' + escaped(value);
    const auto [begin, end] = mainGroup();
    for (qsizetype i = begin; i < end; ++i) {
        if (keyOf(m_lines[i]) != key)
            continue;
        remove(key);
        m_lines.insert(i, line);
        return;
    }
    m_lines.insert(end, line);
}

void DesktopEntryFile::remove(QByteArrayView key)
{
    const auto [begin, end] = mainGroup();
    for (qsizetype i = end - 1; i >= begin; --i) {
        if (keyOf(m_lines[i]) == key)
            m_lines.removeAt(i);
    }
}

QByteArray quotedExecArgument(const QByteArray &argument)
{
    constexpr QByteArrayView active = "\"`$\\";
    QByteArray result = "\"";
    for (const char c : argument) {
        if (active.contains(c))
            result.append('\\');
        if (c == '%') // it would begin a field code
            result.append('%');
        result.append(c);
    }
    return result.append('"');
}

QByteArray programOfExec(const QByteArray &exec)
{
    const QByteArray words = exec.trimmed();
    QByteArray program;
    if (words.startsWith('"')) {
        qsizetype i = 1;
        for (; i < words.size() && words[i] != '"'; ++i) {
            if (words[i] == '\\' && i + 1 < words.size())
                ++i;
            program.append(words[i]);
        }
        if (i == words.size()) // the quote has no end
            return {};
    } else {
        program = QByteArray(words.begin(), std::ranges::find_if(words, isBlank) - words.begin());
    }
    return program.replace("%%", "%");
}

} // namespace orbitledge
