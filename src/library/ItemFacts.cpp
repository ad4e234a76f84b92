#include "library/ItemFacts.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString percentEncoded(const QString& text)
{
    QString result;
    for (const char byte : text.toUtf8()) {
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9');
        if (plain)
            result += QLatin1Char(byte);
        else
            result +=
                u"%%1"_s.arg(static_cast<unsigned char>(byte), 2, 16, QLatin1Char('0')).toUpper();
    }
    return result;
}

} // namespace

MentionFacts itemFacts(const Library& library, const QString& id)
{
    MentionFacts facts;
    if (const Node* node = library.node(id)) {
        facts.kind = word(node->kind);
        facts.icon = node->icon.isEmpty() ? QString() : node->icon;
        if (node->kind == NodeKind::Folder)
            facts.color = word(node->color);
    }
    if (const auto& spaces = library.tree().spaces(); !spaces.empty())
        facts.href = u"/s/"_s + percentEncoded(spaces.front().slug) + u"/n/"_s + id;
    return facts;
}

} // namespace corvelle
