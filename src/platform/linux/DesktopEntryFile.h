#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <optional>
#include <utility>

namespace orbitledge {

/// The text of a desktop entry (Desktop Entry Specification 1.5), of which single keys are read and changed
/// and everything else stays as it is: comments, translations, other groups.
class DesktopEntryFile {
public:
    /// An entry without keys.
    DesktopEntryFile();

    /// Absent where the text is none: its first group is another one, or a line is neither a comment nor a
    /// group nor a key.
    static std::optional<DesktopEntryFile> fromText(const QByteArray &text);
    [[nodiscard]] QByteArray text() const;

    /// A key of the main group, its escape sequences undone; where it is repeated, the last one counts.
    [[nodiscard]] std::optional<QByteArray> value(QByteArrayView key) const;
    /// Absent where the key is, and where its value is no truth value.
    [[nodiscard]] std::optional<bool> truthValue(QByteArrayView key) const;

    /// Leaves the key there once, with this value.
    void setValue(QByteArrayView key, const QByteArray &value);
    void remove(QByteArrayView key);

private:
    /// The main group's lines: from behind its head to the next group's, the blank lines before that not
    /// included.
    [[nodiscard]] std::pair<qsizetype, qsizetype> mainGroup() const;

    QByteArrayList m_lines;
};

/// An argument of Exec, quoted, with nothing in it that the desktop would replace.
QByteArray quotedExecArgument(const QByteArray &argument);

/// The program that a value of Exec names, without quotes; empty where it names none.
QByteArray programOfExec(const QByteArray &exec);

} // namespace orbitledge
