#include "documents/NumberFormat.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

#include <limits>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

struct Case
{
    const char16_t* code;
    double value;
    const char16_t* shown;
};

void check(std::initializer_list<Case> cases, DateSystem dates = DateSystem::From1900)
{
    for (const Case& c : cases)
        EXPECT_EQ(NumberFormat(c.code).number(c.value, dates), QString::fromUtf16(c.shown))
            << QString::fromUtf16(c.code).toStdString() << " of " << c.value;
}

} // namespace

TEST(NumberFormat, showsTheGeneralFormInElevenCharacters)
{
    check({{u"", 0, u"0"}, {u"General", 1234.5, u"1234.5"}, {u"GENERAL", -1.2, u"-1.2"},
        {u"General", 0.1 + 0.2, u"0.3"}, {u"General", 1.0 / 3, u"0.333333333"},
        {u"General", 1234.56789012, u"1234.56789"}, {u"General", 99999999999., u"99999999999"},
        {u"General", 99999999999.6, u"1e+11"}, {u"General", 123456789012., u"1.23457e+11"},
        {u"General", -123456789012., u"-1.23457e+11"}, {u"General", 9.9999999999, u"10"},
        {u"General", 0.0001234567, u"0.000123457"}, {u"General", 0.00001, u"0.00001"},
        {u"General", 0.0000123456, u"1.23456e-5"}, {u"General", 1e-300, u"1e-300"},
        {u"General", 1.234567e100, u"1.2346e+100"}, {u"General", 1e15, u"1e+15"},
        {u"\"about \"General\" km\"", -2.5, u"-about 2.5 km"}, {u"[Blue]General", 5, u"5"},
        {u"[Red]", -5, u"-5"}, {u"@", 12.5, u"12.5"}});
}

TEST(NumberFormat, fillsPlacesFromTheRight)
{
    check({{u"0", 0.5, u"1"}, {u"0", -0.5, u"-1"}, {u"0.00", 2.675, u"2.68"},
        {u"0.00", 1.005, u"1.01"}, {u"0.0", 0.05, u"0.1"}, {u"000.00", 12.3, u"012.30"},
        {u"#.##", 12, u"12."}, {u"#.##", 0, u"."}, {u".00", 12.345, u"12.35"}, {u"#", 0, u""},
        {u"?0.0?", 1.5, u" 1.5 "}, {u"|??.??|", 1.1, u"| 1.1 |"},
        {u"000-00-0000", 123456789, u"123-45-6789"}, {u"(###) ###-####", 5551234, u"() 555-1234"},
        {u"0\"a\"0\"b\"0", 12345, u"123a4b5"},
        {u"00000000000000000", 123456789012345678., u"123456789012346000"}});
}

TEST(NumberFormat, groupsAndScales)
{
    check({{u"#,##0", 1234567, u"1,234,567"}, {u"#,##0.00", 1234.5, u"1,234.50"},
        {u"0,000000000", 1234567, u"0,001,234,567"}, {u"?,????????", 1234567, u"  1,234,567"},
        {u",#", 1234567, u",1234567"}, {u"0,", 1234567, u"1235"}, {u"#,,", 1234567, u"1"},
        {u"0.#,", 1234567, u"1234.6"}, {u"#,.#,", 1234567, u"1.2"}, {u"0.0,\"K\"", 12345, u"12.3K"},
        {u"#,##0,", 1234567890, u"1,234,568"}, {u"0%", 0.5, u"50%"}, {u"0.00%", 0.0123, u"1.23%"},
        {u"0,0.00%%", 123.45, u"1,234,500.00%%"}, {u"0.00%", 0.00035, u"0.04%"}});
}

TEST(NumberFormat, writesPowersOfTen)
{
    check({{u"0.00E+00", 12345, u"1.23E+04"}, {u"0.00E+00", 0, u"0.00E+00"},
        {u"0.00E+00", -0.000123, u"-1.23E-04"}, {u"0.0E+00", 9.99, u"1.0E+01"},
        {u"##0.0E+0", 12345, u"12.3E+03"}, {u"##0.0E+0", 999999, u"1.0E+06"},
        {u"0E-00", 1e120, u"1E120"}, {u"0.00e+000", 1e-5, u"1.00E-005"},
        {u".00E+00", 5, u".50E+01"}});
}

TEST(NumberFormat, choosesTheSectionByTheSign)
{
    check({{u"#,##0 ;(#,##0)", 1234, u"1,234 "}, {u"#,##0 ;(#,##0)", -1, u"(1)"},
        {u"0;-0;\"none\"", 0, u"none"}, {u"0.0;(0.0);\"none\"", -0.01, u"(0.0)"}, {u"0;;", -1, u""},
        {u";;;", 7, u""}, {u"0;[Red]0;0;@", -3, u"3"}, {u"0;@", -3, u"-3"},
        {u"\"yes\"", -3, u"-yes"}, {u"[>100]0.0;0", 5, u"5.0"},
        {u"_-* #,##0.00 _€_-;-* #,##0.00 _€_-;_-* \"-\"?? _€_-", 0, u"-   "}});
}

TEST(NumberFormat, takesQuotesBackslashesAndBracketsFirst)
{
    check({{u"[$€-407] #,##0.00", 5, u"€ 5.00"}, {u"[$-409]0", 5, u"5"}, {u"[$USD]0", 5, u"USD5"},
        {u"\"d;m\"0", 5, u"d;m5"}, {u"\\d\\;0", 5, u"d;5"}, {u"0\"open", 5, u"5open"},
        {u"0[open", 5, u"5[open"}, {u"_\"0\"", 5, u"5"}, {u"\\", 5, u""}, {u"0_", 5, u"5"}});
    EXPECT_EQ(NumberFormat(u"0_\U0001F600x").number(1), u"1x"_s);
    EXPECT_EQ(NumberFormat(QString(100'000, u'0')).number(5), u"5"_s);
}

TEST(NumberFormat, writesDatesAndTimes)
{
    check({{u"m/d/yy", 43831, u"1/1/20"}, {u"dd-mmm-yyyy", 17816.6, u"10-Oct-1948"},
        {u"ddd-mmm-yyy", 36191, u"Sun-Jan-1999"}, {u"dddd, mmmm d", 43831, u"Wednesday, January 1"},
        {u"mmmmm", 43831, u"J"}, {u"h:mm AM/PM", 0.5, u"12:00 PM"}, {u"h:mm a/p", 0, u"12:00 a"},
        {u"mm:ss", 0.0423611, u"01:00"}, {u"yyyy-mm-dd hh:mm", 43831.75, u"2020-01-01 18:00"},
        {u"h:mm:ss.00", 0.123456789, u"2:57:46.67"}, {u"mmss.0", 0.0426, u"0120.6"},
        {u"hh:mm:ss", 0.999999, u"00:00:00"}, {u"d hh:mm:ss", 43831.999999, u"2 00:00:00"},
        {u"d.m.yyyy", 2958465, u"31.12.9999"}, {u"General", 43831, u"43831"}});
}

TEST(NumberFormat, countsTimeThatHasPassed)
{
    check({{u"[h]:mm:ss", 1.5, u"36:00:00"}, {u"[mm]:ss.0", 3.14159, u"4523:53.4"},
        {u"[ss].000", 3.14159, u"271433.376"},
        {u"s:m\" @ hour \"[hh]", 3.14159, u"53:23 @ hour 75"},
        {u"\"It was \"[h]\" [yes, \"h\"] hours and \"mm:ss", 3.14159,
            u"It was 75 [yes, 75] hours and 23:53"},
        {u"[h]:mm", -1.5, u"-36:00"}, {u"hh[mm]", 1.5, u"1.5"}});
}

TEST(NumberFormat, showsWhatItCannotInGeneralForm)
{
    check({{u"# ?/?", 0.75, u"0.75"}, {u"# ?\?/16", -1.5, u"-1.5"}, {u"m/d/yy", -1, u"-1"},
        {u"m/d/yy", 2958466, u"2958466"}, {u"h:mm;@", -0.25, u"-0.25"},
        {u"[h]", 1e300, u"1e+300"}});
    EXPECT_EQ(NumberFormat(u"0").number(std::numeric_limits<double>::infinity()), QString());
}

TEST(NumberFormat, movesDatesFrom1904)
{
    check({{u"yyyy-mm-dd", 0, u"1904-01-01"}, {u"m/d/yy", 42369, u"1/1/20"}}, DateSystem::From1904);
    check({{u"yyyy-mm-dd", 2957004, u"2957004"}}, DateSystem::From1904);
}

TEST(NumberFormat, showsTextsByTheLastSection)
{
    EXPECT_EQ(NumberFormat(u"0.00").text(u"words"_s), u"words"_s);
    EXPECT_EQ(NumberFormat(u"0;0;0;\"<\"@\">\"").text(u"words"_s), u"<words>"_s);
    EXPECT_EQ(NumberFormat(u"0;\\~@").text(u"words"_s), u"~words"_s);
    EXPECT_EQ(NumberFormat(u";;;").text(u"words"_s), QString());
    EXPECT_EQ(NumberFormat(u"General;General;General;General\\ ").text(u"foo"_s), u"foo "_s);
}

TEST(NumberFormat, readsIsoDates)
{
    const auto serial = [](QStringView text) {
        return serialOfIsoDate(text, DateSystem::From1900);
    };
    EXPECT_EQ(serial(u"2020-01-01"), 43831);
    EXPECT_EQ(serial(u"2020-01-01T12:00"), 43831.5);
    EXPECT_EQ(serial(u"2020-01-01 06:00:00.123Z"), 43831.25);
    EXPECT_EQ(serial(u"2020-01-01T12"), 43831);
    EXPECT_EQ(serialOfIsoDate(u"2020-01-01", DateSystem::From1904), 42369);
    for (const QStringView no : {u"", u"12:30", u"2020-13-01", u"2020-02-30", u"20-01-01"})
        EXPECT_FALSE(serial(no)) << no.toUtf8().constData();
}
