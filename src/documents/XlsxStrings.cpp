#include "documents/XlsxStrings.h"

namespace corvelle {

namespace {

// Of an escape that begins at a place; -1 when none does.
int escapedUnit(QStringView text, qsizetype at)
{
    constexpr qsizetype length = 7; // _xHHHH_
    const QStringView word = text.mid(at, length);
    if (word.size() < length || word[1] != u'x' || word[length - 1] != u'_')
        return -1;
    int unit = 0;
    for (const QChar digit : word.mid(2, 4)) {
        const char16_t c = digit.toLower().unicode();
        const bool decimal = c >= u'0' && c <= u'9';
        if (!decimal && (c < u'a' || c > u'f'))
            return -1;
        unit = unit * 16 + (decimal ? c - u'0' : c - u'a' + 10);
    }
    return unit;
}

} // namespace

QString withoutEscapes(const QString& text)
{
    qsizetype at = text.indexOf(u"_x");
    if (at < 0)
        return text;
    QString result = text.left(at);
    for (; at < text.size(); ++at) {
        const int unit = text[at] == u'_' ? escapedUnit(text, at) : -1;
        if (unit < 0) {
            result += text[at];
            continue;
        }
        if (unit > 0)
            result += QChar(static_cast<char16_t>(unit));
        at += 6;
    }
    // Half a character may have been written.
    return result.isValidUtf16() ? result : QString::fromUtf8(result.toUtf8());
}

QString xlsxString(XNode item)
{
    QString text;
    for (const XNode part : item.children()) {
        if (part.name() == "x:t") {
            text += QString::fromUtf8(part.text());
        } else if (part.name() == "x:r") {
            for (const XNode run : part.children())
                if (run.name() == "x:t")
                    text += QString::fromUtf8(run.text());
        }
    }
    return withoutEscapes(text);
}

XlsxStrings::XlsxStrings(const ByteSource& source)
{
    (void)XNode::stream(source, {"x:si"}, [this](XNode item) {
        const QByteArray text = xlsxString(item).toUtf8();
        if (m_ends.size() >= most || m_text.size() + text.size() > mostBytes)
            return false;
        m_text += text;
        m_ends.push_back(static_cast<quint32>(m_text.size()));
        return true;
    });
}

QString XlsxStrings::at(size_t number) const
{
    if (number >= m_ends.size())
        return {};
    const qsizetype from = number == 0 ? 0 : m_ends[number - 1];
    return QString::fromUtf8(QByteArrayView(m_text).sliced(from, m_ends[number] - from));
}

} // namespace corvelle
