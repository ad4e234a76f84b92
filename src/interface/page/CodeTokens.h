// The words of a code block that are set off by colour: a light look at the code, good for any of
// the common languages. Pure; any thread.
#pragma once

#include <QStringView>

#include <vector>

namespace corvelle {

struct CodeToken
{
    enum class Kind : unsigned char { Keyword, Text, Comment, Number };

    int from = 0, to = 0; // UTF-16 units
    Kind kind = Kind::Keyword;

    bool operator==(const CodeToken&) const = default;
};

// In ascending order; none for a language that isn't known. Lines may end in U+2028 or "\n".
std::vector<CodeToken> codeTokens(QStringView code, QStringView language);

} // namespace corvelle
