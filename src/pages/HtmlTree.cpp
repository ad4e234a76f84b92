#include "pages/HtmlTree.h"

#include "pages/HtmlAttributes.h"
#include "pages/HtmlTokens.h"

#include <algorithm>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// A start tag of the first kind ends an open one of the second, unless an element in between says
// that it belongs to another list or table.
bool ends(HtmlTag begun, HtmlTag open)
{
    switch (begun) {
    case HtmlTag::Dt:
    case HtmlTag::Dd:
        return open == HtmlTag::Dt || open == HtmlTag::Dd;
    case HtmlTag::Td:
    case HtmlTag::Th:
        return open == HtmlTag::Td || open == HtmlTag::Th;
    case HtmlTag::P:
    case HtmlTag::Li:
    case HtmlTag::Tr:
    case HtmlTag::Option:
        return open == begun;
    default:
        return false;
    }
}

bool partsFromOuter(HtmlTag begun, HtmlTag between)
{
    switch (begun) {
    case HtmlTag::P:
        return isBlock(between);
    case HtmlTag::Tr:
    case HtmlTag::Td:
    case HtmlTag::Th:
        return between == HtmlTag::Table;
    default:
        return between == HtmlTag::Table || between == HtmlTag::Ul || between == HtmlTag::Ol ||
               between == HtmlTag::Dl;
    }
}

bool mayEndAnother(HtmlTag tag)
{
    return ends(tag, tag);
}

// Whether contents may hold another of the kind.
bool nestsInItself(const HtmlToken& token)
{
    return token.tag == HtmlTag::Svg || token.tag == HtmlTag::Math ||
           token.name.compare(u"template", Qt::CaseInsensitive) == 0;
}

QString trimmedMarker(QStringView raw)
{
    return htmlDecoded(raw).trimmed();
}

} // namespace

class HtmlTreeBuilder
{
public:
    HtmlTreeBuilder(HtmlTree& tree, QStringView html)
        : m_tree(tree)
        , m_tokens(html)
    {
        m_openCounts.resize(knownTags, 0);
        m_ignoredCounts.resize(knownTags, 0);
        // Room that is never used is never touched.
        m_tree.m_items.reserve(static_cast<size_t>(html.size() / 16));
    }

    void build()
    {
        m_tree.m_items.push_back({});
        m_stack.push_back({0, -1, 0, HtmlTag::None, -1});
        for (;;) {
            const HtmlToken token =
                m_again ? *std::exchange(m_again, std::nullopt) : m_tokens.next();
            switch (token.kind) {
            case HtmlToken::Kind::End:
                endMarker();
                return;
            case HtmlToken::Kind::Text:
                text(token.text);
                break;
            case HtmlToken::Kind::Comment:
                comment(token.text);
                break;
            case HtmlToken::Kind::StartTag:
                start(token);
                break;
            case HtmlToken::Kind::EndTag:
                end(token);
                break;
            }
        }
    }

private:
    struct Open
    {
        qint32 item;
        qint32 lastChild;
        quint32 id; // of the name
        HtmlTag tag;
        qint32 lastOfList = -1; // where the last child is a WordList: its last paragraph
    };
    static constexpr quint32 knownTags = 256;

    // ---- names ----

    // Tags of their own are numbered by it, all others by their name.
    quint32 idOf(const HtmlToken& token)
    {
        switch (token.tag) {
        case HtmlTag::None:
        case HtmlTag::OtherBlock:
        case HtmlTag::OtherSkipped:
            break;
        default:
            return static_cast<quint32>(token.tag);
        }
        if (token.name == m_lastName)
            return m_lastId;
        const QString name = token.name.toString().toLower();
        auto found = m_ids.find(name);
        if (found == m_ids.end()) {
            found = m_ids.insert(name, static_cast<quint32>(m_openCounts.size()));
            m_openCounts.push_back(0);
            m_ignoredCounts.push_back(0);
        }
        m_lastName = token.name;
        return m_lastId = *found;
    }

    // ---- the stack ----

    qint32 add(HtmlTree::Item item)
    {
        const auto index = static_cast<qint32>(m_tree.m_items.size());
        m_tree.m_items.push_back(item);
        hang(index, m_stack.back().item, m_stack.back().lastChild);
        return index;
    }
    void hang(qint32 index, qint32 parent, qint32& lastChild)
    {
        if (lastChild < 0)
            m_tree.m_items[static_cast<size_t>(parent)].firstChild = index;
        else
            m_tree.m_items[static_cast<size_t>(lastChild)].next = index;
        lastChild = index;
    }

    void push(qint32 item, quint32 id, HtmlTag tag)
    {
        m_stack.push_back({item, -1, id, tag, -1});
        ++m_openCounts[id];
    }
    void pop()
    {
        if (m_stack.back().item == m_wordParagraph) {
            endMarker();
            m_wordParagraph = -1;
        }
        --m_openCounts[m_stack.back().id];
        m_stack.pop_back();
        // Whatever was too deep was inside of what ends here.
        for (const quint32 id : m_ignored)
            m_ignoredCounts[id] = 0;
        m_ignored.clear();
    }
    void popTo(size_t depth)
    {
        while (m_stack.size() > depth)
            pop();
    }

    // ---- tokens ----

    void start(const HtmlToken& token)
    {
        if (isSkipped(token.tag)) {
            skip(token);
            return;
        }
        if (m_inMarker && !isBlock(token.tag))
            return;
        endMarker();
        if (isVoid(token.tag)) {
            add({token.text, -1, -1, token.tag, 0});
            return;
        }
        if (mayEndAnother(token.tag))
            endOpen(token.tag);
        const quint32 id = idOf(token);
        if (m_stack.size() > HtmlTree::deepest) {
            ++m_ignoredCounts[id];
            m_ignored.push_back(id);
            return;
        }
        const int level = token.tag == HtmlTag::P ? wordListLevel(htmlStyle(token.text)) : 0;
        if (level > 0)
            startListParagraph(token, id, level);
        else
            push(add({token.text, -1, -1, token.tag, 0}), id, token.tag);
    }

    void endOpen(HtmlTag begun)
    {
        for (size_t depth = m_stack.size() - 1; depth > 0; --depth) {
            if (ends(begun, m_stack[depth].tag)) {
                popTo(depth);
                return;
            }
            if (partsFromOuter(begun, m_stack[depth].tag))
                return;
        }
    }

    void end(const HtmlToken& token)
    {
        if (m_inMarker && !isBlock(token.tag))
            return;
        if (isVoid(token.tag) || isSkipped(token.tag))
            return;
        const quint32 id = idOf(token);
        if (m_ignoredCounts[id] > 0) {
            --m_ignoredCounts[id];
            return;
        }
        if (m_openCounts[id] == 0)
            return;
        while (m_stack.back().id != id)
            pop();
        pop();
    }

    void text(QStringView text)
    {
        if (m_inMarker) {
            m_marker += text;
            return;
        }
        if (m_wordParagraph >= 0 && !m_hasMarker)
            text = withoutPlainMarker(text);
        const qint32 before = m_stack.back().lastChild;
        const bool behindList = before >= 0 && m_tree[before].tag == HtmlTag::WordList;
        if (text.isEmpty() || (behindList && isHtmlBlank(text)))
            return;
        add({text, -1, -1, HtmlTag::Text, 0});
    }

    // Everything up to the end tag. A head that was never closed ends where the body begins.
    void skip(const HtmlToken& opening)
    {
        if (opening.tag == HtmlTag::OtherRaw) {
            m_tokens.skipRaw(opening.name);
            return;
        }
        const bool foreign = opening.tag == HtmlTag::Svg || opening.tag == HtmlTag::Math;
        if (foreign && opening.text.endsWith(u'/'))
            return;
        const auto isSame = [&](const HtmlToken& token) {
            return token.tag == opening.tag &&
                   token.name.compare(opening.name, Qt::CaseInsensitive) == 0;
        };
        for (int open = 1; open > 0;) {
            const HtmlToken token = m_tokens.next();
            if (token.kind == HtmlToken::Kind::End)
                return;
            if (token.kind == HtmlToken::Kind::EndTag && isSame(token))
                --open;
            if (token.kind != HtmlToken::Kind::StartTag)
                continue;
            if (token.tag == HtmlTag::OtherRaw) {
                m_tokens.skipRaw(token.name);
            } else if (opening.tag == HtmlTag::Head && token.tag == HtmlTag::Body) {
                m_again = token;
                return;
            } else if (isSame(token) && nestsInItself(token) && !token.text.endsWith(u'/')) {
                ++open;
            }
        }
    }

    // ---- lists of office programs ----

    void startListParagraph(const HtmlToken& token, quint32 id, int level)
    {
        if (const qint32 last = m_stack.back().lastChild;
            last < 0 || m_tree[last].tag != HtmlTag::WordList) {
            add({{}, -1, -1, HtmlTag::WordList, 0});
            m_stack.back().lastOfList = -1;
        }
        Open& parent = m_stack.back();
        const auto index = static_cast<qint32>(m_tree.m_items.size());
        m_tree.m_items.push_back({token.text, -1, -1, HtmlTag::P, static_cast<quint8>(level)});
        hang(index, parent.lastChild, parent.lastOfList);
        push(index, id, HtmlTag::P);
        m_wordParagraph = index;
        m_hasMarker = false;
    }

    void comment(QStringView text)
    {
        if (m_wordParagraph < 0)
            return;
        const QStringView condition = text.trimmed();
        if (condition.startsWith(u"[if !supportlists]", Qt::CaseInsensitive))
            m_inMarker = true;
        else if (condition.startsWith(u"[endif]", Qt::CaseInsensitive))
            endMarker();
    }

    void endMarker()
    {
        if (!std::exchange(m_inMarker, false))
            return;
        m_hasMarker = true;
        m_tree.m_markers.insert(m_wordParagraph, trimmedMarker(m_marker));
        m_marker.clear();
    }

    // A marker that is plain text ends at a tab.
    QStringView withoutPlainMarker(QStringView text)
    {
        constexpr qsizetype longestMarker = 8, longestSource = 64;
        if (isHtmlBlank(text) && !text.contains(u'\t'))
            return text;
        m_hasMarker = true;
        const qsizetype start = text.startsWith(u'\t') ? 1 : 0;
        const qsizetype tab =
            text.first(std::min(text.size(), longestSource)).indexOf(u'\t', start);
        if (tab < 0)
            return text.sliced(start);
        const QString marker = htmlDecoded(text.sliced(start, tab - start));
        if (marker.size() > longestMarker)
            return text.sliced(start);
        m_tree.m_markers.insert(m_wordParagraph, marker.trimmed());
        return text.sliced(tab + 1);
    }

    HtmlTree& m_tree;
    HtmlTokens m_tokens;
    std::optional<HtmlToken> m_again;
    std::vector<Open> m_stack;

    QHash<QString, quint32> m_ids;
    QStringView m_lastName;
    quint32 m_lastId = 0;
    std::vector<int> m_openCounts, m_ignoredCounts; // by the ids of names
    std::vector<quint32> m_ignored;

    qint32 m_wordParagraph = -1; // the open one
    bool m_inMarker = false, m_hasMarker = false;
    QString m_marker;
};

HtmlTree::HtmlTree(QStringView html)
{
    HtmlTreeBuilder(*this, html).build();
}

} // namespace corvelle
