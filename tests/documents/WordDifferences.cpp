#include "documents/WordJudge.h"

using namespace Qt::StringLiterals;

namespace corvelle {

std::vector<WordDifference> wordDifferences()
{
    return {
        {u"text-boxes"_s,
            u"What stands in a text box or a shape follows its paragraph; the judge leaves it out."_s,
            {u"docling__textbox.docx"_s, u"mammoth__text-box.docx"_s,
                u"tika__testWORD_2006ml.docx"_s}},
        {u"derived-styles"_s,
            u"A style counts by its own name: one that is based on a heading's is none, and a "
            u"numbered "
            u"paragraph of it is an item."_s,
            {u"docling__unit_test_headers_numbered.docx"_s, u"poi__65099.docx"_s}},
        {u"deleted-marks"_s,
            u"A paragraph whose mark was deleted joins the next one; the judge keeps it, "
            u"here as an empty item."_s,
            {u"poi__delins.docx"_s}},
    };
}

} // namespace corvelle
