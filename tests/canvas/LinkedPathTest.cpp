#include "canvas/LinkedPath.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(LinkedPath, isFoundFromTheDocumentsOwnFolder)
{
    const std::vector<std::array<const char*, 3>> cases{
        {"My Space/a/read.md", "other.md", "My Space/a/other.md"},
        {"My Space/a/read.md", " ./b/c%20d.md#part ", "My Space/a/b/c d.md"},
        {"My Space/a/read.md", "../up.md?x=1", "My Space/up.md"},
        {"My Space/a/read.md", "sub/", "My Space/a/sub"},
        {"My Space/a/read.md", "%C3%BC.md", "My Space/a/ü.md"},
        {"My Space/a/read.md", "a/b:c.md", "My Space/a/a/b:c.md"},
        {"/home/x/read.md", "../y.md", "/home/y.md"},
        {"My Space/a/read.md", "#part", ""},
        {"My Space/a/read.md", "", ""},
        {"My Space/a/read.md", "/etc/passwd", ""},
        {"My Space/a/read.md", "//host/x", ""},
        {"My Space/a/read.md", "file:///etc/passwd", ""},
        {"My Space/a/read.md", "javascript:x", ""},
        {"My Space/a/read.md", "../../../etc/passwd", ""},
        {"My Space/a/read.md", "..%2F..%2F..%2Fetc", ""},
        {"My Space/a/read.md", "../..", ""},
        {"My Space/a/read.md", "x%00y", ""},
        {"", "other.md", ""},
    };
    for (const auto& [document, link, path] : cases)
        EXPECT_EQ(linkedPath(document, link), path) << document << " : " << link;
}
