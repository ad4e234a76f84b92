#include "documents/RtfText.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <vector>

namespace corvelle {

namespace {

constexpr size_t mostGroups = 10'000; // open ones; deeper ones share the last one's state
constexpr qsizetype mostWordLetters = 32, mostDigits = 10;
constexpr int mostFallbacks = 16;

// The places of Windows-1252 that differ from Latin-1.
constexpr char16_t windows1252[32] = {0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C,
    0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};

QChar characterOf(unsigned char byte)
{
    return byte >= 0x80 && byte < 0xA0 ? QChar(windows1252[byte - 0x80]) : QChar(byte);
}

const QSet<QByteArrayView>& skippedDestinations()
{
    static const QSet<QByteArrayView> names = {"fonttbl", "colortbl", "stylesheet", "info", "pict",
        "object", "header", "footer", "filetbl", "datastore", "themedata", "fldinst"};
    return names;
}

const QHash<QByteArrayView, char16_t>& namedCharacters()
{
    static const QHash<QByteArrayView, char16_t> characters = {{"par", u'\n'}, {"line", u'\n'},
        {"sect", u'\n'}, {"page", u'\n'}, {"row", u'\n'}, {"tab", u'\t'}, {"cell", u'\t'},
        {"emdash", u'—'}, {"endash", u'–'}, {"bullet", u'•'}, {"lquote", u'‘'}, {"rquote", u'’'},
        {"ldblquote", u'“'}, {"rdblquote", u'”'}};
    return characters;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char low = static_cast<char>(c | 0x20);
    return low >= 'a' && low <= 'f' ? low - 'a' + 10 : -1;
}

class RtfReader
{
public:
    explicit RtfReader(QByteArrayView rtf)
        : m_rtf(rtf)
    {}

    QString read()
    {
        while (m_at < m_rtf.size()) {
            const char c = m_rtf[m_at++];
            if (c == '{')
                openGroup();
            else if (c == '}')
                closeGroup();
            else if (c == '\\')
                readControl();
            else if (c != '\r' && c != '\n')
                put(characterOf(static_cast<unsigned char>(c)));
        }
        return std::move(m_text);
    }

private:
    struct Group
    {
        bool skipped = false;
        int fallbacks = 1; // characters behind a \u that stand for it
    };

    void openGroup()
    {
        m_fallbacksLeft = 0;
        if (m_groups.size() < mostGroups)
            m_groups.push_back(m_groups.back());
        else
            ++m_deeper;
        m_isGroupStart = true;
    }

    void closeGroup()
    {
        m_fallbacksLeft = 0;
        m_isGroupStart = false;
        if (m_deeper > 0)
            --m_deeper;
        else if (m_groups.size() > 1)
            m_groups.pop_back();
    }

    void put(QChar c)
    {
        m_isGroupStart = false;
        if (m_fallbacksLeft > 0)
            --m_fallbacksLeft;
        else if (!m_groups.back().skipped)
            m_text += c;
    }

    void readControl()
    {
        if (m_at == m_rtf.size())
            return;
        const char c = m_rtf[m_at];
        if ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') {
            readWord();
            return;
        }
        ++m_at;
        if (c == '\'')
            readByte();
        else if (c == '*' && m_isGroupStart)
            m_groups.back().skipped = true; // what its reader doesn't know isn't for the text
        else if (c == '~')
            put(QChar(QChar::Nbsp));
        else if (c == '_')
            put(QChar(0x2011));
        else if (c == '-')
            put(QChar(QChar::SoftHyphen));
        else if (c == '\r' || c == '\n')
            put(u'\n');
        else if (c == '\\' || c == '{' || c == '}')
            put(QLatin1Char(c));
    }

    void readByte()
    {
        if (m_at + 2 > m_rtf.size())
            return;
        const int high = hexDigit(m_rtf[m_at]), low = hexDigit(m_rtf[m_at + 1]);
        if (high < 0 || low < 0)
            return;
        m_at += 2;
        put(characterOf(static_cast<unsigned char>(high * 16 + low)));
    }

    void readWord()
    {
        const qsizetype from = m_at;
        while (m_at < m_rtf.size() && m_at - from < mostWordLetters &&
               (m_rtf[m_at] | 0x20) >= 'a' && (m_rtf[m_at] | 0x20) <= 'z')
            ++m_at;
        const QByteArrayView word = m_rtf.sliced(from, m_at - from);
        const qint64 number = readNumber();
        if (m_at < m_rtf.size() && m_rtf[m_at] == ' ')
            ++m_at;

        const bool isFirst = std::exchange(m_isGroupStart, false);
        if (word == "bin") {
            m_at += std::clamp<qint64>(number, 0, m_rtf.size() - m_at);
        } else if (word == "u") {
            put(QChar(static_cast<char16_t>(number)));
            m_fallbacksLeft = m_groups.back().fallbacks;
        } else if (word == "uc") {
            m_groups.back().fallbacks =
                static_cast<int>(std::clamp<qint64>(number, 0, mostFallbacks));
        } else if (isFirst && skippedDestinations().contains(word)) {
            m_groups.back().skipped = true;
        } else if (const char16_t c = namedCharacters().value(word)) {
            put(c);
        }
    }

    // 0 when none is written.
    qint64 readNumber()
    {
        const bool isNegative = m_at < m_rtf.size() && m_rtf[m_at] == '-';
        qsizetype at = m_at + (isNegative ? 1 : 0);
        const qsizetype from = at;
        qint64 number = 0;
        for (; at < m_rtf.size() && at - from < mostDigits && m_rtf[at] >= '0' && m_rtf[at] <= '9';
             ++at)
            number = number * 10 + (m_rtf[at] - '0');
        if (at > from)
            m_at = at;
        return isNegative ? -number : number;
    }

    QByteArrayView m_rtf;
    qsizetype m_at = 0;
    QString m_text;
    std::vector<Group> m_groups = {Group()};
    qint64 m_deeper = 0;
    int m_fallbacksLeft = 0;
    bool m_isGroupStart = false;
};

} // namespace

QString rtfText(QByteArrayView rtf)
{
    return rtf.startsWith("{\\rtf") ? RtfReader(rtf).read() : QString();
}

} // namespace corvelle
