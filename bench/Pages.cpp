// What reading and writing pages costs, in milliseconds, as one line of JSON. The first argument is
// a large Markdown file; the second, when given, the same as HTML.
#include "pages/MarkdownMerge.h"
#include "pages/PageDocument.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

double best(int tries, const std::function<void()>& work)
{
    double least = 1e12;
    for (int i = 0; i < tries; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        least = std::min(least, static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return least;
}

QByteArray contents(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString filled(const QString& unit, qsizetype bytes = 1'000'000)
{
    return unit.repeated(bytes / unit.size() + 1);
}

// The same stretch again, each time a level deeper.
QString nested(const QString& marker, int levels)
{
    QString text;
    for (int i = 0; i < levels; ++i)
        text += QString(i, u' ') + marker + u" x\n";
    return text;
}

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
                {u"attrs"_s, QJsonObject{{u"src"_s, u"data:image/png;base64,"_s + QString(40'000, u'A')}}}});
    }
    return QJsonDocument(QJsonObject{{u"type"_s, u"doc"_s}, {u"content"_s, blocks}}).toJson(QJsonDocument::Compact);
}

class Told
{
public:
    void add(const char* name, double ms) { m_json += (m_json.empty() ? "{\"" : ", \"") + std::string(name) + "\": " + std::to_string(ms); }
    void print() const { std::printf("%s}\n", m_json.c_str()); }

private:
    std::string m_json;
};

void hostile(Told& told)
{
    const double prose = best(3, [text = filled(u"The quick brown fox jumps over the lazy dog, again and again.\n"_s)] {
        (void)PageMarkdown::parse(text);
    });
    told.add("prose", prose);
    double worst = 0;
    for (const QString& text : {filled(u"["_s), filled(u"*_"_s), filled(u"`"_s), filled(u">"_s), filled(u"> "_s),
             filled(u"<"_s), filled(u"<!--"_s), filled(u"[a](<"_s), filled(u"[a](b \""_s), filled(u"`a``b"_s),
             filled(u"*a_ "_s), filled(u"a**b"_s), filled(u"- "_s), filled(u"[a](b("_s), filled(u"|a\n|--\n"_s),
             nested(u"-"_s, 1'400), filled(u">\n"_s), filled(u"- a\n\n\n"_s), filled(u"![["_s), filled(u"_a__ "_s),
             QString(500'000, u'[') + QString(500'000, u']'), QString(100'000, u'>') + u" x"_s})
        worst = std::max(worst, best(1, [&] { (void)PageMarkdown::parse(text); }));
    told.add("hostile", worst);
}

void hostileHtml(Told& told)
{
    const double prose = best(3, [text = filled(u"<p>The quick brown fox jumps over the <b>lazy</b> dog.</p>\n"_s)] {
        (void)PageHTML::nodes(text);
    });
    told.add("htmlProse", prose);
    double worst = 0;
    for (const QString& text : {filled(u"<"_s), filled(u"<!--"_s), filled(u"<!"_s), filled(u"<?"_s), filled(u"<a"_s),
             filled(u"<div>"_s), filled(u"</div>"_s), filled(u"<b>"_s), filled(u"<ul><li>"_s), filled(u"<table><tr><td>"_s),
             filled(u"<p a="_s), filled(u"&"_s), filled(u"<script>"_s), filled(u"<b></i>"_s)})
        worst = std::max(worst, best(1, [&] { (void)PageHTML::nodes(text); }));
    told.add("htmlHostile", worst);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    Told told;
    const QByteArray bytes = contents(argv[1]);
    const QString markdown = QString::fromUtf8(bytes);
    PageNodes nodes;
    told.add("read", best(3, [&] {
        nodes.clear();
        nodes = PageMarkdown::docFromMarkdown(QString::fromUtf8(bytes));
    }));
    told.add("write", best(3, [&] { (void)PageMarkdown::markdownFromNodes(nodes); }));
    told.add("text", best(1, [&] { (void)textFromNodes(nodes); }));
    nodes.clear();
    if (argc > 2) {
        const QByteArray html = contents(argv[2]);
        told.add("html", best(3, [&] { (void)PageHTML::nodes(QString::fromUtf8(html)); }));
        htmlSAXHandler handler = {};
        told.add("libxml", best(3, [&] {
            htmlParserCtxtPtr context = htmlCreatePushParserCtxt(&handler, nullptr, html.constData(), 0, nullptr, XML_CHAR_ENCODING_UTF8);
            constexpr int chunk = 1 << 16;
            for (qsizetype at = 0; at < html.size(); at += chunk)
                htmlParseChunk(context, html.constData() + at, static_cast<int>(std::min<qsizetype>(chunk, html.size() - at)), 0);
            htmlParseChunk(context, nullptr, 0, 1);
            htmlFreeParserCtxt(context);
        }));
        const QByteArray tenTimes = html.repeated(10);
        told.add("htmlTen", best(1, [&] { (void)PageHTML::nodes(QString::fromUtf8(tenTimes)); }));
    }
    const QByteArray tenTimes = bytes.repeated(10);
    told.add("readTen", best(1, [&] { (void)PageMarkdown::docFromMarkdown(QString::fromUtf8(tenTimes)); }));
    hostile(told);
    hostileHtml(told);
    const QByteArray page = heavyPage();
    told.add("pageBytes", static_cast<double>(page.size()));
    told.add("open", best(7, [&] { (void)textFromJSON(page); }));
    told.add("qtParse", best(7, [&] { (void)QJsonDocument::fromJson(page); }));
    const FlatText text = textFromJSON(page);
    told.add("save", best(7, [&] { (void)docFromText(text); }));
    told.print();
}
