#include "documents/XlsxStyles.h"

#include "documents/XNode.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr size_t mostStyles = 65'536;

// Those that a file needn't spell out. The ones between depend on the language.
struct BuiltIn
{
    int id;
    QStringView code;
};

constexpr BuiltIn builtIns[] = {
    {0, u"General"},
    {1, u"0"},
    {2, u"0.00"},
    {3, u"#,##0"},
    {4, u"#,##0.00"},
    {9, u"0%"},
    {10, u"0.00%"},
    {11, u"0.00E+00"},
    {14, u"m/d/yy"},
    {15, u"d-mmm-yy"},
    {16, u"d-mmm"},
    {17, u"mmm-yy"},
    {18, u"h:mm AM/PM"},
    {19, u"h:mm:ss AM/PM"},
    {20, u"h:mm"},
    {21, u"h:mm:ss"},
    {22, u"m/d/yy h:mm"},
    {37, u"#,##0 ;(#,##0)"},
    {38, u"#,##0 ;[Red](#,##0)"},
    {39, u"#,##0.00;(#,##0.00)"},
    {40, u"#,##0.00;[Red](#,##0.00)"},
    {45, u"mm:ss"},
    {46, u"[h]:mm:ss"},
    {47, u"mmss.0"},
    {48, u"##0.0E+0"},
    {49, u"@"},
};

QString builtInCode(const QString& id)
{
    bool isNumber = false;
    const int number = id.toInt(&isNumber);
    const auto found = std::find_if(std::begin(builtIns), std::end(builtIns),
        [number](const BuiltIn& format) { return format.id == number; });
    return isNumber && found != std::end(builtIns) ? found->code.toString() : u"General"_s;
}

} // namespace

std::vector<NumberFormat> xlsxFormats(const ByteSource& source)
{
    QHash<QString, QString> codes; // by their ids
    std::vector<QString> ids;      // of the styles
    (void)XNode::stream(source, {"x:numFmts", "x:cellXfs"}, [&](XNode list) {
        for (const XNode item : list.children()) {
            if (item.name() == "x:numFmt")
                codes.insert(item.value("numFmtId"), item.value("formatCode"));
            else if (item.name() == "x:xf" && ids.size() < mostStyles)
                ids.push_back(item.value("numFmtId"));
        }
        return true;
    });
    // Most styles share a few formats.
    QHash<QString, NumberFormat> known;
    std::vector<NumberFormat> formats;
    formats.reserve(ids.size());
    for (const QString& id : ids) {
        auto format = known.find(id);
        if (format == known.end()) {
            const auto code = codes.constFind(id);
            format =
                known.insert(id, NumberFormat(code != codes.constEnd() ? *code : builtInCode(id)));
        }
        formats.push_back(*format);
    }
    return formats;
}

} // namespace corvelle
