// Reads what others have published and judges it by what they, or another reader, make of it.
#include "pages/MarkdownExamples.h"
#include "pages/PageDocument.h"
#include "pages/PageMarkdown.h"
#include "support/Printing.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

// Those of the examples; a page keeps them as they are written.
QString withoutEntities(QString text)
{
    static const QHash<QString, QString> named = {{u"amp"_s, u"&"_s}, {u"lt"_s, u"<"_s},
        {u"gt"_s, u">"_s}, {u"quot"_s, u"\""_s}, {u"nbsp"_s, u" "_s}, {u"copy"_s, u"©"_s},
        {u"AElig"_s, u"Æ"_s}, {u"Dcaron"_s, u"Ď"_s}, {u"frac34"_s, u"¾"_s},
        {u"HilbertSpace"_s, u"ℋ"_s}, {u"DifferentialD"_s, u"ⅆ"_s},
        {u"ClockwiseContourIntegral"_s, u"∲"_s}, {u"ngE"_s, u"≧̸"_s}, {u"ouml"_s, u"ö"_s},
        {u"auml"_s, u"ä"_s}};
    static const QRegularExpression entity(u"&(?:#([0-9]{1,7})|#[xX]([0-9a-fA-F]{1,6})|(\\w+));"_s);
    QString decoded;
    qsizetype at = 0;
    for (auto found = entity.globalMatch(text); found.hasNext();) {
        const auto match = found.next();
        decoded += QStringView(text).mid(at, match.capturedStart() - at);
        at = match.capturedEnd();
        const uint code = match.hasCaptured(1) ? match.captured(1).toUInt()
                                               : match.captured(2).toUInt(nullptr, 16);
        decoded += match.hasCaptured(3)
                       ? named.value(match.captured(3), match.captured())
                       : QString::fromUcs4(reinterpret_cast<const char32_t*>(&code), 1);
    }
    return decoded + text.mid(at);
}

// Runs of letters and digits: all the same, whatever around them a reader takes for markup.
QStringList wordsIn(const QString& text)
{
    static const QRegularExpression others(u"[^\\p{L}\\p{N}]+"_s);
    return text.split(others, Qt::SkipEmptyParts);
}

// What stands between the tags, and what pictures say. A number that refers to a note is of the
// publisher's making.
QString textOfMarkup(QString html)
{
    static const QRegularExpression comments(
        u"<!--.*?-->|<\\?.*?\\?>"_s, QRegularExpression::DotMatchesEverythingOption),
        noteNumbers(u"<sup class=\"footnote-ref\">.*?</sup>"_s),
        pictures(u"<img [^>]*alt=\"([^\"]*)\"[^>]*>"_s),
        inlines(u"</?(?:a|code|del|em|strong)(?: [^>]*)?>"_s), tags(u"</?[A-Za-z!][^>]*>"_s);
    html.remove(comments).remove(noteNumbers).replace(pictures, u"\\1"_s);
    html.replace(u"</a><a "_s, u"</a> <a "_s); // what refers to their addresses stood between them
    return withoutEntities(html.remove(inlines).replace(tags, u" "_s));
}

// All texts of a saved page in their order, and behind each block what it keeps as attributes.
struct PageTexts
{
    QString all, attributes;

    explicit PageTexts(const QByteArray& saved) { add(QJsonDocument::fromJson(saved).object()); }

private:
    void add(const QJsonObject& node)
    {
        const QJsonObject attrs = node["attrs"].toObject();
        if (attrs.contains("language"))
            all += attrs["language"].toString() + u'\n';
        all += node["text"].toString() + attrs["label"].toString();
        for (const QJsonValue& mark : node["marks"].toArray())
            attributes += mark["attrs"]["href"].toString() + u' ';
        int number = attrs["start"].toInt(1);
        for (const QJsonValue& child : node["content"].toArray()) {
            if (node["type"] == "orderedList")
                all += QString::number(number++) + u' ';
            add(child.toObject());
        }
        if (node["type"] != "text" && node["type"] != "mention")
            all += u'\n' + std::exchange(attributes, {}) + u'\n';
    }
};

// The words that don't stand in the text, in that order. One that a bracket or a tag parts from its
// neighbour in one of the two texts counts as found.
QStringList wordsMissingInOrder(const QStringList& words, const QString& text)
{
    const QString letters = wordsIn(text).join(QString());
    QStringList missing;
    qsizetype at = 0;
    for (const QString& word : words) {
        const qsizetype found = letters.indexOf(word, at);
        if (found < 0)
            missing.append(word);
        else
            at = found + word.size();
    }
    return missing;
}

// Those that aren't among the others, each counted as often as it stands there.
QStringList wordsMissing(const QStringList& words, const QStringList& others)
{
    QHash<QString, int> have;
    for (const QString& word : others)
        ++have[word];
    QStringList missing;
    for (const QString& word : words)
        if (--have[word] < 0)
            missing.append(word);
    return missing;
}

// The words of the HTML that the page of the Markdown lacks. Its entities may be read or not: in a
// page they are text as they are written, in HTML only those of code are.
QStringList lostWords(const QString& html, const QString& markdown)
{
    const QString ours = PageTexts(savedFromMarkdown(markdown)).all;
    // Notes stand at the end and in the order in which they are referred to.
    static const QRegularExpression notes(u"<section class=\"footnotes\">|<li id=\"fn[0-9]+\">"_s);
    QStringList lost;
    for (const QString& part : html.split(notes)) {
        const QStringList words = wordsIn(textOfMarkup(part));
        const QStringList missing = wordsMissingInOrder(words, ours);
        if (!missing.isEmpty() && !wordsMissingInOrder(words, withoutEntities(ours)).isEmpty())
            lost += missing;
    }
    return lost;
}

// Notes of people, the sources of the examples, and what programs made of documents.
QStringList markdownFiles()
{
    QStringList paths;
    for (QDirIterator found(realFiles(), {u"*.md"_s}, QDir::Files, QDirIterator::Subdirectories);
         found.hasNext();)
        paths.append(found.next());
    const QDir examples(realFiles() + u"/md-spec"_s);
    for (const QString& name : examples.entryList({u"*.txt"_s}, QDir::Files))
        paths.append(examples.filePath(name));
    return paths;
}

QString contentsOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

// Blanks at a block's ends and beside a break aren't written, but as code.
void dropUnwrittenBlanks(PageNodes& nodes)
{
    static const QRegularExpression leading(u"^[ \\t]+"_s), trailing(u"[ \\t]+$"_s);
    const auto isText = [&](size_t at) {
        return at < nodes.size() && nodes[at].type == PageNode::Type::Text &&
               !nodes[at].marks.testFlag(Mark::Code);
    };
    const auto isEdge = [&](size_t at) {
        return at >= nodes.size() || nodes[at].type == PageNode::Type::HardBreak;
    };
    for (size_t i = 0; i < nodes.size(); ++i) {
        dropUnwrittenBlanks(nodes[i].content);
        while (isText(i) && isEdge(i - 1) && nodes[i].text.remove(leading).isEmpty())
            nodes.erase(nodes.begin() + qsizetype(i));
    }
    for (size_t i = nodes.size(); i-- > 0;)
        if (isText(i) && isEdge(i + 1) && nodes[i].text.remove(trailing).isEmpty())
            nodes.erase(nodes.begin() + qsizetype(i));
}

class PageCorpus : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!QDir(realFiles()).exists())
            GTEST_SKIP() << "The real files aren't at " << realFiles().toStdString()
                         << "; CORVELLE_SHARED tells another place.";
    }
};

} // namespace

TEST_F(PageCorpus, noWordOfAPublishedExampleIsLost)
{
    for (const char* name : exampleSources) {
        const auto examples = markdownExamples(name);
        EXPECT_GE(examples.size(), 15u) << name;
        for (const MarkdownExample& example : examples) {
            QStringList lost = lostWords(example.html, example.markdown);
            // A text inside two links keeps the inner one.
            if (example.markdown.contains(u"](uri2)](uri3)"_s))
                lost.removeOne(u"uri2"_s);
            EXPECT_EQ(lost.join(u' '), u""_s) << name << " " << example.number << "\n"
                                              << example.markdown.toStdString();
        }
    }
}

TEST_F(PageCorpus, everyExampleThatGivesAnotherDocumentIsExplained)
{
    const auto differences = markdownDifferences();
    EXPECT_FALSE(differences.empty());
    for (const char* source : exampleSources)
        for (const MarkdownExample& example : markdownExamples(source)) {
            const QByteArray ours = savedFromMarkdown(example.markdown);
            const QByteArray theirs = savedFromHtml(example.html);
            const auto explaining = std::count_if(
                differences.begin(), differences.end(), [&](const MarkdownDifference& difference) {
                    return difference.examples.value(source).contains(example.number);
                });
            EXPECT_EQ(explaining, ours == theirs ? 0 : 1)
                << source << " " << example.number << "\n"
                << example.markdown.toStdString() << "--- ours\n"
                << ours.toStdString() << "\n--- theirs\n"
                << theirs.toStdString();
        }
}

TEST_F(PageCorpus, noWordOfAMarkdownFileIsLost)
{
    const QString program = QStandardPaths::findExecutable(u"cmark-gfm"_s);
    if (program.isEmpty())
        GTEST_SKIP() << "cmark-gfm, which judges the files, isn't installed.";
    const QStringList paths = markdownFiles();
    EXPECT_GE(paths.size(), 20);
    for (const QString& path : paths) {
        SCOPED_TRACE(path.toStdString());
        QProcess judge;
        judge.start(program, {u"--unsafe"_s, u"-e"_s, u"table"_s, u"-e"_s, u"strikethrough"_s,
                                 u"-e"_s, u"tasklist"_s, path});
        ASSERT_TRUE(judge.waitForFinished() && judge.exitCode() == 0);
        const QString html = QString::fromUtf8(judge.readAllStandardOutput());
        const QString markdown = contentsOf(path);
        EXPECT_EQ(lostWords(html, markdown).join(u' '), u""_s);
        const QString ours = PageTexts(savedFromMarkdown(markdown)).all;
        const QStringList missing = wordsMissing(wordsIn(textOfMarkup(html)), wordsIn(ours));
        EXPECT_EQ(wordsMissing(missing, wordsIn(withoutEntities(ours))).join(u' '), u""_s);
    }
}

TEST_F(PageCorpus, whatIsWrittenOfAnyTextIsReadAgain)
{
    const auto saved = [](PageNodes page) {
        dropUnwrittenBlanks(page);
        return docFromText(textFromNodes(page));
    };
    const auto expectSame = [&](const QString& markdown) {
        const PageNodes page = PageMarkdown::docFromMarkdown(markdown);
        const QString written = PageMarkdown::markdownFromNodes(page);
        EXPECT_EQ(saved(PageMarkdown::docFromMarkdown(written)), saved(page))
            << markdown.toStdString() << "\nis written as\n"
            << written.toStdString();
    };
    for (const char* name : exampleSources)
        for (const MarkdownExample& example : markdownExamples(name))
            expectSame(example.markdown);
    for (const QString& path : markdownFiles()) {
        SCOPED_TRACE(path.toStdString());
        expectSame(contentsOf(path));
    }
}
