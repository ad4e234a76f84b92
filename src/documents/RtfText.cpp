#include "documents/RtfText.h"

#include <QHash>
#include <QSet>

#include <unicode/ucnv.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvelle {

namespace {

constexpr size_t mostGroups = 10'000; // open ones; deeper ones share the last one's state
constexpr qsizetype mostWordLetters = 32, mostDigits = 10;
constexpr int mostFallbacks = 16;
constexpr qsizetype mostFonts = 10'000;
constexpr qsizetype mostRunBytes = 1 << 20; // that are decoded in one go

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
        "object", "header", "headerl", "headerr", "headerf", "footer", "footerl", "footerr",
        "footerf", "filetbl", "datastore", "themedata", "fldinst", "nonesttables"};
    return names;
}

const QHash<QByteArrayView, char16_t>& namedCharacters()
{
    static const QHash<QByteArrayView, char16_t> characters = {{"par", u'\n'}, {"line", u'\n'},
        {"sect", u'\n'}, {"page", u'\n'}, {"row", u'\n'}, {"nestrow", u'\n'}, {"tab", u'\t'},
        {"cell", u'\t'}, {"nestcell", u'\t'}, {"emdash", u'—'}, {"endash", u'–'}, {"bullet", u'•'},
        {"lquote", u'‘'}, {"rquote", u'’'}, {"ldblquote", u'“'}, {"rdblquote", u'”'}};
    return characters;
}

constexpr int western = 1252;

// The code page of a font's character set; 0 for one that says nothing.
int pageOfCharset(qint64 charset)
{
    static const QHash<qint64, int> pages = {{0, western}, {77, 10000}, {128, 932}, {129, 949},
        {134, 936}, {136, 950}, {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256},
        {186, 1257}, {204, 1251}, {222, 874}, {238, 1250}};
    return pages.value(charset);
}

// Decodes bytes of one code page after the other.
class CodePages
{
public:
    // A page that isn't known counts as Windows-1252.
    QString decoded(int page, QByteArrayView bytes)
    {
        UConverter* converter = page == western ? nullptr : converterOf(page);
        QString text(bytes.size(), Qt::Uninitialized);
        if (!converter) {
            std::transform(bytes.begin(), bytes.end(), text.begin(),
                [](char byte) { return characterOf(static_cast<unsigned char>(byte)); });
            return text;
        }
        text.resize(2 * bytes.size());
        UErrorCode error = U_ZERO_ERROR;
        const int32_t count = ucnv_toUChars(converter, reinterpret_cast<char16_t*>(text.data()),
            int32_t(text.size()), bytes.data(), int32_t(bytes.size()), &error);
        text.truncate(U_SUCCESS(error) ? count : 0);
        return text;
    }

private:
    UConverter* converterOf(int page)
    {
        if (const auto found = m_converters.find(page); found != m_converters.end())
            return found->second.get();
        const std::string name = page == 932     ? "windows-31j"
                                 : page == 10000 ? "macintosh"
                                 : page == 65001 ? "UTF-8"
                                                 : "windows-" + std::to_string(page);
        UErrorCode error = U_ZERO_ERROR;
        UConverter* converter =
            m_converters.size() < mostPages ? ucnv_open(name.c_str(), &error) : nullptr;
        if (converter || m_converters.size() < mostPages)
            m_converters.emplace(page, converter);
        return converter;
    }

    static constexpr size_t mostPages = 32;
    struct Close
    {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    std::map<int, std::unique_ptr<UConverter, Close>> m_converters; // null for what isn't known
};

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
                putByte(c);
        }
        flushBytes();
        return std::move(m_text);
    }

private:
    struct Group
    {
        bool skipped = false, hidden = false, isFontTable = false;
        int fallbacks = 1; // characters behind a \u that stand for it
        qint64 font = -1;
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

    // Whether a character is for the text, and doesn't stand for one that is there already.
    bool isWanted()
    {
        m_isGroupStart = false;
        if (m_fallbacksLeft > 0) {
            --m_fallbacksLeft;
            return false;
        }
        return !m_groups.back().skipped && !m_groups.back().hidden;
    }

    void put(QChar c)
    {
        if (!isWanted())
            return;
        flushBytes();
        m_text += c;
    }

    // Bytes wait for others: in some code pages two make a character.
    void putByte(char c)
    {
        if (!isWanted())
            return;
        const int page = m_fontPages.value(m_groups.back().font, m_page);
        if (page != m_bytesPage || m_bytes.size() == mostRunBytes)
            flushBytes();
        m_bytesPage = page;
        m_bytes += c;
    }

    void flushBytes()
    {
        if (!m_bytes.isEmpty())
            m_text += m_codePages.decoded(m_bytesPage, m_bytes);
        m_bytes.clear();
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
            putByte(c);
    }

    void readByte()
    {
        if (m_at + 2 > m_rtf.size())
            return;
        const int high = hexDigit(m_rtf[m_at]), low = hexDigit(m_rtf[m_at + 1]);
        if (high < 0 || low < 0)
            return;
        m_at += 2;
        putByte(static_cast<char>(high * 16 + low));
    }

    void readWord()
    {
        const qsizetype from = m_at;
        while (m_at < m_rtf.size() && m_at - from < mostWordLetters &&
               (m_rtf[m_at] | 0x20) >= 'a' && (m_rtf[m_at] | 0x20) <= 'z')
            ++m_at;
        const QByteArrayView word = m_rtf.sliced(from, m_at - from);
        const qsizetype behindWord = m_at;
        const qint64 number = readNumber();
        const bool hasNumber = m_at > behindWord;
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
        } else if (word == "v") {
            m_groups.back().hidden = !hasNumber || number != 0;
        } else if (word == "ansicpg") {
            m_page = static_cast<int>(std::clamp<qint64>(number, 0, 65'535));
        } else if (word == "f" || word == "fcharset" || word == "plain") {
            readFont(word, number);
        } else if (isFirst && skippedDestinations().contains(word)) {
            m_groups.back().skipped = true;
            m_groups.back().isFontTable = word == "fonttbl";
        } else if (const char16_t c = namedCharacters().value(word)) {
            put(c);
        }
    }

    // In the table of fonts it tells a font's character set, in the text it picks a font.
    void readFont(QByteArrayView word, qint64 number)
    {
        Group& group = m_groups.back();
        if (word == "plain") {
            group.font = -1;
            group.hidden = false;
        } else if (word == "f") {
            group.font = number;
        } else if (group.isFontTable && m_fontPages.size() < mostFonts) {
            if (const int page = pageOfCharset(number))
                m_fontPages.insert(group.font, page);
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
    QByteArray m_bytes; // not decoded yet, of this page
    int m_bytesPage = western;
    int m_page = western;           // of the whole document
    QHash<qint64, int> m_fontPages; // by the font's number
    CodePages m_codePages;
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
