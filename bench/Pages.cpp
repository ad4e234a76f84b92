// What reading and writing pages costs, in milliseconds of the processor, as one line of JSON.
//   bench_pages markdown|html|libxml FILE [TIMES]
//       a large text, TIMES in a row, read as by a program that has just started
//   bench_pages hostile|heavy
//       texts of its own
#include "pages/PageDocument.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype hostileUnits = 1'000'000;

class Told
{
public:
    void add(const std::string& name, double value)
    {
        m_json += (m_json.empty() ? "{\"" : ", \"") + name + "\": " + std::to_string(value);
    }
    void print() const { std::printf("%s}\n", m_json.c_str()); }

private:
    std::string m_json;
};

// Of the process, so that what else runs on the machine counts less.
double best(int tries, const std::function<void()>& work)
{
    double least = 1e12;
    for (int i = 0; i < tries; ++i) {
        const std::clock_t start = std::clock();
        work();
        least = std::min(least, static_cast<double>(std::clock() - start) * 1e3 / CLOCKS_PER_SEC);
    }
    return least;
}

QByteArray contents(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// ---- large texts ----

void markdown(Told& told, const QByteArray& bytes)
{
    PageNodes nodes;
    told.add(
        "read", best(1, [&] { nodes = PageMarkdown::docFromMarkdown(QString::fromUtf8(bytes)); }));
    told.add("write", best(1, [&] { (void)PageMarkdown::markdownFromNodes(nodes); }));
}

void html(Told& told, const QByteArray& bytes)
{
    PageNodes nodes;
    told.add("read", best(1, [&] { nodes = PageHTML::nodes(QString::fromUtf8(bytes)); }));
    told.add("write", best(1, [&] { (void)PageHTML::html(nodes); }));
}

// The events that libxml2 gives of a text, and how long it takes over them.
struct PeerPass
{
    qint64 elements = 0, characters = 0;

    void run(const QByteArray& html)
    {
        htmlSAXHandler handler = {};
        handler.startElement = [](void* pass, const xmlChar*, const xmlChar**) {
            ++static_cast<PeerPass*>(pass)->elements;
        };
        handler.endElement = [](void*, const xmlChar*) {};
        handler.characters = [](void* pass, const xmlChar*, int length) {
            static_cast<PeerPass*>(pass)->characters += length;
        };
        handler.ignorableWhitespace = handler.characters;
        handler.cdataBlock = handler.characters;
        handler.comment = [](void*, const xmlChar*) {};
        htmlParserCtxtPtr context = htmlCreatePushParserCtxt(
            &handler, this, html.constData(), 4, nullptr, XML_CHAR_ENCODING_UTF8);
        htmlCtxtUseOptions(context,
            HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
        constexpr qsizetype chunk = 1 << 16;
        for (qsizetype at = 4; at < html.size(); at += chunk)
            htmlParseChunk(context, html.constData() + at,
                static_cast<int>(std::min(chunk, html.size() - at)), 0);
        htmlParseChunk(context, nullptr, 0, 1);
        htmlFreeParserCtxt(context);
    }
};

void libxml(Told& told, const QByteArray& bytes)
{
    PeerPass pass;
    told.add("read", best(1, [&] { pass.run(bytes); }));
    told.add("elements", static_cast<double>(pass.elements));
    told.add("characters", static_cast<double>(pass.characters));
}

// ---- hostile texts ----

QString filled(const QString& unit)
{
    return unit.repeated(hostileUnits / unit.size() + 1);
}

// Each line a level deeper.
QString nested(const QString& marker)
{
    QString text;
    for (int level = 0; text.size() < hostileUnits; ++level)
        text += QString(level, u' ') + marker + u" x\n"_s;
    return text;
}

// The slowest of the texts; those beyond the limit are named.
template<class Read>
void hostile(Told& told, const std::string& name, const QString& prose, const QStringList& texts,
    const Read& read)
{
    constexpr double limit = 20;
    const double usual = best(5, [&] { read(prose); });
    double worst = 0;
    for (const QString& text : texts) {
        const double time = best(2, [&] { read(text); });
        worst = std::max(worst, time);
        if (time > limit * usual)
            std::fprintf(stderr, "  %.0f times prose: %s\n", time / usual,
                qPrintable(text.left(24).simplified()));
    }
    told.add(name + "Prose", usual);
    told.add(name + "Hostile", worst);
}

void hostileMarkdown(Told& told)
{
    QStringList texts = {nested(u"-"_s), nested(u">"_s),
        QString(500'000, u'[') + QString(500'000, u']'),
        QString(100'000, u'>') + filled(u" x\n>"_s), filled(u"- "_s) + u"x"_s,
        filled(u"a | b\n"_s) + u"--|--"_s,
        u"|a\n|--\n"_s + QString(500'000, u'|') + filled(u"\n|"_s)};
    for (const char16_t* unit : {u"[", u"*_", u"`", u">", u"> ", u"<", u"<!--", u"[a](<",
             u"[a](b \"", u"`a``b", u"*a_ ", u"a**b", u"- ", u"[a](b(", u"|a\n|--\n", u">\n",
             u"- a\n\n\n", u"![[", u"_a__ ", u"**a *b ", u"~~a ", u"<u>", u"</u>", u"a\\\n", u"[](",
             u"[a](b)", u"![a](b) ", u"1. a\n", u"- [ ] a\n", u"```\n", u"    a\n\n", u"#\n",
             u"a\n=\n", u"\t- a\n", u"*", u"&#32;", u"\\", u"  \n", u"- a\n  > b\n"})
        texts.append(filled(QString::fromUtf16(unit)));
    const QString prose =
        u"The quick brown fox jumps over the *lazy* dog, again and\nagain. It says so in [a "
        u"book](https://example.org/fox), as "
        u"one may\nread on any rainy afternoon; nobody knows who wrote it, or for whom.\n\n"_s;
    hostile(told, "markdown", filled(prose), texts,
        [](const QString& text) { (void)PageMarkdown::parse(text); });
}

void hostileHtml(Told& told)
{
    QStringList texts;
    for (const char16_t* unit :
        {u"<", u"<!--", u"<!", u"<?", u"<a", u"<div>", u"</div>", u"<b>", u"<i></b>", u"<ul><li>",
            u"<li>", u"<table><tr><td>", u"<table>", u"<td>", u"<p a=", u"<p style=", u"&", u"&#",
            u"&#x1;", u"<script>", u"<b></i>", u"<pre>", u"<a href=x>", u"<p a='", u"<svg>",
            u"<blockquote>", u"<h1>", u"<br>", u"<img src=x>", u"<input type=checkbox>",
            u"<p style='mso-list:l0 level1'>", u"<ul><input>", u"<li><p>", u"<ol><ul>", u"<head>"})
        texts.append(filled(QString::fromUtf16(unit)));
    // What stands open while what doesn't match it goes on.
    texts.append(u"<b>"_s.repeated(250) + filled(u"</i>"_s));
    texts.append(u"<p "_s + filled(u"a=b "_s) + u">"_s);
    texts.append(u"<ul>"_s.repeated(120) + filled(u"<li>a"_s));
    hostile(told, "html", filled(u"<p>The quick brown fox jumps over the <b>lazy</b> dog.</p>\n"_s),
        texts, [](const QString& text) { (void)PageHTML::nodes(text); });
}

// ---- a heavy page ----

// 500 tables, 20 pictures and words between them: about 2 MB.
QByteArray heavyPage()
{
    QJsonArray blocks;
    const auto paragraph = [](const QString& words) {
        return QJsonObject{{u"type"_s, u"paragraph"_s},
            {u"content"_s, QJsonArray{QJsonObject{{u"type"_s, u"text"_s}, {u"text"_s, words}}}}};
    };
    for (int t = 0; t < 500; ++t) {
        QJsonArray rows;
        for (int r = 0; r < 4; ++r) {
            QJsonArray cells;
            for (int c = 0; c < 4; ++c)
                cells.append(QJsonObject{{u"type"_s, u"tableCell"_s},
                    {u"attrs"_s, QJsonObject{{u"colspan"_s, 1}, {u"rowspan"_s, 1}}},
                    {u"content"_s, QJsonArray{paragraph(u"cell %1"_s.arg(c))}}});
            rows.append(QJsonObject{{u"type"_s, u"tableRow"_s}, {u"content"_s, cells}});
        }
        blocks.append(QJsonObject{{u"type"_s, u"table"_s}, {u"content"_s, rows}});
        blocks.append(paragraph(u"Between the tables stand words, %1 times."_s.arg(t)));
        if (t % 25 == 0)
            blocks.append(QJsonObject{{u"type"_s, u"image"_s},
                {u"attrs"_s,
                    QJsonObject{{u"src"_s, u"data:image/png;base64,"_s + QString(40'000, u'A')}}}});
    }
    return QJsonDocument(QJsonObject{{u"type"_s, u"doc"_s}, {u"content"_s, blocks}})
        .toJson(QJsonDocument::Compact);
}

void heavy(Told& told)
{
    const QByteArray page = heavyPage();
    told.add("pageBytes", static_cast<double>(page.size()));
    told.add("open", best(7, [&] { (void)textFromJSON(page); }));
    told.add("qtParse", best(7, [&] { (void)QJsonDocument::fromJson(page); }));
    const FlatText text = textFromJSON(page);
    told.add("save", best(7, [&] { (void)docFromText(text); }));
}

} // namespace

int main(int argc, char** argv)
{
    const std::string what = argc > 1 ? argv[1] : "";
    Told told;
    if (what == "hostile") {
        hostileMarkdown(told);
        hostileHtml(told);
    } else if (what == "heavy") {
        heavy(told);
    } else if (argc > 2 && (what == "markdown" || what == "html" || what == "libxml")) {
        const QByteArray bytes =
            contents(argv[2]).repeated(argc > 3 ? std::max(1, std::atoi(argv[3])) : 1);
        (what == "markdown" ? markdown : what == "html" ? html : libxml)(told, bytes);
    } else {
        return 2;
    }
    told.print();
}
