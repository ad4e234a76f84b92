// Pages from HTML and HTML from pages: the cases that catch faults, pages made at random, and pages
// of the world when they are at hand.
#include "pages/PageHtml.h"

#include "support/Printing.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringConverter>

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <random>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace corvelle {
void PrintTo(const PageNodes& nodes, std::ostream* out)
{
    *out << pageJson(nodes).toStdString();
}
} // namespace corvelle

namespace {

using Type = PageNode::Type;

// The shape of a page in short: p(a *b*) h2(…) ul(li(p(a))) …
QString shape(const PageNodes& nodes);

QString wordsShape(const PageNode& node)
{
    if (node.type == Type::HardBreak)
        return u"/"_s;
    if (node.type == Type::Mention)
        return u"@"_s + node.name + u':' + node.text;
    QString marks;
    const QString letters = u"biSuc"_s;
    for (int i = 0; i < 5; ++i)
        if (node.marks.toInt() & (1 << i))
            marks += letters[i];
    if (node.link)
        marks += u"->"_s + node.link->href;
    return marks.isEmpty() ? node.text : u"["_s + marks + u' ' + node.text + u']';
}

QString blockShape(const PageNode& node)
{
    static const char* const names[] = {"p", "h", "ul", "ol", "tasks", "li", "task", "quote",
        "code", "hr", "table", "tr", "th", "td", "img", "embed"};
    if (node.isInline())
        return wordsShape(node);
    QString result = QString::fromLatin1(names[static_cast<int>(node.type)]);
    if (node.type == Type::Heading)
        result += QString::number(node.level);
    if (node.type == Type::OrderedList && node.start != 1)
        result += QString::number(node.start);
    if (node.checked)
        result += u'x';
    if (node.cell) {
        if (node.cell->colspan > 1 || node.cell->rowspan > 1)
            result += u"%1*%2"_s.arg(node.cell->colspan).arg(node.cell->rowspan);
        result += node.cell->align + QString::fromUtf8(node.cell->colwidth);
    }
    if (!node.name.isEmpty())
        result += u':' + node.name;
    if (node.type == Type::Image)
        return result + u'(' + pictureOf(node).src + u')';
    if (node.type == Type::Embed)
        return result + u'(' + embedOf(node).id + u' ' + embedOf(node).label + u')';
    if (node.type == Type::HorizontalRule)
        return result;
    return result + u'(' + (node.type == Type::CodeBlock ? node.text : shape(node.content)) + u')';
}

QString shape(const PageNodes& nodes)
{
    QString result;
    for (const PageNode& node : nodes) {
        if (!result.isEmpty() && !node.isInline())
            result += u' ';
        result += blockShape(node);
    }
    return result;
}

QString readShape(const QString& html)
{
    const PageNodes nodes = PageHTML::nodes(html);
    EXPECT_EQ(PageHTML::nodes(PageHTML::html(nodes)), nodes) << "what is written is read again";
    return shape(nodes);
}

struct Case
{
    const char* what;
    QString html, expected;
};
void check(std::initializer_list<Case> cases)
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(readShape(c.html), c.expected);
    }
}

} // namespace

TEST(PageHtmlReading, cutsTagsFromTextForgivingly)
{
    check({
        {"a lone less-than is text", "a < b <3 <", "p(a < b <3 <)"},
        {"a tag without an end is text", "x <b y", "p(x <b y)"},
        {"a comment, even a short one", "a<!-- <b> -->b<!-->c-->d", "p(abd)"},
        {"an unclosed comment swallows the rest", "a<!-- b<p>c</p>", "p(a)"},
        {"declarations and instructions", "<!doctype html><?xml a?>b<![CDATA[c]]>d", "p(bd)"},
        {"an end tag without its partner", "a</b>b</div>c", "p(abc)"},
        {"an end tag closes what is inside", "<div><b>a</div>b", "p([b a]) p(b)"},
        {"names in any case", "<STRONG>a</Strong><BR>b", "p([b a]/b)"},
        {"a raw text isn't tags", "<script>if (a<b) '</p>'</script >a<style><p></style>", "p(a)"},
        {"a skipped one in a skipped one", "<svg><svg></svg>b</svg>a<svg/>c", "p(ac)"},
        {"a head without its end", "<head><title>t</title><body>a", "p(a)"},
        {"a script in a head", "<head><script>'</head>'</script>x</head>a", "p(a)"},
        {"what is skipped", "<button>x</button>a<select><option>x</select>", "p(a)"},
        {"paragraphs without ends", "<p>a<p>b<ul><li>c<li>d<ul><li>e</ul><li>f</ul>",
            "p(a) p(b) ul(li(p(c)) li(p(d) ul(li(p(e)))) li(p(f)))"},
        {"cells without ends", "<table><tr><td>a<td>b<tr><th>c</table>",
            "table(tr(td(p(a)) td(p(b))) tr(th(p(c))))"},
    });
}

TEST(PageHtmlReading, knowsItsEntitiesAndLeavesTheRest)
{
    check({
        {"named", "&lt;&amp;&gt;&quot;&apos;&mdash;&hellip;&bull;&middot;", u"p(<&>\"'—…•·)"_s},
        {"numbers", "&#65;&#x42;&#X1F600;", u"p(AB😀)"_s},
        {"unknown or unended", "&unknown; &amp &AMP; &#; &#x; &",
            "p(&unknown; &amp &AMP; &#; &#x; &)"},
        {"no characters at all", "&#0;&#xD800;&#1114112;&#99999999999999999999;",
            QString("p(") + QString(4, QChar(0xFFFD)) + ")"},
        {"numbers of an old code page", "&#150;", u"p(–)"_s},
        {"decoded once", "&amp;lt;", "p(&lt;)"},
        {"in attributes", "<a href='x?a=1&amp;b=2'>a</a>", "p([->x?a=1&b=2 a])"},
    });
}

TEST(PageHtmlReading, collapsesBlanksAsABrowserLaysThemOut)
{
    const QString nbsp(QChar(0xA0));
    check({
        {"runs and ends", "\n <p> a \t\r\n b </p> \n", "p(a b)"},
        {"over marks", "a <b> b </b> c", "p(a [b b ]c)"},
        {"no-break spaces stay", "<p>&nbsp;a&nbsp; b</p>", "p(" + nbsp + "a" + nbsp + " b)"},
        {"beside breaks", "a <br> b<br>", "p(a/b/)"},
        {"nothing but breaks and blanks is nothing", "<p> <br> </p><p></p><h2> </h2><b> </b>", ""},
        {"written as an entity", "a&#32; &#10;b <b>&#32;</b>", "p(a b)"},
        {"beside a mention", " <span data-type=mention data-id=I data-label=L></span> a",
            "p(@I:L a)"},
    });
}

TEST(PageHtmlReading, marks)
{
    check({
        {"by tag", "<b>b</b><em>i</em><del>s</del><u>u</u><kbd>c</kbd>",
            "p([b b][i i][S s][u u][c c])"},
        {"the wrap of some editors is not bold", "<b style='font-weight: NORMAL'>a<i>b</i></b>",
            "p(a[i b])"},
        {"nor is 400", "<strong style=font-weight:400>a</strong>", "p(a)"},
        {"by style", "<span style='Font-Weight : 600; text-decoration: line-through'>a</span>",
            "p([bS a])"},
        {"light is not bold", "<span style='font-weight:300'>a</span>", "p(a)"},
        {"a block's style reaches its words", "<div style='font-style: italic'><p>a</p></div>",
            "p([i a])"},
        {"equal neighbours are one", "<b>a</b><strong>b</strong><a href=x>c</a><a href=x>d</a>",
            "p([b ab][->x cd])"},
        {"a link around blocks", "<a href=x><h3>a</h3><p>b</p></a>", "h3([->x a]) p([->x b])"},
    });
    const auto link = [](const QString& html) { return PageHTML::nodes(html)[0].content[0].link; };
    EXPECT_EQ(link("<a href=x>a</a>")->attrs, "");
    EXPECT_EQ(link("<a href='x' title='a \"b\"' target=_blank rel=r>a</a>")->attrs,
        R"({"href":"x","target":"_blank","title":"a \"b\""})");
}

TEST(PageHtmlReading, dropsAddressesThatRunPrograms)
{
    for (const QString& address : {u"javascript:x"_s, u" JavaScript:x"_s, u"java&#10;script:x"_s,
             u"&#1;javascript&#9;:x"_s, u"vbscript:x"_s}) {
        EXPECT_EQ(readShape("<a href=\"" + address + "\">text</a>"), "p(text)")
            << address.toStdString();
        EXPECT_EQ(readShape("<img src=\"" + address + "\">a"), "p(a)") << address.toStdString();
        EXPECT_EQ(
            readShape("<a data-embed data-id=I href=\"" + address + "\">a</a>"), "embed(I a)");
    }
    PageNode paragraph;
    paragraph.content = {
        PageNode::ofText("a", {}, std::make_shared<const Link>(Link{"java\nscript:x", {}}))};
    EXPECT_EQ(PageHTML::html({paragraph, pictureNode({"JAVASCRIPT:x", {}, {}})}), "<p>a</p>");
    EXPECT_EQ(
        readShape("<a href='https://a/javascript:x'>a</a>"), "p([->https://a/javascript:x a])");
}

TEST(PageHtmlReading, blocks)
{
    check({
        {"inline runs between blocks", "a<div>b</div>c<b>d</b><hr>e",
            "p(a) p(b) p(c[b d]) hr p(e)"},
        {"a heading in inline content", "<b>a<h2>b</h2>c</b>", "p([b a]) h2([b b]) p([b c])"},
        {"a heading's inner blocks", "<h1><div>a</div></h1>", "h1(a)"},
        {"a picture splits its paragraph", "<p>a<img src=x>b</p>", "p(a) img(x) p(b)"},
        {"quotes", "<blockquote>a<p>b</p></blockquote><blockquote> </blockquote>",
            "quote(p(a) p(b))"},
        {"terms", "<dl><dt>a<dd>b<dt>c</dl>", "p(a) p(b) p(c)"},
        {"alignment", "<p style='text-align: center'>a</p><h2 style='TEXT-ALIGN:right'>b</h2>",
            "p:center(a) h2:right(b)"},
        {"code", "<pre>\n\n a <b>b</b>\r\nc<br>&lt;</pre>", "code(\n a b\nc\n<)"},
        {"its language", "<pre><code class='hl language-c++'>a</code></pre>", "code:c++(a)"},
        {"code in lines", "<pre><div>a</div><div>b</div></pre>", "code(a\nb)"},
    });
}

TEST(PageHtmlReading, lists)
{
    check({
        {"a start", "<ol start=5><li>a</ol><ol start=x><li>b</ol>", "ol5(li(p(a))) ol(li(p(b)))"},
        {"a list beside its items", "<ul><li>a</li><ul><li>b</li></ul></ul>",
            "ul(li(p(a) ul(li(p(b)))))"},
        {"blocks in an item", "<ul><li><h3>a</h3><p>b</ul>", "ul(li(p() h3(a) p(b)))"},
        {"strays in a list", "<ul>a<li>b</li><div><li>c</li></div></ul>",
            "ul(li(p(a)) li(p(b)) li(p(c)))"},
        {"items without a list", "<li>a</li> <li>b</li>c", "ul(li(p(a)) li(p(b))) p(c)"},
        {"an empty item", "<ul><li></ul>", "ul(li(p()))"},
        {"tasks by their boxes",
            "<ul><li><input type=checkbox checked> a<li><p><input type=CHECKBOX>b</ul>",
            "tasks(taskx(p(a)) task(p(b)))"},
        {"a checked word is nothing outside of tasks", "<ul><li data-checked=true>a</ul>",
            "ul(li(p(a)))"},
        {"one without a box", "<ul><li><input type=checkbox>a<li>b</ul>", "ul(li(p(a)) li(p(b)))"},
        {"tasks by their word", "<ul data-type=taskList><li data-checked=true>a<li>b</ul>",
            "tasks(taskx(p(a)) task(p(b)))"},
    });
}

TEST(PageHtmlReading, tables)
{
    check({
        {"layers, spans and alignments",
            "<table><caption>t</caption><thead><tr><th colspan=2 align=RIGHT>a</thead>"
            "<tbody><tr><td rowspan=0 style='text-align:center'>b</td><td></tbody></table>",
            "p(t) table(tr(th2*1right(p(a))) tr(tdcenter(p(b)) td(p())))"},
        {"a table in a cell keeps its rows",
            "<table><tr><td>a<table><tr><td>b</table>c<td>d</table>",
            "table(tr(td(p(a) table(tr(td(p(b)))) p(c)) td(p(d))))"},
        {"what stands beside the cells goes before it", "<table>a<tr>b<td>c</table>",
            "p(ab) table(tr(td(p(c))))"},
        {"a table without cells", "<table>a</table>b", "p(a) p(b)"},
        {"widths", "<table><tr><td colspan=2 colwidth='100,0'>a</table>",
            "table(tr(td2*1[100,0](p(a))))"},
        {"cells without a table", "<tr><td>a<td>b", "p(a) p(b)"},
    });
    const QString wide =
        "<table><tr>" + QString("<td colspan=99999999>").repeated(2'000) + "</table>";
    EXPECT_LT(PageHTML::html(PageHTML::nodes(wide)).size(), 1'000'000)
        << "a span is a number that anybody can write";
}

TEST(PageHtmlReading, itemsOfTheProgram)
{
    check({
        {"a mention",
            "a<span class=mention data-type=mention data-id=I data-label='L &amp; M'>x</span>",
            "p(a@I:L & M)"},
        {"without an id it is text", "<span data-type=mention>@x</span>", "p(@x)"},
        {"an address of an item", "<a href='corvelle://item/A_b-1'>@the <b>page</b></a>",
            "p(@A_b-1:the page)"},
        {"another address", "<a href='corvelle://item/A/b'>a</a>", "p([->corvelle://item/A/b a])"},
        {"an embed splits its paragraph",
            "<p>a<a data-embed='' data-id=I href=/s>the  card</a>b</p>",
            "p(a) embed(I the card) p(b)"},
    });
}

TEST(PageHtmlReading, listsOfOfficePrograms)
{
    const auto item = [](const char* level, const char* marker, const char* text) {
        return QString(
            "<p class=MsoListParagraph style='mso-list:l0 level%1 lfo1'>"
            "<![if !supportLists]><span style='mso-list:Ignore'>%2<span>&nbsp; </span></span>"
            "<![endif]>%3<o:p></o:p></p>\n")
            .arg(level, marker, text);
    };
    check({
        {"levels 1, 2, 2, 1",
            item("1", "1.", "a") + item("2", "a)", "b") + item("2", "b)", "c") +
                item("1", "2.", "d"),
            "ol(li(p(a) ol(li(p(b)) li(p(c)))) li(p(d)))"},
        {"the marker tells the kind",
            item("1", "&middot;", "a") + item("1", "o", "b") + item("1", "3.", "c"),
            "ul(li(p(a)) li(p(b))) ol3(li(p(c)))"},
        {"interrupted", item("1", "o", "a") + "<p>b</p>" + item("1", "o", "c"),
            "ul(li(p(a))) p(b) ul(li(p(c)))"},
        {"comments around the marker",
            "<p style='MSO-LIST: l0 level1 lfo1'><!--[if "
            "!supportLists]--><b>1.</b><!--[endif]-->a</p>",
            "ol(li(p(a)))"},
        {"no comments", "<p style='mso-list:l0 level1'><i style='mso-list:Ignore'>2)</i>a</p>",
            "ol2(li(p(a)))"},
        {"plain text", "<p style='mso-list:l0 level1'>4.\ta\tb</p>", "ol4(li(p(a b)))"},
        {"a condition outside of lists", "<p>a<![if !supportLists]>b<![endif]></p>", "p(ab)"},
    });
    QString deep;
    for (int level = 1; level <= 20'000; ++level)
        deep += item(QByteArray::number(level), "o", "a");
    EXPECT_FALSE(PageHTML::nodes(deep).empty()) << "as deep as anybody likes";
}

TEST(PageHtmlWriting, writesEachBlockInItsForm)
{
    PageNode task = PageNode::of(Type::TaskItem);
    task.checked = true;
    task.content = {PageNode::of(Type::Paragraph)};
    PageNode tasks = PageNode::of(Type::TaskList);
    tasks.content = {task};
    EXPECT_EQ(PageHTML::html({tasks}),
        R"(<ul class="tiptap-task-list" data-type="taskList"><li class="tiptap-task-item" data-checked="true" )"
        R"(data-type="taskItem"><label><input type="checkbox" checked="checked"><span></span></label>)"
        R"(<div><p></p></div></li></ul>)");

    const PageNode table = nodeFromJson(
        R"({"type":"table","content":[{"type":"tableRow","content":[{"type":"tableHeader","attrs":)"
        R"({"colspan":2,"colwidth":[100,80],"align":"center"},"content":[{"type":"paragraph"}]},)"
        R"({"type":"tableCell","content":[{"type":"paragraph"}]}]}]})");
    EXPECT_EQ(PageHTML::html({table}),
        R"(<table class="table__content tiptap-table" style="min-width: 205px;"><colgroup>)"
        R"(<col style="width: 100px;"><col style="width: 80px;"><col style="min-width: 25px;"></colgroup>)"
        R"(<tbody><tr class="table__row"><th class="table__column" colspan="2" rowspan="1" )"
        R"(colwidth="100,80" style="text-align: center;"><p></p></th>)"
        R"(<td class="table__cell" colspan="1" rowspan="1"><p></p></td></tr></tbody></table>)");

    PageNode words = PageNode::heading(2);
    words.name = "center";
    const auto link = std::make_shared<const Link>(
        Link{"x?a&b", R"({"class":"c","href":"x?a&b","rel":"r","title":null})"});
    words.content = {PageNode::ofText("<a>", Mark::Bold | Mark::Underline | Mark::Code, link),
        PageNode::ofText("\"", Mark::Bold, link)};
    EXPECT_EQ(PageHTML::html({words}),
        R"(<h2 style="text-align: center;"><a href="x?a&amp;b" class="c"><strong><code><u>&lt;a&gt;</u></code>")"
        R"(</strong></a></h2>)");
    words.name = "left; background: url(x)";
    EXPECT_FALSE(PageHTML::html({words}).contains("style")) << "an alignment is one word";

    PageNode mention = PageNode::of(Type::Mention);
    mention.name = "I";
    mention.text = "Plan \"B\"";
    PageNode paragraph = PageNode::of(Type::Paragraph);
    paragraph.content = {mention};
    HtmlOptions options;
    options.mentions = [](const QString& id) {
        return MentionFacts{"folder", {}, "sky", "/s/home/n/" + id};
    };
    EXPECT_EQ(PageHTML::html({paragraph}, options),
        R"(<p><span class="mention" data-type="mention" data-id="I" data-label="Plan &quot;B&quot;" )"
        R"(data-kind="folder" data-color="sky" data-href="/s/home/n/I" data-mention-suggestion-char="@">)"
        R"(Plan "B"</span></p>)");
    const PageNode callout = nodeFromJson(
        R"({"type":"callout","content":[{"type":"paragraph","content":[{"type":"text","text":"a<b"}]}]})");
    EXPECT_EQ(PageHTML::html({callout}), "<p>a&lt;b</p>") << "of what isn't known the words";
}

TEST(PageHtmlWriting, aFileStandsAlone)
{
    HtmlOptions options;
    options.picture = [](const QString& src) {
        return src == "file:a" ? u"data:image/png;base64,AA"_s : QString();
    };
    options.sketch = [](const PageEmbed& embed) {
        return embed.id == "S" ? u"data:x"_s : QString();
    };
    PageTree page;
    page.attrs = R"({"font":"mono"})";
    page.content = {PageNode::of(Type::HorizontalRule), pictureNode({"file:a", "b", {}}),
        pictureNode({"https://c", {}, "t"}), embedNode({"S", "file", "s", {}, {}}),
        embedNode({"T", "page", "<t>", {}, "/t"})};
    const QString file = PageHTML::file(page, "A & B", options);
    EXPECT_TRUE(
        file.startsWith("<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"));
    EXPECT_TRUE(
        file.contains("<title>A &amp; B</title>\n<style>\nbody { font: 16px/1.65 ui-monospace, "
                      "'SF Mono', Menlo, monospace; color: #1d1d1f; max-width"));
    const QString img = "<img class=\"rounded-lg max-w-full h-auto\" src=";
    EXPECT_TRUE(file.endsWith(
        "hr { border: 0; border-top: 1px solid #e3e3e8; }\n</style>\n</head>\n<body>\n"
        "<h1>A &amp; B</h1>\n<hr>" +
        img + "\"data:image/png;base64,AA\" alt=\"b\">" + img +
        "\"https://c\" alt=\"\" title=\"t\">" + img +
        "\"data:x\" alt=\"Sketch\"><a data-embed=\"\" data-id=\"T\" data-kind=\"page\" "
        "href=\"/t\">&lt;t&gt;</a>\n</body>\n</html>\n"))
        << file.toStdString();
}

TEST(PageHtmlPaste, textThatIsOnlyWrappedIsReadAsMarkdown)
{
    const auto text = [](const char* html) {
        return PageHTML::wrappedMarkdown(PageHTML::nodes(html));
    };
    EXPECT_EQ(text("<div>## a</div><div>- b</div><span>1. c</span><br>d"), "## a\n- b\n1. c\nd");
    EXPECT_TRUE(text("<div>- a</div><div>b</div>").isNull()) << "not most of it";
    EXPECT_TRUE(text("<div>- <b>a</b></div>").isNull()) << "more than text";
    EXPECT_TRUE(text("<h1>- a</h1>").isNull());
    for (const char* line : {"- a", "* [ ] ", "+ [x] a", "12) a", "###### a", "> a", "```", "|a|"})
        EXPECT_TRUE(PageHTML::isMarkdownLine(QString(line))) << line;
    for (const char* line :
        {"", "-a", "- ", "1234. a", "1.", "####### a", ">", "a - b", "|a", "[x] a"})
        EXPECT_FALSE(PageHTML::isMarkdownLine(QString(line))) << line;
}

// ---- hostile texts ----

TEST(PageHtmlLimits, deepTagsEndAndKeepTheirText)
{
    for (const char* tag :
        {"div", "b", "blockquote", "ul", "ul><li", "table><tr><td", "span", "x-y", "svg"}) {
        SCOPED_TRACE(tag);
        const QString deep = ("<" + QString(tag) + ">").repeated(100'000) + "end";
        const PageNodes nodes = PageHTML::nodes(deep);
        EXPECT_EQ(PageHTML::nodes(PageHTML::html(nodes)), nodes);
        EXPECT_EQ(PageHTML::html(nodes).contains("end"), QString(tag) != "svg");
        EXPECT_TRUE(pageTree(pageJson(nodes)).has_value()) << "and the page can be opened again";
    }
    const QString ignored = QString("<b>").repeated(300) + QString("</b>").repeated(300) + "a";
    EXPECT_EQ(shape(PageHTML::nodes(ignored)), "p(a)") << "an ignored tag's end ends nothing";
}

namespace {

double secondsToRead(const QString& html)
{
    double least = 1e9;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer time;
        time.start();
        PageHTML::nodes(html);
        least = std::min(least, static_cast<double>(time.nsecsElapsed()) / 1e9);
    }
    return least;
}

} // namespace

TEST(PageHtmlLimits, noTextIsMuchSlowerThanProse)
{
    constexpr qsizetype size = 1'000'000;
    const auto filled = [](const QString& piece) { return piece.repeated(size / piece.size()); };
    const double prose =
        secondsToRead(filled("<p>Some words of <b>prose</b>, and a "
                             "<a href=\"https://example.org/\">link</a> in them.</p>\n"));
    for (const char* piece : {"<", "<!--", "<!", "<?", "<a", "<a ", "</a", "<div>", "<b>", "<p>",
             "<li>", "<ul>", "<td>", "</b>", "<b></i>", "&", "&#0", "&#x", "<a href=\"", "<x a='",
             "<i a=b='>", "<table>", "<script>", "<svg>", "<ul><li><input type=checkbox>",
             "<p><span>", "<q1></q1><q2></q2>", " ", " &#32;", "<br>", "<style></style",
             "<p style='mso-list:l0 level1'>", "<b>x</b><i> </i>"}) {
        const double seconds = secondsToRead(filled(piece));
        EXPECT_LT(seconds, 20 * prose + 0.01)
            << piece << ": " << seconds << " s, prose: " << prose << " s";
    }
}

// ---- pages made at random ----

namespace {

class RandomPage
{
public:
    explicit RandomPage(unsigned seed)
        : m_random(seed)
    {}

    PageNodes blocks(int depth = 0)
    {
        PageNodes nodes;
        for (int count = 1 + below(4); count > 0; --count)
            nodes.push_back(block(depth));
        return nodes;
    }

private:
    int below(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }
    bool maybe(int oneIn) { return below(oneIn) == 0; }

    QString word()
    {
        static const QStringList words = {"a", "Wort", "<b>", "&amp;", "&", "\"", "'", ">", "😀",
            QString(QChar(0xA0)), "e\u0301", "-", "&nbsp;", "]]>", "<!--", "漢字",
            "corvelle://item/x"};
        return words[below(static_cast<int>(words.size()))];
    }
    QString words()
    {
        QString text = word();
        while (!maybe(3))
            text += (maybe(3) ? " " : "") + word();
        return text;
    }

    Marks marks() { return maybe(2) ? Marks() : Marks(below(32)); }

    std::shared_ptr<const Link> link()
    {
        if (!maybe(5))
            return {};
        const int kind = below(3);
        return std::make_shared<const Link>(
            kind == 0 ? Link{"https://example.org/?a=1&b=\"2\"", {}}
            : kind == 1
                ? Link{"mailto:x", {}}
                : Link{"/y", R"({"class":"c d","href":"/y","target":"_blank","title":"<t>"})"});
    }

    // Without what HTML takes away: blanks in a row or at an end, and equal neighbours.
    PageNodes inlines()
    {
        PageNodes nodes;
        for (int count = 1 + below(6); count > 0; --count) {
            const bool first = nodes.empty();
            if (!first && maybe(6)) {
                nodes.push_back(PageNode::of(Type::HardBreak));
            } else if (maybe(6)) {
                PageNode mention = PageNode::of(Type::Mention);
                mention.name = "N" + QString::number(below(100));
                mention.text = words();
                nodes.push_back(mention);
            } else {
                PageNode text = PageNode::ofText(words(), marks(), link());
                if (!first && nodes.back().type == Type::Text)
                    joinTo(nodes, std::move(text));
                else
                    nodes.push_back(std::move(text));
            }
        }
        return nodes;
    }
    void joinTo(PageNodes& nodes, PageNode text)
    {
        PageNode& last = nodes.back();
        const bool sameLink =
            last.link == text.link || (last.link && text.link && *last.link == *text.link);
        if (last.marks == text.marks && sameLink)
            last.text += text.text;
        else
            nodes.push_back(std::move(text));
    }

    PageNode paragraph(Type type = Type::Paragraph)
    {
        PageNode node =
            type == Type::Heading ? PageNode::heading(1 + below(6)) : PageNode::of(type);
        node.content = inlines();
        if (maybe(6))
            node.name = "center";
        return node;
    }

    PageNode list(Type listType, Type itemType, int depth)
    {
        PageNode list = PageNode::of(listType);
        if (listType == Type::OrderedList && maybe(2))
            list.start = below(100);
        for (int count = 1 + below(3); count > 0; --count) {
            PageNode item = PageNode::of(itemType);
            item.checked = itemType == Type::TaskItem && maybe(2);
            item.content = {paragraph()};
            if (maybe(4))
                item.content = {PageNode::of(Type::Paragraph)};
            else if (depth < 4 && maybe(2))
                for (PageNode& node : blocks(depth + 1))
                    item.content.push_back(std::move(node));
            list.content.push_back(std::move(item));
        }
        return list;
    }

    PageNode table(int depth)
    {
        PageNode table = PageNode::of(Type::Table);
        for (int rows = 1 + below(3); rows > 0; --rows) {
            PageNode row = PageNode::of(Type::TableRow);
            for (int cells = 1 + below(3); cells > 0; --cells) {
                PageNode cell = PageNode::of(maybe(3) ? Type::TableHeader : Type::TableCell);
                Cell its;
                its.colspan = 1 + below(2);
                its.rowspan = 1 + below(2);
                if (maybe(3))
                    its.align = "right";
                if (maybe(3))
                    its.colwidth = its.colspan == 1 ? "[120]" : "[0,90]";
                if (its != Cell())
                    cell.cell = std::make_shared<const Cell>(its);
                cell.content =
                    maybe(3) ? PageNodes{PageNode::of(Type::Paragraph)} : blocks(depth + 2);
                row.content.push_back(std::move(cell));
            }
            table.content.push_back(std::move(row));
        }
        return table;
    }

    PageNode block(int depth)
    {
        switch (below(depth < 4 ? 12 : 6)) {
        case 0:
            return paragraph(Type::Heading);
        case 1:
            return PageNode::of(Type::HorizontalRule);
        case 2: {
            PageNode code = PageNode::of(Type::CodeBlock);
            code.text =
                maybe(5) ? QString() : (maybe(3) ? "\n " : "") + words() + "\n\t" + words() + "\n";
            code.name = maybe(2) ? u"c++"_s : QString();
            return code;
        }
        case 3:
            return pictureNode({"data:image/png;base64,AA==", maybe(2) ? words() : QString(),
                maybe(2) ? words() : QString()});
        case 4:
            return embedNode({"E1", "file", words(), maybe(2) ? u"star"_s : QString(),
                maybe(2) ? u"/s/home/n/E1"_s : QString()});
        case 6:
            return list(Type::BulletList, Type::ListItem, depth);
        case 7:
            return list(Type::OrderedList, Type::ListItem, depth);
        case 8:
            return list(Type::TaskList, Type::TaskItem, depth);
        case 9: {
            PageNode quote = PageNode::of(Type::Blockquote);
            quote.content = blocks(depth + 1);
            return quote;
        }
        case 10:
            return table(depth);
        default:
            return paragraph();
        }
    }

    std::mt19937 m_random;
};

} // namespace

TEST(PageHtmlRoundTrip, aPageIsReadFromWhatWasWrittenOfIt)
{
    const bool given = qEnvironmentVariableIsSet("CORVELLE_SEED");
    const unsigned first =
        given ? qEnvironmentVariable("CORVELLE_SEED").toUInt() : std::random_device()();
    for (unsigned i = 0; i < (given ? 1u : 400u); ++i) {
        SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(first + i));
        const PageNodes page = RandomPage(first + i).blocks();
        const QString html = PageHTML::html(page);
        ASSERT_EQ(PageHTML::nodes(html), page) << html.toStdString();
        ASSERT_EQ(PageHTML::nodes(PageHTML::file({page, {}}, "t")).size(), page.size() + 1);
    }
}

// ---- pages of the world ----

namespace {

QString corpus()
{
    const QString shared = qEnvironmentVariable("CORVELLE_SHARED",
        QFileInfo(QString::fromUtf8(__FILE__)).dir().filePath("../../../shared"));
    return shared + "/corpus/html/";
}

QString fileText(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    const QByteArray bytes = file.readAll();
    const auto encoding = QStringConverter::encodingForData(bytes);
    return QStringDecoder(encoding.value_or(QStringConverter::Utf8)).decode(bytes);
}

QStringList wordsOf(const QString& text)
{
    // Letters and digits: what a published text leaves out can stand amid punctuation.
    static const QRegularExpression others("[^\\p{L}\\p{N}]+");
    return text.split(others, Qt::SkipEmptyParts);
}

// The words of a page, blocks apart and marks not.
void addWords(const PageNodes& nodes, QString& out)
{
    for (const PageNode& node : nodes) {
        if (node.type == Type::Text || node.type == Type::CodeBlock || node.type == Type::Mention)
            out += node.text;
        else
            out += u'\n';
        addWords(node.content, out);
        if (!node.isInline())
            out += u'\n';
    }
}
QStringList wordsOf(const PageNodes& nodes)
{
    QString text;
    addWords(nodes, text);
    return wordsOf(text);
}

// The words between tags, found without our reader.
QStringList wordsOfMarkup(QString html)
{
    static const QRegularExpression inlineTags(
        "</?(a|abbr|b|cite|code|em|font|i|q|small|span|strong|sub|sup|time|u|var|wbr)( [^>]*)?/?>"),
        otherTags("<[^>]*>");
    html.remove(inlineTags).replace(otherTags, " ");
    html.replace("&nbsp;", " ").replace("&#160;", " ");
    html.replace("&lt;", "<").replace("&gt;", ">").replace("&amp;", "&");
    return wordsOf(html);
}

// How many of the words are missing, each counted as often as it stands there.
QStringList missing(const QStringList& words, const QStringList& from)
{
    QHash<QString, int> have;
    for (const QString& word : from)
        ++have[word];
    QStringList lacking;
    for (const QString& word : words)
        if (--have[word] < 0)
            lacking.append(word);
    return lacking;
}

} // namespace

class PageHtmlCorpus : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!QDir(corpus()).exists())
            GTEST_SKIP() << "The pages of the world aren't at " << corpus().toStdString()
                         << "; CORVELLE_SHARED tells another place.";
    }
};

TEST_F(PageHtmlCorpus, everyPageIsReadAgainFromWhatIsWritten)
{
    const auto files = QDir(corpus()).entryList({"*.html"});
    EXPECT_GE(files.size(), 20);
    for (const QString& name : files) {
        SCOPED_TRACE(name.toStdString());
        const PageNodes nodes = PageHTML::nodes(fileText(corpus() + name));
        EXPECT_FALSE(nodes.empty());
        EXPECT_TRUE(PageHTML::nodes(PageHTML::html(nodes)) == nodes);
        const auto again = pageTree(pageJson(nodes));
        ASSERT_TRUE(again);
        EXPECT_EQ(again->content.size(), nodes.size());
    }
}

TEST_F(PageHtmlCorpus, everyWordOfAPublishedTextIsRead)
{
    int seen = 0;
    for (const QString& name : QDir(corpus()).entryList({"readability__*.expected.html"})) {
        SCOPED_TRACE(name.toStdString());
        const QStringList expected = wordsOfMarkup(fileText(corpus() + name));
        const QString source = corpus() + QString(name).remove(".expected.html");
        const QStringList lacking = missing(expected, wordsOf(PageHTML::nodes(fileText(source))));
        EXPECT_GT(expected.size(), 20);
        EXPECT_EQ(lacking.join(' '), "");
        ++seen;
    }
    EXPECT_GE(seen, 9);
}
