#include "interface/page/CodeTokens.h"

#include <QSet>
#include <QString>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

struct Family
{
    QStringView names;       // between blanks, each with a blank before and behind it
    QStringView line;        // begins a comment to the end of the line; empty: none
    QStringView open, close; // round a comment
    QStringView quotes;
    QStringView keywords; // as the names
    bool ignoresCase = false;
};

constexpr QStringView curlyWords =
    u" abstract as async await auto bool boolean break byte case catch char class const constexpr "
    u"continue default defer delete do double else enum explicit export extends extern false final "
    u"finally float fn for from func function go goto guard if impl implements import in inline "
    u"instanceof int interface internal is let long loop match mod module move mut namespace new "
    u"nil "
    u"noexcept null nullptr operator override package private protected public pub range readonly "
    u"return self short signed sizeof static string struct super switch template this throw throws "
    u"trait true try type typedef typename typeof undefined union unsafe unsigned use using val "
    u"var "
    u"virtual void volatile when where while yield ";
constexpr QStringView hashWords =
    u" and as assert async await begin break case class continue def del do done elif else elsif "
    u"end "
    u"ensure esac except export False fi finally for from function global if import in is lambda "
    u"local module next nil None nonlocal not or pass raise redo require rescue return self shift "
    u"source super then true True try undef unless until when while with yield ";
constexpr QStringView queryWords =
    u" add all alter and as asc begin between by case cascade check column commit constraint "
    u"create "
    u"cross database default delete desc distinct drop else end exists foreign from full group "
    u"having "
    u"if in index inner insert into is join key left like limit not null offset on or order outer "
    u"primary references returning right rollback select set table then transaction trigger union "
    u"unique update using values view when where with ";
constexpr QStringView dataWords = u" true false null yes no on off ";

constexpr Family families[] = {
    {u" c h cpp c++ cc hpp cxx objc java js javascript mjs jsx ts typescript tsx go golang rust rs "
     u"swift kotlin kt scala cs csharp c# php dart zig groovy proto glsl wgsl qml ",
        u"//", u"/*", u"*/", u"\"'`", curlyWords, false},
    {u" python py ruby rb sh bash zsh shell console fish perl pl r make makefile dockerfile elixir "
     u"ex julia jl nim cmake powershell ps1 ",
        u"#", {}, {}, u"\"'", hashWords, false},
    {u" sql sqlite postgres postgresql mysql plsql lua haskell hs ", u"--", u"/*", u"*/", u"\"'",
        queryWords, true},
    {u" yaml yml toml ini conf properties ", u"#", {}, {}, u"\"'", dataWords, false},
    {u" json jsonc json5 ", u"//", u"/*", u"*/", u"\"", dataWords, false},
    {u" css scss less ", {}, u"/*", u"*/", u"\"'", {}, false},
    {u" html xml svg xhtml vue ", {}, u"<!--", u"-->", u"\"", {}, false},
};

bool hasWord(QStringView list, QStringView word, Qt::CaseSensitivity sensitivity)
{
    constexpr qsizetype longest = 24;
    if (word.isEmpty() || word.size() > longest)
        return false;
    return list.contains(u' ' + word.toString() + u' ', sensitivity);
}

const Family* familyOf(QStringView language)
{
    for (const Family& family : families)
        if (hasWord(family.names, language.trimmed(), Qt::CaseInsensitive))
            return &family;
    return nullptr;
}

bool isLineEnd(QChar c)
{
    return c == u'\n' || c == QChar::LineSeparator;
}

bool isWordPart(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

class TokenScanner
{
public:
    TokenScanner(QStringView code, const Family& family)
        : m_code(code)
        , m_family(family)
    {}

    std::vector<CodeToken> scan()
    {
        while (m_at < m_code.size())
            if (!takeComment() && !takeText() && !takeWord())
                ++m_at;
        return std::move(m_tokens);
    }

private:
    bool startsWith(QStringView mark) const
    {
        return !mark.isEmpty() && m_code.mid(m_at).startsWith(mark);
    }

    void add(qsizetype end, CodeToken::Kind kind)
    {
        m_tokens.push_back({static_cast<int>(m_at), static_cast<int>(end), kind});
        m_at = end;
    }

    qsizetype lineEnd() const
    {
        return std::find_if(m_code.begin() + m_at, m_code.end(), isLineEnd) - m_code.begin();
    }

    bool takeComment()
    {
        if (startsWith(m_family.line)) {
            add(lineEnd(), CodeToken::Kind::Comment);
            return true;
        }
        if (!startsWith(m_family.open))
            return false;
        const qsizetype close = m_code.indexOf(m_family.close, m_at + m_family.open.size());
        add(close < 0 ? m_code.size() : close + m_family.close.size(), CodeToken::Kind::Comment);
        return true;
    }

    bool takeText()
    {
        const QChar quote = m_code[m_at];
        if (!m_family.quotes.contains(quote))
            return false;
        constexpr qsizetype longest = 2'000;
        const qsizetype last = std::min(m_code.size(), m_at + longest);
        qsizetype end = m_at + 1;
        while (end < last && m_code[end] != quote && (!isLineEnd(m_code[end]) || quote == u'`'))
            end += m_code[end] == u'\\' && end + 1 < last ? 2 : 1;
        if (end >= last || m_code[end] != quote) {
            ++m_at; // an apostrophe, not a text
            return true;
        }
        add(end + 1, CodeToken::Kind::Text);
        return true;
    }

    bool takeWord()
    {
        if (!isWordPart(m_code[m_at]))
            return false;
        const bool number = m_code[m_at].isDigit();
        qsizetype end = m_at;
        while (end < m_code.size() && (isWordPart(m_code[end]) || (number && m_code[end] == u'.' &&
                                                                      end + 1 < m_code.size() &&
                                                                      m_code[end + 1].isDigit())))
            ++end;
        const auto sensitivity = m_family.ignoresCase ? Qt::CaseInsensitive : Qt::CaseSensitive;
        if (number)
            add(end, CodeToken::Kind::Number);
        else if (hasWord(m_family.keywords, m_code.mid(m_at, end - m_at), sensitivity))
            add(end, CodeToken::Kind::Keyword);
        else
            m_at = end;
        return true;
    }

    QStringView m_code;
    const Family& m_family;
    qsizetype m_at = 0;
    std::vector<CodeToken> m_tokens;
};

} // namespace

std::vector<CodeToken> codeTokens(QStringView code, QStringView language)
{
    const Family* family = familyOf(language);
    return family ? TokenScanner(code, *family).scan() : std::vector<CodeToken>();
}

} // namespace corvelle
