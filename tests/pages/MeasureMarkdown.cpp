#include "pages/MarkdownExamples.h"
#include <cstdio>
using namespace corvelle;
int main()
{
    for (const char* name : {"commonmark__spec", "cmark-gfm__spec", "cmark-gfm__extensions", "cmark-gfm__regression"}) {
        for (const auto& e : markdownExamples(realFiles() + "/md-spec/" + name + ".examples.json")) {
            const QByteArray ours = savedFromMarkdown(e.markdown), theirs = savedFromHtml(e.html);
            if (ours == theirs) continue;
            std::printf("### %s %d %s\n%s--- html\n%s--- ours\n%s\n--- theirs\n%s\n\n", name, e.number, qPrintable(e.section), e.markdown.toUtf8().constData(), e.html.toUtf8().constData(), ours.constData(), theirs.constData());
        }
    }
}
