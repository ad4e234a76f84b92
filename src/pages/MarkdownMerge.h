// Writes an edited page back into its Markdown file: what didn't change keeps every byte, its
// spacing and its line endings.
#pragma once

#include "pages/PageNode.h"

#include <optional>

namespace corvelle {

// A value; made when the file opens, and again after each save.
class MarkdownMerge
{
public:
    explicit MarkdownMerge(QString original);

    const QString& original() const { return m_original; }

    // The file's new text; none where the blocks can't be fitted in, and the whole file is to be
    // written.
    std::optional<QString> rewrite(const PageNodes& blocks) const;
    std::optional<QString> rewrite(const QByteArray& pageJSON) const;

private:
    // Lines that stand for these blocks, half-open; by where they begin in the text.
    struct Unit
    {
        qsizetype begin = 0, end = 0; // in units of the text, the last line's ending included
        std::vector<QByteArray> renders;
    };
    using Partition = std::vector<Unit>;
    struct Piece;

    static Partition unitsOf(const QString& text);
    Partition runs() const;
    std::optional<QString> place(const std::vector<QString>& markdown,
        const std::vector<QByteArray>& renders, const Partition& partition, bool strict) const;
    std::vector<Piece> pieces(const std::vector<QString>& markdown,
        const std::vector<QByteArray>& renders, const Partition& partition) const;
    QString gap(const Piece& before, const Piece& after, const Partition& partition) const;

    QString m_original;
    QString m_newline; // of new lines
    Partition m_units;
};

} // namespace corvelle
