// The shared strings of a workbook (ECMA-376 Part 1, 18.4), and how a string is written in one.
#pragma once

#include "documents/XNode.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace corvelle {

// A value. All texts stand in one block of UTF-8.
class XlsxStrings
{
public:
    static constexpr size_t most = 2'000'000;
    static constexpr qsizetype mostBytes = 64 << 20;

    XlsxStrings() = default;
    // As many as could be read.
    explicit XlsxStrings(const ByteSource& source);

    size_t count() const { return m_ends.size(); }
    // Empty for a number that there isn't.
    QString at(size_t number) const;

private:
    QByteArray m_text;
    std::vector<quint32> m_ends;
};

// The text of an x:si or x:is: its own or that of its runs, without how it is pronounced.
QString xlsxString(XNode item);

// Characters that XML can't hold are written "_x000D_", and the "_" of such words "_x005F_".
QString withoutEscapes(const QString& text);

} // namespace corvelle
