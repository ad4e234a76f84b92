#include "documents/XNode.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr char transitional[] = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";
constexpr char strict[] = "http://purl.oclc.org/ooxml/wordprocessingml/main";

// The shape of a tree: name[attribute=value]{text}(children).
QByteArray shape(XNode node)
{
    QByteArray all = node.name().toByteArray();
    for (const auto& [name, value] : node.attrs())
        all += '[' + name.toByteArray() + '=' + value.toByteArray() + ']';
    if (!node.text().isEmpty())
        all += '{' + node.text().toByteArray() + '}';
    QByteArray inner;
    for (const XNode child : node.children())
        inner += (inner.isEmpty() ? "" : " ") + shape(child);
    return inner.isEmpty() ? all : all + '(' + inner + ')';
}

QByteArray shapeOf(QByteArrayView xml)
{
    const auto tree = XNode::parse(xml);
    return tree ? shape(tree->root()) : QByteArray("none");
}

QByteArray bound(const char* prefix, const char* uri, const QByteArray& inner)
{
    return QByteArray("<t xmlns") + prefix + "='" + uri + "'>" + inner + "</t>";
}

QByteArrayList streamed(QByteArrayView xml, int most, bool* ended)
{
    QByteArrayList shapes;
    *ended = XNode::stream(xml, {"row", "si"}, [&](XNode node) {
        shapes.append(shape(node));
        return shapes.size() < most;
    });
    return shapes;
}

} // namespace

TEST(XNode, namesHaveOnePrefixForEachNamespace)
{
    const struct
    {
        const char* what;
        QByteArray xml, expected;
    } cases[] = {
        {"transitional", bound(":w", transitional, "<w:p w:x='1'/>"), "t(w:p[w:x=1])"},
        {"strict", bound(":w", strict, "<w:p/>"), "t(w:p)"},
        {"any prefix", bound(":ns0", transitional, "<ns0:p/>"), "t(w:p)"},
        {"the default namespace", bound("", transitional, "<p Target='a'/>"), "w:t(w:p[Target=a])"},
        {"a default taken back", bound("", transitional, "<p xmlns=''/>"), "w:t(p)"},
        {"an unknown namespace", bound(":y", "urn:x", "<y:local y:a='1'/>"),
            "t({urn:x}local[{urn:x}a=1])"},
        {"a prefix that nobody bound", "<foo:bar baz:a='1'/>", "bar[a=1]"},
        {"xml:space", "<t xml:space='preserve'/>",
            "t[{http://www.w3.org/XML/1998/namespace}space=preserve]"},
        {"bound inside, and only there",
            bound(":w", transitional, "<w:a/><b xmlns:w='urn:x'><w:a/></b><w:a/>"),
            "t(w:a b({urn:x}a) w:a)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(shapeOf(c.xml), c.expected);
    }
}

TEST(XNode, textIsAllThatStandsRightInside)
{
    EXPECT_EQ(shapeOf("<a>x<b>y<c>z</c>y</b> x<![CDATA[<&>]]>&lt;</a>"), "a{x x<&><}(b{yy}(c{z}))");
    EXPECT_EQ(XNode::parse("<a>x<b>y</b>x<c/></a>")->root().allText(), u"xxy"_s);
    EXPECT_EQ(shapeOf(QByteArray("\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0", 18)), "a{é}");
}

TEST(XNode, nodesAreFoundInDocumentOrder)
{
    const auto tree = XNode::parse("<a><b i='1'><b i='2'/></b><c/><b i='3'/></a>");
    QString order;
    for (const XNode node : tree->root().descendants("b"))
        order += node.value("i");
    EXPECT_EQ(order, u"123"_s);
    EXPECT_EQ(tree->root().child("b").child("b").value("i"), u"2"_s);
    EXPECT_TRUE(tree->root().contains({"x", "c"}));
    EXPECT_FALSE(tree->root().contains({"a"}));
    EXPECT_FALSE(tree->root().child("x").child("y").attr("z"));
    EXPECT_TRUE(tree->root().child("x").value("z").isNull());
}

TEST(XNode, onlyAWholeRootGivesATree)
{
    EXPECT_EQ(shapeOf("<a><b/></a> junk <"), "a(b)");
    for (const char* broken : {"", "<a><b></b>", "<a><b></a>", "<a", "junk", "<a>&nowhere;</a>"})
        EXPECT_EQ(shapeOf(broken), "none") << broken;
}

TEST(XNode, entitiesBringNothingIn)
{
    EXPECT_EQ(shapeOf("<!DOCTYPE a [<!ENTITY e 'value'>]><a>&e;</a>"), "none");
    EXPECT_EQ(
        shapeOf("<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>x&e;y</a>"), "a{xy}");
    EXPECT_EQ(shapeOf("<!DOCTYPE a SYSTEM 'http://localhost/a.dtd'><a>x</a>"), "a{x}");
}

TEST(XNode, whatIsBeyondTheLimitsIsEmpty)
{
    const auto nested = [](int levels) {
        return QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels);
    };
    EXPECT_TRUE(XNode::parse(nested(XNode::mostLevels)));
    EXPECT_FALSE(XNode::parse(nested(XNode::mostLevels + 1)));
    const auto filled = [](int elements) {
        return "<a>" + QByteArray("<b/>").repeated(elements) + "</a>";
    };
    EXPECT_TRUE(XNode::parse(filled(XNode::mostElements - 1)));
    EXPECT_FALSE(XNode::parse(filled(XNode::mostElements)));
    EXPECT_FALSE(XNode::parse("<a>" + QByteArray(XNode::mostBytes, ' ') + "</a>"));
    EXPECT_FALSE(XNode::parse("<a b='" + QByteArray(10 << 20, ' ') + "'/>"));
    QByteArray names;
    for (int i = 0; i < 60'000; ++i)
        names += "<n" + QByteArray::number(i) + "/>";
    EXPECT_FALSE(XNode::parse("<a>" + names + "</a>"));
}

TEST(XNode, aTreeCostsLessThanThreeTimesItsBytes)
{
    const QByteArray xml = bound(":w", transitional,
        QByteArray("<w:p><w:r><w:rPr><w:b/></w:rPr><w:t xml:space=\"preserve\">Some words </w:t>"
                   "</w:r></w:p>")
            .repeated(20'000));
    const auto tree = XNode::parse(xml);
    ASSERT_TRUE(tree);
    EXPECT_LT(tree->bytes(), 3 * xml.size());
}

TEST(XNode, aStreamGivesOuterElementsWholeAndCanBeStopped)
{
    bool ended = false;
    const QByteArrayView xml = "<a>x<row r='1'><c>1<row/></c></row><b><si>t</si></b><row/>y</a>";
    EXPECT_EQ(streamed(xml, 9, &ended), (QByteArrayList{"row[r=1](c{1}(row))", "si{t}", "row"}));
    EXPECT_TRUE(ended);
    EXPECT_EQ(streamed(xml, 2, &ended).size(), 2);
    EXPECT_TRUE(ended);
    EXPECT_EQ(streamed("<a><row/><row>", 9, &ended), (QByteArrayList{"row"}));
    EXPECT_FALSE(ended);
}
