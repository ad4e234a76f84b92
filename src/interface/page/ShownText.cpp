#include "interface/page/ShownText.h"

#include "interface/page/CodeTokens.h"
#include "interface/page/SpokenPage.h"

#include <QFontMetricsF>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QChar isolate(0x2068), isolateEnd(0x2069); // keep a label's direction to itself
constexpr qsizetype longestLabel = 80, mostObjectWords = 2'000;

QTextCharFormat formatOf(const CharStyle& style, const PageStyle& page)
{
    QTextCharFormat format;
    if (style.marks & Mark::Bold)
        format.setFontWeight(QFont::DemiBold);
    if (style.marks & Mark::Italic)
        format.setFontItalic(true);
    if (style.marks & Mark::Strike)
        format.setFontStrikeOut(true);
    if (style.marks & Mark::Underline)
        format.setFontUnderline(true);
    if (style.marks & Mark::Code) {
        const QFont font = page.codeFont();
        format.setFontFamilies(font.families());
        format.setProperty(QTextFormat::FontPixelSize, font.pixelSize());
        format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        format.setFontLetterSpacing(0);
    }
    if (style.marks & Mark::Superscript)
        format.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    if (style.marks & Mark::Subscript)
        format.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    if (style.marks & Mark::Faint)
        format.setForeground(page.colors().ink3);
    if (style.link) {
        format.setForeground(page.colors().accentInk);
        format.setFontUnderline(true);
        format.setUnderlineColor(page.colors().accent);
    }
    return format;
}

// Puts the pieces of a stretch together.
class ShownWriter
{
public:
    ShownWriter(Block kind, const PageStyle& page, const ItemLooks& items)
        : m_kind(kind)
        , m_page(page)
        , m_items(items)
    {}

    void add(Units at, QStringView text, const CharStyle* style)
    {
        if (style && style->mention) {
            for (qsizetype i = 0; i < text.size(); ++i)
                addMention(at + i, *style->mention);
            return;
        }
        if (style && style->attachment) {
            for (qsizetype i = 0; i < text.size(); ++i)
                addObject(at + i, *style->attachment);
            return;
        }
        const auto start = static_cast<int>(m_shown.words.size());
        addWords(at, text);
        const auto end = static_cast<int>(m_shown.words.size());
        if (!style || end == start)
            return;
        if (style->marks || style->link)
            m_shown.formats.append({start, end - start, formatOf(*style, m_page)});
        if (style->marks & Mark::Code)
            m_shown.code.push_back({start, end});
        if (style->link)
            m_shown.links.push_back({{start, end}, style->link});
    }

    ShownText take() { return std::move(m_shown); }

private:
    void addWords(Units at, QStringView text)
    {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar c = text[i];
            if (c == attachmentCharacter)
                m_shown.jumps.push_back({at + i, static_cast<int>(m_shown.words.size()), 0});
            else
                m_shown.words += c == u'\n' ? lineBreak : c;
        }
    }

    // In a cell or amid words there is no room for the object itself.
    void addObject(Units at, const BlockAttachment& object)
    {
        const auto start = static_cast<int>(m_shown.words.size());
        m_shown.words += wordsForObject(object).left(mostObjectWords);
        const auto length = static_cast<int>(m_shown.words.size()) - start;
        QTextCharFormat format;
        format.setForeground(m_page.colors().ink3);
        m_shown.formats.append({start, length, format});
        m_shown.jumps.push_back({at, start, length});
    }

    void addMention(Units at, const Mention& mention)
    {
        const auto start = static_cast<int>(m_shown.words.size());
        QString label = mention.label;
        if (label.size() > longestLabel)
            label = label.first(longestLabel - 1) + u'…';
        for (QChar& c : label)
            if (c.isSpace())
                c = QChar::Nbsp;
        m_shown.words += isolate;
        m_shown.words += QChar::Nbsp;
        m_shown.words += label;
        m_shown.words += QChar::Nbsp;
        m_shown.words += isolateEnd;
        const auto end = static_cast<int>(m_shown.words.size());
        const ItemLook look = m_items ? m_items(mention.id) : ItemLook{};
        formatChip(start, end, look);
        m_shown.jumps.push_back({at, start, end - start});
        m_shown.chips.push_back({{start, end}, mention.id, look});
    }

    void formatChip(int start, int end, const ItemLook& look)
    {
        const QFont font = m_page.chipFont(m_kind);
        const double blank = QFontMetricsF(font).horizontalAdvance(QChar::Nbsp);
        QTextCharFormat format;
        format.setProperty(QTextFormat::FontPixelSize, font.pixelSize());
        format.setFontWeight(font.weight());
        format.setForeground(look.exists ? m_page.colors().accentInk : m_page.colors().ink2);
        format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        const auto spaced = [&](int from, int to, double extra) {
            format.setFontLetterSpacing(extra);
            m_shown.formats.append({from, to - from, format});
        };
        // Blanks as wide as the room at the ends; isolates have no width, and get none.
        spaced(start, start + 1, 0);
        spaced(start + 1, start + 2, chipHead - blank);
        spaced(start + 2, end - 2, 0);
        spaced(end - 2, end - 1, chipTail - blank);
        spaced(end - 1, end, 0);
    }

    Block m_kind;
    const PageStyle& m_page;
    const ItemLooks& m_items;
    ShownText m_shown;
};

} // namespace

int ShownText::shown(Units place) const
{
    const auto beyond = std::partition_point(
        jumps.begin(), jumps.end(), [place](const Jump& jump) { return jump.place < place; });
    return static_cast<int>(std::clamp<Units>(place + shiftBefore(beyond), 0, words.size()));
}

Units ShownText::place(int at) const
{
    const auto beyond = std::partition_point(jumps.begin(), jumps.end(),
        [at](const Jump& jump) { return jump.shown + jump.length <= at; });
    if (beyond != jumps.end() && beyond->shown < at)
        return beyond->place + (2 * (at - beyond->shown) > beyond->length ? 1 : 0);
    return at - shiftBefore(beyond);
}

Units ShownText::shiftBefore(std::vector<Jump>::const_iterator jump) const
{
    if (jump == jumps.begin())
        return 0;
    --jump;
    return jump->shown + jump->length - (jump->place + 1);
}

ShownText shownText(const FlatText& text, Units from, Units to, Block kind, const PageStyle& style,
    const ItemLooks& items)
{
    ShownWriter writer(kind, style, items);
    text.eachRun(from, to, [&](Units at, QStringView run, const CharStyleRef& what) {
        writer.add(at - from, run, what.get());
    });
    return writer.take();
}

void colorCode(ShownText& shown, QStringView block, qsizetype at, const QString& language,
    const PageStyle& style)
{
    const Palette& colors = style.colors();
    for (const CodeToken& token : codeTokens(block, language)) {
        const int from = std::max(0, static_cast<int>(token.from - at));
        const int to = static_cast<int>(std::min<qsizetype>(shown.words.size(), token.to - at));
        if (from >= to)
            continue;
        QTextCharFormat format;
        format.setForeground(
            token.kind == CodeToken::Kind::Keyword  ? colors.tones(NodeColor::Purple).inkSoft
            : token.kind == CodeToken::Kind::Text   ? colors.tones(NodeColor::Green).inkSoft
            : token.kind == CodeToken::Kind::Number ? colors.tones(NodeColor::Orange).inkSoft
                                                    : colors.ink3);
        shown.formats.append({from, to - from, format});
    }
}

} // namespace corvelle
