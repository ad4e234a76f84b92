#include "app/DocumentDump.h"

#include "documents/DocxFixture.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

struct Dumped
{
    std::optional<int> status;
    std::string output, error;
};

Dumped dumped(const QStringList& arguments)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const auto status = dumpAsked(arguments);
    std::fflush(stdout);
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

} // namespace

TEST(DocumentDump, theExtensionPicksTheReader)
{
    const TempFolder folder;
    folder.makeFile("a.DOCX", docxOf(p(r("Words"))));
    folder.makeFile("a.rtf", "{\\rtf1 Words}");
    folder.makeFile("bad.docx", "PK");
    const Dumped word = dumped({"x", "--docx-dump", folder.path("a.DOCX")});
    EXPECT_EQ(word.status, 0);
    EXPECT_EQ(word.output, "paragraph 0\tWords\n");
    EXPECT_TRUE(dumped({"--docx-dump", folder.path("a.rtf")})
                    .output.starts_with("paragraph 0\tWords\naside\tText preview"));
    const Dumped bad = dumped({"--docx-dump", folder.path("bad.docx")});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.output, "");
    EXPECT_EQ(bad.error, "Couldn’t read this document\n");
}

TEST(DocumentDump, withoutAFileTheSwitchIsIgnored)
{
    EXPECT_EQ(dumped({"--docx-dump"}).status, std::nullopt);
    EXPECT_EQ(dumped({"a.docx"}).status, std::nullopt);
}
