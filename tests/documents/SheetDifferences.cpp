#include "documents/SheetCorpus.h"

using namespace Qt::StringLiterals;

namespace corvelle {

std::vector<SheetDifference> sheetDifferences()
{
    const QString numbers = u"sheetjs__LONumbers.xlsx"_s;
    const QString conditions = u"sheetjs__NumberFormatCondition.xlsm"_s;
    return {
        {u"first-days"_s,
            u"Days count from 30 December 1899. Excel has a 29 February 1900, so its days before "
            u"March "
            u"1900 come one later."_s,
            {{numbers, {{0, 1, 3, 11}, {0, 3, 10, 11}}}}},
        {u"conditions"_s,
            u"The sign alone chooses a format's section; conditions in brackets are passed over."_s,
            {{conditions, {{0, 3, 1, 1}, {0, 2, 2, 3}, {0, 0, 6, 7}, {0, 1, 6, 6}}},
                {u"sheetjs__number_format_entities.xlsx"_s, {{0, 0, 1, 2}}},
                {u"poi__FormatConditionTests.xlsx"_s,
                    {{1, 0, 3, 5}, {1, 0, 10, 10}, {1, 0, 14, 14}, {1, 0, 16, 16}, {1, 0, 18, 18},
                        {1, 0, 21, 23}, {1, 0, 28, 28}, {1, 0, 32, 32}, {1, 0, 34, 34},
                        {1, 0, 36, 36}, {1, 0, 40, 40}, {1, 0, 42, 42}, {1, 0, 44, 44},
                        {1, 0, 46, 46}, {1, 0, 48, 48}, {1, 0, 50, 50}}}}},
        {u"fractions"_s, u"A fraction is shown in general form."_s,
            {{u"poi__NumberFormatTests.xlsx"_s,
                {{1, 0, 120, 163}, {1, 0, 165, 196}, {1, 0, 198, 332}}}}},
        {u"small-e"_s,
            u"The general form writes a power of ten with a small e and without leading zeros."_s,
            {{u"sheetjs__xlsx-stream-d-date-cell.xlsx"_s, {{0, 3, 3, 3}}}}},
        {u"not-stored"_s,
            u"The workbook holds no value of the formula; Excel worked it out, which isn't done here."_s,
            {{numbers, {{0, 3, 38, 38}, {0, 5, 38, 38}, {0, 7, 38, 38}, {0, 9, 38, 38}}}}},
    };
}

} // namespace corvelle
